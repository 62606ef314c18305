#pragma once

#include "hostclient/orb_item_id.h"

#include <QVector>
#include <QWidget>

class KdMainData;
class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QToolBar;

namespace workbench
{

class ChannelRecorder;
class PlantWatcher;
class StripChartPlot;

/// Chosen channels over time, and what one does with such a chart. Takes channels and modules that are dropped on it.
/// GUI thread only.
class StripChart : public QWidget
{
    Q_OBJECT

public:
    /// Both are kept and outlive the chart.
    StripChart(KdMainData &mainData, PlantWatcher &watcher, QWidget *parent = nullptr);

    /// Draws these channels from now on, and of modules all channels. Other objects, and what is there already, are
    /// passed over.
    void add(const QVector<OrbItemId> &ids);

    ChannelRecorder &recorder() { return *channels; }
    StripChartPlot &plot() { return *drawing; }

    /// Writes what is recorded (.csv), or what is shown (.png, .svg). False, with an operator's text, when it fails.
    bool exportTo(const QString &fileName, QString &error);

    QSize sizeHint() const override;

Q_SIGNALS:
    /// Something that the operator should read.
    void message(const QString &text);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildTools();
    QAction *addTool(const QString &name, const QString &text, const QString &help);
    void addPartTools();
    void addMenuTool(const QString &text, const QString &help, QMenu *menu);
    void fillRemoveMenu();
    void askForFile(const QString &suffix, const QString &filter);
    void save(const QString &fileName);
    void showState();
    QVector<OrbItemId> channelsOf(const OrbItemId &id);

    KdMainData &mainData;
    ChannelRecorder *channels;
    StripChartPlot *drawing;
    QToolBar *tools;
    QLabel *hint;
    QAction *pause = nullptr;
    QComboBox *spans = nullptr;
    QMenu *removeMenu = nullptr;
    QVector<QAction *> needChannels; ///< make sense with something to show only
};

} // namespace workbench
