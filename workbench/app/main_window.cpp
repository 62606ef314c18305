#include "workbench/app/main_window.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_widget.h"
#include "workbench/app/plant_docks.h"
#include "workbench/app/system_model.h"
#include "workbench/app/system_panel.h"
#include "workbench/app/system_view.h"
#include "workbench/app/tool_dock.h"
#include "workbench/app/tool_docks.h"
#include "workbench/app/tool_host.h"
#include "workbench/app/tool_menu.h"
#include "workbench/app/unsaved_text.h"
#include "workbench/simulator/object_address.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>

#include <algorithm>

namespace workbench
{

namespace
{

constexpr int LayoutVersion = 1;
constexpr int MessageTime = 15000; // ms
constexpr QSize DefaultSize(1280, 800);
constexpr QSize RoomySize(1480, 900); // shows the command form whole
constexpr int SystemShare = 43; // percent of the default width
constexpr int MostSystemShare = 48; // percent of the window's, for columns that need more

} // namespace

MainWindow::MainWindow(KdPluginInterface &plugin, KdMainData &mainData_, const SettingsStore &store_,
                       simulator::SimulatedService *plant)
    : mainData(mainData_), store(store_), host(std::make_unique<ToolHost>(plugin, mainData_))
{
    setObjectName(QStringLiteral("workbench"));
    setWindowTitle(tr("SIMULATION - tarnControl workbench"));
    setDockNestingEnabled(true);
    setContextMenuPolicy(Qt::NoContextMenu); // the window's own would show tools behind their backs
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);

    buildMenus();
    buildBanner();
    buildSystemDock();
    if (plant)
        buildPlantDocks(*plant);
    buildStatusBar();

    menu = new ToolMenu(*menuBar(), helpMenu, this);
    docks = new ToolDocks(*host, *menu, *this, this);
    connect(docks, &ToolDocks::message, this, &MainWindow::showMessage);

    KdPluginConfiguration configuration;
    const QString complaint = store.loadConfiguration(configuration);
    if (!complaint.isEmpty())
        showMessage(complaint);
    host->start(configuration);
    restoreLayout();
}

MainWindow::~MainWindow()
{
    shutDown();
}

void MainWindow::resetLayout()
{
    addDockWidget(Qt::LeftDockWidgetArea, systemDock);
    systemDock->setFloating(false);
    systemDock->show();
    if (plantViews)
        plantViews->resetLayout();
    const QVector<quint32> classes = host->toolClasses();
    for (quint32 classId : classes) {
        if (ToolDock *dock = docks->dock(classId)) {
            dock->setFloating(false);
            addDockWidget(Qt::RightDockWidgetArea, dock);
        }
    }
    if (!classes.isEmpty())
        docks->open(classes.constFirst());
    applyDefaultSizes();
}

void MainWindow::shutDown()
{
    if (isShutDown)
        return;
    isShutDown = true;
    mainData.shuttingDown = true;

    // Settings first: whatever goes wrong below, they are safe.
    KdPluginConfiguration configuration;
    host->saveConfiguration(configuration);
    QStringList complaints = {store.saveConfiguration(configuration)};
    WindowLayout layout;
    layout.geometry = saveGeometry();
    layout.state = saveState(LayoutVersion);
    layout.systemColumns = view->header()->saveState();
    layout.openTools = docks->openTools();
    complaints.append(store.saveLayout(layout));
    complaints.removeAll(QString());
    for (const QString &complaint : qAsConst(complaints))
        qWarning("%s", qUtf8Printable(complaint));

    if (plantViews)
        plantViews->stop();
    docks->closeAll();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!isShutDown && !mayDiscardTexts()) {
        event->ignore();
        return;
    }
    shutDown();
    QMainWindow::closeEvent(event);
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (sizesPending)
        QTimer::singleShot(0, this, &MainWindow::applyDefaultSizes);
}

