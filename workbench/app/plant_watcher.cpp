#include "workbench/app/plant_watcher.h"

#include "workbench/simulator/simulated_service.h"

namespace workbench
{

namespace
{

constexpr int BatchSize = 5000; // entries; what is shown of them is made one batch at a time

} // namespace

PlantWatcher::PlantWatcher(simulator::SimulatedService &plant_, QObject *parent)
    : QObject(parent), plant(plant_)
{
    timer.setInterval(Interval);
    connect(&timer, &QTimer::timeout, this, &PlantWatcher::poll);
}

void PlantWatcher::setNeeded(QObject *user, bool needed)
{
    if (needed == users.contains(user))
        return;
    if (needed) {
        users.insert(user);
        connect(user, &QObject::destroyed, this, [this, user] { setNeeded(user, false); });
        if (!timer.isActive())
            timer.start();
        return;
    }
    users.remove(user);
    disconnect(user, &QObject::destroyed, this, nullptr);
    if (users.isEmpty())
        timer.stop();
}

void PlantWatcher::poll()
{
    // As far as the journal goes now: a plant in which something happens all the time would never let go.
    QVector<simulator::JournalEntry> entries = plant.journal(next, BatchSize);
    const quint64 end = plant.nextJournalNumber();
    while (!entries.isEmpty()) {
        next = entries.constLast().number + 1;
        Q_EMIT happened(entries);
        if (next >= end)
            break;
        entries = plant.journal(next, BatchSize);
    }
    Q_EMIT polled();
}

void PlantWatcher::stop()
{
    timer.stop();
    for (const QObject *user : qAsConst(users))
        disconnect(user, &QObject::destroyed, this, nullptr);
    users.clear();
}

} // namespace workbench
