#include "workbench/app/strip_chart.h"

#include "hostclient/dl_data_access.h"
#include "hostclient/orb_client.h"
#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_value.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_common.h"
#include "workbench/app/channel_csv.h"
#include "workbench/app/channel_recorder.h"
#include "workbench/app/strip_chart_picture.h"
#include "workbench/app/strip_chart_plot.h"

#include <QAction>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSaveFile>
#include <QTextStream>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace workbench
{

StripChart::StripChart(KdMainData &mainData_, PlantWatcher &watcher, QWidget *parent)
    : QWidget(parent),
      mainData(mainData_),
      channels(new ChannelRecorder(watcher, this)),
      drawing(new StripChartPlot(*channels, this)),
      tools(new QToolBar(this)),
      hint(new QLabel(this))
{
    setObjectName(QStringLiteral("stripChart"));
    setAccessibleName(tr("Chart"));
    setAcceptDrops(true);
    hint->setAlignment(Qt::AlignCenter);
    hint->setWordWrap(true);
    hint->setText(tr("No channel is drawn yet.\n\nDrag channels or a module here from the system, or choose "
                     "\"Show in Chart\" in their menu."));
    buildTools();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tools);
    column->addWidget(hint, 1);
    column->addWidget(drawing, 1);
    setFocusProxy(drawing);

    connect(drawing, &StripChartPlot::followingChanged, this, &StripChart::showState);
    connect(channels, &ChannelRecorder::channelAdded, this, &StripChart::showState);
    connect(channels, &ChannelRecorder::channelRemoved, this, &StripChart::showState);
    showState();
}

void StripChart::add(const QVector<OrbItemId> &ids)
{
    QVector<OrbItemId> wanted;
    for (const OrbItemId &id : ids)
        wanted += channelsOf(id);
    for (const OrbItemId &id : qAsConst(wanted)) {
        if (channels->add(id.connectionName, {id.type, id.line, id.address, id.channel}))
            continue;
        if (channels->count() >= ChannelRecorder::MostChannels)
            Q_EMIT message(tr("The chart draws at most %1 channels. Remove one to draw another.")
                               .arg(ChannelRecorder::MostChannels));
        else
            Q_EMIT message(tr("This channel cannot be drawn: it is no longer there."));
        return;
    }
    if (wanted.isEmpty())
        Q_EMIT message(tr("The chart draws channels, and the channels of modules."));
}

bool StripChart::exportTo(const QString &fileName, QString &error)
{
    if (!fileName.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive))
        return saveStripChartPicture(*drawing, fileName, error);
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly)) {
        QTextStream out(&file);
        out.setCodec("UTF-8");
        writeChannelCsv(*channels, out);
        out.flush();
        if (out.status() == QTextStream::Ok && file.commit())
            return true;
    }
    error = tr("\"%1\" could not be written: %2").arg(fileName, file.errorString());
    return false;
}

QSize StripChart::sizeHint() const
{
    constexpr int Columns = 80;
    constexpr int Rows = 20;
    return {fontMetrics().averageCharWidth() * Columns, fontMetrics().height() * Rows};
}

void StripChart::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(mainData.getDndMimeType()))
        event->acceptProposedAction();
}

void StripChart::dropEvent(QDropEvent *event)
{
    QVector<OrbItemId> ids;
    if (!KdPluginCommon::parseDragAndDropString(event->mimeData(), ids))
        return;
    event->acceptProposedAction();
    add(ids);
}

void StripChart::buildTools()
{
    tools->setToolButtonStyle(Qt::ToolButtonTextOnly);
    tools->setAccessibleName(tr("Chart tools"));
    pause = addTool(QStringLiteral("pause"), tr("Pause"),
                    tr("Stops following the time; recording goes on (Space in the chart)"));
    pause->setCheckable(true);
    connect(pause, &QAction::triggered, drawing, [this](bool on) { drawing->setFollowing(!on); });
    QAction *all = addTool(QStringLiteral("showAll"), tr("Show All"),
                           tr("Everything that is recorded (double click, or Home, in the chart)"));
    connect(all, &QAction::triggered, drawing, &StripChartPlot::showAll);

    spans = new QComboBox(tools);
    spans->setObjectName(QStringLiteral("span"));
    spans->setAccessibleName(tr("Time shown"));
    spans->setToolTip(tr("How much time the chart shows"));
    const auto addSpan = [this](const QString &text, int seconds) { spans->addItem(text, seconds); };
    addSpan(tr("10 s"), 10);
    addSpan(tr("1 min"), 60);
    addSpan(tr("5 min"), 300);
    addSpan(tr("15 min"), 900);
    addSpan(tr("1 h"), 3600);
    spans->setCurrentIndex(1);
    connect(spans, qOverload<int>(&QComboBox::activated), drawing, [this](int index) {
        drawing->setFollowing(true);
        drawing->setSpan(spans->itemData(index).toDouble());
    });
    tools->addWidget(spans);
    tools->addSeparator();
    addPartTools();
    tools->addSeparator();

    removeMenu = new QMenu(tr("Remove"), this);
    connect(removeMenu, &QMenu::aboutToShow, this, &StripChart::fillRemoveMenu);
    addMenuTool(tr("Remove"), tr("Takes a channel out of the chart"), removeMenu);
    QAction *clear = addTool(QStringLiteral("clear"), tr("Clear"),
                             tr("Forgets what was recorded; the channels stay and go on"));
    connect(clear, &QAction::triggered, channels, &ChannelRecorder::clear);
    auto *exportMenu = new QMenu(tr("Export"), this);
    const auto addExport = [&](const QString &text, const QString &suffix, const QString &filter) {
        exportMenu->addAction(text, this, [this, suffix, filter] { askForFile(suffix, filter); });
    };
    addExport(tr("Picture (&PNG)..."), QStringLiteral("png"), tr("PNG pictures (*.png)"));
    addExport(tr("Drawing (&SVG)..."), QStringLiteral("svg"), tr("SVG drawings (*.svg)"));
    addExport(tr("Values (&CSV)..."), QStringLiteral("csv"), tr("Comma-separated values (*.csv)"));
    addMenuTool(tr("Export"), tr("Saves the chart as a picture, or its values as a table"), exportMenu);
}