void MainWindow::buildMenus()
{
    menuBar()->setNativeMenuBar(false); // the banner stands in its corner
    QMenu *fileMenu = menuBar()->addMenu(tr("&File"));
    QAction *quit = fileMenu->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setStatusTip(tr("Saves the layout and ends the workbench"));

    windowMenu = menuBar()->addMenu(tr("&Window"));
    windowMenu->addSeparator();
    QAction *reset = windowMenu->addAction(tr("&Reset Layout"), this, &MainWindow::resetLayout);
    reset->setStatusTip(tr("Puts the docks where they are on the first start"));

    helpMenu = menuBar()->addMenu(tr("&Help"));
    helpMenu->addAction(tr("&About"), this, &MainWindow::showAbout);
}

void MainWindow::buildSystemDock()
{
    model = new SystemModel(mainData, this);
    panel = new SystemPanel(*model, this);
    view = &panel->view();
    systemDock = new QDockWidget(tr("System"), this);
    systemDock->setObjectName(QStringLiteral("system"));
    systemDock->setWidget(panel);
    addDockWidget(Qt::LeftDockWidgetArea, systemDock);

    QAction *toggle = systemDock->toggleViewAction();
    toggle->setText(tr("&System"));
    toggle->setStatusTip(tr("Shows or hides the system's objects and their values"));
    windowMenu->insertAction(windowMenu->actions().constFirst(), toggle);

    connect(model, &QAbstractItemModel::modelReset, this, &MainWindow::updateCounts);
    connect(view, &SystemView::itemChosen, this,
            [this](const OrbItemId &id) { host->announceItem(KD::ItemSelected, id); });
    connect(view, &SystemView::itemActivated, this,
            [this](const OrbItemId &id) { host->announceItem(KD::ItemActivated, id); });
    connect(view, &SystemView::menuRequested, this, &MainWindow::showSystemMenu);
}

void MainWindow::buildPlantDocks(simulator::SimulatedService &plant)
{
    plantViews = std::make_unique<PlantDocks>(mainData, plant, *this);
    connect(plantViews.get(), &PlantDocks::message, this, &MainWindow::showMessage);
    const QList<QAction *> toggles = plantViews->toggles();
    windowMenu->insertActions(windowMenu->actions().at(1), toggles);

    auto *menuOfPlant = new QMenu(tr("&Simulation"), menuBar());
    menuOfPlant->setObjectName(QStringLiteral("simulationMenu"));
    menuOfPlant->addActions(plantViews->selectionActions());
    menuBar()->insertMenu(windowMenu->menuAction(), menuOfPlant);
    // What is selected in the tree is what the entries are for.
    connect(menuOfPlant, &QMenu::aboutToShow, plantViews.get(),
            [this] { plantViews->setSelection(view->selectedIds()); });
}

void MainWindow::showSystemMenu(const QPoint &place)
{
    const QVector<OrbItemId> ids = view->selectedIds();
    QStringList addresses;
    for (const OrbItemId &id : ids)
        addresses.append(simulator::addressText({id.type, id.line, id.address, id.channel}));
    addresses.removeAll(QString());

    auto *systemMenu = new QMenu(this);
    systemMenu->setObjectName(QStringLiteral("systemMenu"));
    systemMenu->setAttribute(Qt::WA_DeleteOnClose);
    if (plantViews) {
        plantViews->setSelection(ids);
        systemMenu->addActions(plantViews->selectionActions());
        systemMenu->addSeparator();
    }
    QAction *copy = systemMenu->addAction(addresses.size() > 1 ? tr("Copy &Addresses") : tr("Copy &Address"));
    copy->setEnabled(!addresses.isEmpty());
    connect(copy, &QAction::triggered, this,
            [addresses] { QGuiApplication::clipboard()->setText(addresses.join(QLatin1Char('\n'))); });
    systemMenu->popup(place);
}

void MainWindow::buildBanner()
{
    auto *banner = new QLabel(tr("<b>SIMULATION</b>&nbsp;&nbsp;Nothing here reaches hardware"), this);
    banner->setObjectName(QStringLiteral("banner"));
    // Dark on light amber on any theme: this text has to be legible everywhere.
    banner->setStyleSheet(
        QStringLiteral("#banner { background: #ffe7b3; color: #4a3200; border: 1px solid #e0b04c;"
                       " border-radius: 3px; padding: 1px 10px; margin: 2px 4px 2px 0; }"));
    menuBar()->setCornerWidget(banner, Qt::TopRightCorner);
}

