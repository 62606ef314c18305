#pragma once

#include "hostclient/orb_item_id.h"

#include <QList>
#include <QObject>
#include <QVector>

#include <memory>

class KdMainData;
class QAction;
class QDockWidget;
class QMainWindow;

namespace simulator
{
class SimulatedService;
}

namespace workbench
{

class FaultMenu;
class FaultSwitch;
class MessageLog;
class PlantWatcher;
class StripChart;

/// What the workbench shows of the simulated plant beyond what any client could see: the chart, the messages, and the
/// faults that an operator causes. GUI thread only.
class PlantDocks : public QObject
{
    Q_OBJECT

public:
    /// All three are kept and outlive this object.
    PlantDocks(KdMainData &mainData, simulator::SimulatedService &plant, QMainWindow &window,
               QObject *parent = nullptr);
    ~PlantDocks() override;

    /// Below the rest of the window, one behind the other, and hidden.
    void resetLayout();

    /// Shows or hides a dock, each.
    QList<QAction *> toggles() const;

    /// What the entries below are for.
    void setSelection(const QVector<OrbItemId> &ids);

    /// "Show in Chart", "Simulate Fault": for menus.
    QList<QAction *> selectionActions() const;

    void showInChart(const QVector<OrbItemId> &ids);

    StripChart &chart() { return *stripChart; }
    MessageLog &messages() { return *messageLog; }
    FaultSwitch &faults() { return *faultSwitch; }
    PlantWatcher &watcher() { return *plantWatcher; }

    /// Looks at the plant no longer.
    void stop();

Q_SIGNALS:
    /// Something that the operator should read.
    void message(const QString &text);

private:
    std::unique_ptr<QDockWidget> makeDock(QWidget &content, const QString &title, const QString &name,
                                          const QString &entry, const QString &help);
    void show(QDockWidget &dock);

    QMainWindow &window;
    PlantWatcher *plantWatcher;
    StripChart *stripChart;
    MessageLog *messageLog;
    FaultSwitch *faultSwitch;
    FaultMenu *faultMenu;
    // Go before the watcher, which they use; the window forgets them then.
    std::unique_ptr<QDockWidget> chartDock;
    std::unique_ptr<QDockWidget> messageDock;
    QAction *showAction;
    bool hasPlace = false; ///< one of the docks was shown since it was put where it is
    QVector<OrbItemId> selection;
};

} // namespace workbench