QAction *StripChart::addTool(const QString &name, const QString &text, const QString &help)
{
    QAction *action = tools->addAction(text);
    action->setObjectName(name);
    action->setToolTip(help);
    action->setStatusTip(help);
    // A tool bar leaves its buttons out when the Tab key goes round.
    if (QWidget *button = tools->widgetForAction(action))
        button->setFocusPolicy(Qt::TabFocus);
    needChannels.append(action);
    return action;
}

void StripChart::addPartTools()
{
    const auto addPart = [this](StripChartPlot::Part part, const QString &name, const QString &text,
                                const QString &help) {
        QAction *action = addTool(name, text, help);
        action->setCheckable(true);
        action->setChecked(true);
        connect(action, &QAction::toggled, drawing, [this, part](bool on) { drawing->setShown(part, on); });
    };
    addPart(StripChartPlot::SetValues, QStringLiteral("setValues"), tr("Set Values"),
            tr("Draws what voltage and current are set to, where it comes into what is shown"));
    addPart(StripChartPlot::Limits, QStringLiteral("limits"), tr("Limits"),
            tr("Draws the limits, where they come into what is shown"));
    addPart(StripChartPlot::Events, QStringLiteral("events"), tr("Events"),
            tr("Marks trips, arcs, ends of ramps and simulated faults"));
}

void StripChart::addMenuTool(const QString &text, const QString &help, QMenu *menu)
{
    auto *button = new QToolButton(tools);
    button->setText(text);
    button->setToolTip(help);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setFocusPolicy(Qt::TabFocus);
    needChannels.append(tools->addWidget(button));
}

void StripChart::fillRemoveMenu()
{
    removeMenu->clear();
    for (int index = 0; index < channels->count(); ++index)
        removeMenu->addAction(channels->at(index).name(), this, [this, index] { channels->remove(index); });
    removeMenu->addSeparator();
    removeMenu->addAction(tr("&All Channels"), channels, &ChannelRecorder::removeAll);
}

void StripChart::askForFile(const QString &suffix, const QString &filter)
{
    auto *dialog = new QFileDialog(this, tr("Export the chart"), QString(), filter);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(suffix);
    dialog->selectFile(QStringLiteral("chart.") + suffix);
    connect(dialog, &QFileDialog::fileSelected, this, &StripChart::save);
    dialog->open();
}

void StripChart::save(const QString &fileName)
{
    QString error;
    if (exportTo(fileName, error)) {
        Q_EMIT message(tr("The chart is saved in \"%1\".").arg(fileName));
        return;
    }
    // What was meant to be kept and is not must not be overlooked.
    auto *complaint =
        new QMessageBox(QMessageBox::Warning, tr("Export the chart"), error, QMessageBox::Ok, this);
    complaint->setObjectName(QStringLiteral("exportComplaint"));
    complaint->setAttribute(Qt::WA_DeleteOnClose);
    complaint->open();
}

void StripChart::showState()
{
    const bool hasChannels = channels->count() > 0;
    hint->setVisible(!hasChannels);
    drawing->setVisible(hasChannels);
    spans->setEnabled(hasChannels);
    for (QAction *action : qAsConst(needChannels))
        action->setEnabled(hasChannels);
    pause->setChecked(!drawing->isFollowing());
    pause->setText(drawing->isFollowing() ? tr("Pause") : tr("Resume"));
}

QVector<OrbItemId> StripChart::channelsOf(const OrbItemId &id)
{
    QVector<OrbItemId> result;
    OrbItemId channel = id;
    channel.type = OrbItemId::Channel;
    channel.itemName.clear();
    if (channel.connectionName.isEmpty()) { // what is dragged names its controller by the index
        QVector<QPair<QString, QString>> controllers;
        mainData.dataAccess->getAllControllerNames(controllers);
        for (const auto &controller : qAsConst(controllers)) {
            if (mainData.dataAccess->getOrbConnectionIndex(controller.first) == id.connection)
                channel.connectionName = controller.first;
        }
    }
    if (id.type == OrbItemId::Channel) {
        result.append(channel);
    } else if (id.type == OrbItemId::Module) {
        OrbItemId item = id;
        item.itemName = OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels();
        OrbItemValue number(item);
        mainData.dataAccess->readItemValue(number);
        const int count = std::min(number.value().toInt(), ChannelRecorder::MostChannels + 1);
        for (channel.channel = 0; channel.channel < count; ++channel.channel)
            result.append(channel);
    }
    return result;
}

} // namespace workbench