void MainWindow::buildStatusBar()
{
    // Comes back whenever there is nothing else to say.
    auto *advice = new QLabel(tr("Choose a channel in the System dock, or drag it onto a terminal."), this);
    advice->setObjectName(QStringLiteral("advice"));
    advice->setIndent(advice->fontMetrics().height() / 4);
    advice->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(advice, 1);
    counts = new QLabel(this);
    counts->setObjectName(QStringLiteral("counts"));
    statusBar()->addPermanentWidget(counts);
    updateCounts();
}

void MainWindow::restoreLayout()
{
    const QSize available = QGuiApplication::primaryScreen()->availableSize();
    const bool roomy = available.width() >= RoomySize.width() && available.height() >= RoomySize.height();
    resize(roomy ? RoomySize : DefaultSize);
    const WindowLayout layout = store.loadLayout();
    if (!layout.saved) {
        resetLayout();
        return;
    }
    restoreGeometry(layout.geometry);
    docks->openTools(layout.openTools);
    view->header()->restoreState(layout.systemColumns);
    if (!restoreState(layout.state, LayoutVersion)) {
        showMessage(tr("The saved layout could not be used; this is the layout of the first start."));
        resetLayout();
    }
}

void MainWindow::applyDefaultSizes()
{
    sizesPending = !isVisible(); // docks take sizes only from a window that is laid out
    QList<QDockWidget *> side = {systemDock};
    QList<int> widths = {
        std::min(std::max(DefaultSize.width() * SystemShare / 100, panel->sizeHint().width()),
                 width() * MostSystemShare / 100)};
    const QVector<quint32> classes = host->toolClasses();
    for (quint32 classId : classes) {
        if (ToolDock *dock = docks->dock(classId)) {
            side.append(dock);
            const int separator = style()->pixelMetric(QStyle::PM_DockWidgetSeparatorExtent, nullptr, this);
            widths.append(width() - widths.constFirst() - separator);
            break;
        }
    }
    resizeDocks(side, widths, Qt::Horizontal);
}

bool MainWindow::mayDiscardTexts()
{
    const QVector<quint32> classes = host->toolClasses();
    for (quint32 classId : classes) {
        const KdPluginWidget *tool = host->tool(classId);
        if (!tool || !hasUnsavedText(*tool))
            continue;
        QMessageBox question(
            QMessageBox::Warning, tr("Quit the workbench"),
            tr("The editor of \"%1\" holds text that is not saved.").arg(host->title(classId)),
            QMessageBox::Discard | QMessageBox::Cancel, this);
        question.setInformativeText(tr("It is lost when the workbench ends."));
        question.setDefaultButton(QMessageBox::Cancel);
        if (question.exec() != QMessageBox::Discard)
            return false;
    }
    return true;
}

void MainWindow::updateCounts()
{
    const int controllers = model->count(OrbItemId::System);
    const int modules = model->count(OrbItemId::Module);
    const int channels = model->count(OrbItemId::Channel);
    const auto phrase = [](int number, const QString &one, const QString &many) {
        return (number == 1 ? one : many).arg(number);
    };
    counts->setText(controllers == 0 ? tr("No controller connected")
                                     : phrase(controllers, tr("%1 controller"), tr("%1 controllers"))
                            + QStringLiteral(" \u00b7 ") + phrase(modules, tr("%1 module"), tr("%1 modules"))
                            + QStringLiteral(" \u00b7 ")
                            + phrase(channels, tr("%1 channel"), tr("%1 channels")));
}

void MainWindow::showMessage(const QString &text)
{
    statusBar()->showMessage(text, MessageTime);
}

void MainWindow::showAbout()
{
    QMessageBox::about(
        this, tr("About the workbench"),
        tr("<h3>tarnControl workbench %1</h3>"
           "<p>Runs the terminals of the console against a simulated high-voltage system, so that "
           "command files can be rehearsed before they touch the real one.</p>"
           "<p>Nothing here reaches hardware.</p>")
            .arg(QApplication::applicationVersion()));
}

} // namespace workbench
