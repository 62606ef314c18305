#include "workbench/app/plant_docks.h"

#include "workbench/app/fault_menu.h"
#include "workbench/app/fault_switch.h"
#include "workbench/app/message_log.h"
#include "workbench/app/plant_watcher.h"
#include "workbench/app/strip_chart.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QTimer>

#include <algorithm>

namespace workbench
{

PlantDocks::PlantDocks(KdMainData &mainData, simulator::SimulatedService &plant, QMainWindow &window_,
                       QObject *parent)
    : QObject(parent),
      window(window_),
      plantWatcher(new PlantWatcher(plant, this)),
      stripChart(new StripChart(mainData, *plantWatcher)),
      messageLog(new MessageLog(*plantWatcher)),
      faultSwitch(new FaultSwitch(plant, this)),
      faultMenu(new FaultMenu(*faultSwitch, &window)),
      showAction(new QAction(tr("Show in &Chart"), this))
{
    chartDock = makeDock(*stripChart, tr("Chart"), QStringLiteral("chart"), tr("&Chart"),
                         tr("Shows or hides the chart of voltages and currents over time"));
    messageDock = makeDock(*messageLog, tr("Messages"), QStringLiteral("messages"), tr("&Messages"),
                           tr("Shows or hides the raw requests and their answers"));
    showAction->setObjectName(QStringLiteral("showInChart"));
    showAction->setStatusTip(tr("Draws what is selected over time"));
    connect(showAction, &QAction::triggered, this, [this] { showInChart(selection); });
    connect(stripChart, &StripChart::message, this, &PlantDocks::message);
    connect(faultSwitch, &FaultSwitch::message, this, &PlantDocks::message);
}

PlantDocks::~PlantDocks() = default;

void PlantDocks::resetLayout()
{
    for (QDockWidget *dock : {chartDock.get(), messageDock.get()}) {
        dock->setFloating(false);
        window.addDockWidget(Qt::BottomDockWidgetArea, dock);
    }
    window.tabifyDockWidget(chartDock.get(), messageDock.get());
    chartDock->hide();
    messageDock->hide();
    hasPlace = false;
}

QList<QAction *> PlantDocks::toggles() const
{
    return {chartDock->toggleViewAction(), messageDock->toggleViewAction()};
}

void PlantDocks::setSelection(const QVector<OrbItemId> &ids)
{
    selection = ids;
    faultMenu->setTargets(ids);
    showAction->setEnabled(std::any_of(ids.cbegin(), ids.cend(), [](const OrbItemId &id) {
        return id.type == OrbItemId::Channel || id.type == OrbItemId::Module;
    }));
}

QList<QAction *> PlantDocks::selectionActions() const
{
    return {showAction, faultMenu->menuAction()};
}

void PlantDocks::showInChart(const QVector<OrbItemId> &ids)
{
    show(*chartDock);
    stripChart->add(ids);
}

void PlantDocks::stop()
{
    plantWatcher->stop();
}

std::unique_ptr<QDockWidget> PlantDocks::makeDock(QWidget &content, const QString &title, const QString &name,
                                                  const QString &entry, const QString &help)
{
    auto owned = std::make_unique<QDockWidget>(title, &window);
    QDockWidget *const dock = owned.get();
    dock->setObjectName(name);
    dock->setWidget(&content);
    window.addDockWidget(Qt::BottomDockWidgetArea, dock);
    dock->hide();
    QAction *toggle = dock->toggleViewAction();
    toggle->setText(entry);
    toggle->setStatusTip(help);
    // From the menu it comes to the front, with the keys.
    connect(toggle, &QAction::triggered, this, [this, dock](bool on) {
        if (on) {
            show(*dock);
            dock->widget()->setFocus(Qt::OtherFocusReason);
        }
    });
    return owned;
}

void PlantDocks::show(QDockWidget &dock)
{
    dock.show();
    dock.raise();
    const QDockWidget &other = &dock == chartDock.get() ? *messageDock : *chartDock;
    if (hasPlace || other.isVisible() || dock.isFloating())
        return;
    hasPlace = true;
    // A bottom dock starts with what the others leave it, which is next to nothing, and takes a size only from a
    // window that is laid out.
    QTimer::singleShot(0, &dock, [this, &dock] {
        const int enough = window.height() * 3 / 5; // the others give up less than is asked for
        if (dock.height() < window.height() / 2)
            window.resizeDocks({&dock}, {enough}, Qt::Vertical);
    });
}

} // namespace workbench
