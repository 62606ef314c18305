#include "workbench/app/fault_switch.h"

#include "workbench/app/fault_text.h"
#include "workbench/simulator/simulated_service.h"

#include <algorithm>

namespace workbench
{

namespace
{

using simulator::Fault;
using simulator::FaultKind;

bool isSamePlace(const Fault &a, const Fault &b)
{
    return a.kind == b.kind && a.controller == b.controller
        && (simulator::faultLevel(a.kind) == OrbItemId::System || a.object == b.object);
}

} // namespace

FaultSwitch::FaultSwitch(simulator::SimulatedService &plant_, QObject *parent)
    : QObject(parent), plant(plant_)
{ }

Fault FaultSwitch::faultAt(FaultKind kind, const OrbItemId &id, double amount)
{
    Fault fault;
    fault.kind = kind;
    fault.controller = id.connectionName;
    fault.object = {id.type, id.line, id.address, id.channel};
    fault.amount = amount;
    return fault;
}

bool FaultSwitch::lasts(FaultKind kind)
{
    return kind != FaultKind::Spark && kind != FaultKind::DropAnswers && kind != FaultKind::DuplicateAnswers
        && kind != FaultKind::ReorderAnswers;
}

bool FaultSwitch::cause(const QVector<Fault> &faults)
{
    for (const Fault &fault : faults) {
        if (plant.cause(resolved(fault)) == TarnResult::Success)
            continue;
        Q_EMIT message(tr("The simulation refused \"%1\" at %2.").arg(faultText(fault.kind), place(fault)));
        return false;
    }
    if (!faults.isEmpty())
        Q_EMIT message(tr("Simulated fault: %1 at %2")
                           .arg(faultText(faults.constFirst().kind).toLower(), places(faults)));
    return true;
}

bool FaultSwitch::end(const QVector<Fault> &faults)
{
    for (const Fault &fault : faults) {
        if (plant.mend(resolved(fault)) == TarnResult::Success)
            continue;
        Q_EMIT message(tr("The simulation could not end \"%1\" at %2: it is over already.")
                           .arg(faultText(fault.kind), place(fault)));
        return false;
    }
    if (!faults.isEmpty())
        Q_EMIT message(tr("Simulated fault ended: %1 at %2")
                           .arg(faultText(faults.constFirst().kind).toLower(), places(faults)));
    return true;
}

QVector<Fault> FaultSwitch::active()
{
    readJournal();
    QVector<Fault> result;
    const auto controllers = plant.allControllers();
    for (const auto &controller : controllers) {
        if (plant.isControllerAvailable(controller.first))
            continue;
        OrbItemId id(OrbItemId::System);
        id.connectionName = controller.first;
        result.append(faultAt(FaultKind::Disconnect, id));
    }
    return result + lasting;
}

bool FaultSwitch::isActive(const Fault &fault)
{
    const QVector<Fault> faults = active();
    const Fault looked = resolved(fault);
    return std::any_of(faults.cbegin(), faults.cend(),
                       [&](const Fault &each) { return isSamePlace(each, looked); });
}

Fault FaultSwitch::resolved(Fault fault) const
{
    const QString name = plant.controllerOf(fault.controller);
    if (!name.isEmpty())
        fault.controller = name;
    return fault;
}

void FaultSwitch::readJournal()
{
    constexpr int BatchSize = 10000;
    QVector<simulator::JournalEntry> entries;
    do {
        entries = plant.journal(next, BatchSize);
        for (const simulator::JournalEntry &entry : qAsConst(entries)) {
            next = entry.number + 1;
            const bool begins = entry.kind == simulator::JournalEntry::FaultBegins;
            Fault fault;
            if ((!begins && entry.kind != simulator::JournalEntry::FaultEnds)
                || !simulator::faultOfName(entry.text, fault.kind))
                continue;
            fault.controller = entry.controller;
            fault.object = entry.object;
            const auto same = [&](const Fault &each) { return isSamePlace(each, fault); };
            lasting.erase(std::remove_if(lasting.begin(), lasting.end(), same), lasting.end());
            // Whether a controller is away, the plant says itself.
            if (begins && lasts(fault.kind) && fault.kind != FaultKind::Disconnect)
                lasting.append(fault);
        }
    } while (entries.size() == BatchSize);
}

QString FaultSwitch::place(const Fault &fault) const
{
    const QString address = simulator::faultLevel(fault.kind) == OrbItemId::System
        ? QString()
        : simulator::addressText(fault.object);
    const QString controller = resolved(fault).controller;
    return address.isEmpty() ? controller : controller + QLatin1Char(' ') + address;
}

QString FaultSwitch::places(const QVector<Fault> &faults) const
{
    const QString first = place(faults.constFirst());
    return faults.size() == 1 ? first : tr("%1 and %2 more").arg(first).arg(faults.size() - 1);
}

} // namespace workbench
