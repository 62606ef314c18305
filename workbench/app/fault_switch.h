#pragma once

#include "hostclient/orb_item_id.h"
#include "workbench/simulator/fault.h"

#include <QObject>
#include <QVector>

namespace simulator
{
class SimulatedService;
}

namespace workbench
{

/// Causes faults in the simulated plant and ends them, knows which are there, whoever caused them, and says how it
/// went. GUI thread only.
class FaultSwitch : public QObject
{
    Q_OBJECT

public:
    /// The service is kept and outlives the switch.
    explicit FaultSwitch(simulator::SimulatedService &plant, QObject *parent = nullptr);

    /// The fault of that kind at that object.
    static simulator::Fault faultAt(simulator::FaultKind kind, const OrbItemId &id, double amount = 0);

    /// Whether a fault of that kind is there until it is ended, and not over by itself.
    static bool lasts(simulator::FaultKind kind);

    /// False when the plant refused one of them; the message says which. Here and below the controller may be named by
    /// any connection that leads to it.
    bool cause(const QVector<simulator::Fault> &faults);
    bool end(const QVector<simulator::Fault> &faults);

    /// What is there now and lasts until it is ended, in the order in which it began.
    QVector<simulator::Fault> active();
    /// Whether this kind of fault is there, at this place.
    bool isActive(const simulator::Fault &fault);

Q_SIGNALS:
    /// What was done, or why it was not.
    void message(const QString &text);

private:
    /// The fault with the controller's own name, by which the plant's journal has it.
    simulator::Fault resolved(simulator::Fault fault) const;
    void readJournal();
    QString place(const simulator::Fault &fault) const;
    QString places(const QVector<simulator::Fault> &faults) const;

    simulator::SimulatedService &plant;
    QVector<simulator::Fault> lasting;
    quint64 next = 0; ///< number of the first journal entry that was not read
};

} // namespace workbench
