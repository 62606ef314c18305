#pragma once

#include "workbench/simulator/plant_journal.h"

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVector>

namespace simulator
{
class SimulatedService;
}

namespace workbench
{

/// Reads the plant's journal at regular intervals for all who show what happens, and does nothing while none of them
/// needs it. What happened while nobody did is read when the next one does, as far as the journal still has it.
/// GUI thread only.
class PlantWatcher : public QObject
{
    Q_OBJECT

public:
    /// Time between two readings, in ms.
    static constexpr int Interval = 100;

    /// The service is kept and outlives the watcher.
    explicit PlantWatcher(simulator::SimulatedService &plant, QObject *parent = nullptr);

    simulator::SimulatedService &service() const { return plant; }

    /// Whether `user` needs to be told what happens. A user that is destroyed needs nothing any more.
    void setNeeded(QObject *user, bool needed);
    bool isRunning() const { return timer.isActive(); }

    /// Reads now what has happened since the last time.
    void poll();

    /// Ends every need.
    void stop();

Q_SIGNALS:
    /// What happened, in order, each entry once; at most some thousands at a time.
    void happened(const QVector<simulator::JournalEntry> &entries);

    /// A reading is complete: everything up to now has been told.
    void polled();

private:
    simulator::SimulatedService &plant;
    QTimer timer;
    QSet<const QObject *> users;
    quint64 next = 0; // number of the first entry that was not read
};

} // namespace workbench
