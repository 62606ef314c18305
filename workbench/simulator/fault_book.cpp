#include "workbench/simulator/fault_book.h"

#include <algorithm>
#include <cmath>

namespace simulator
{

namespace
{

constexpr double LargestLeak = 1000; // A
constexpr double LargestExcess = 1000; // degrees
constexpr double MostSparks = 10000;

bool isSame(const Fault &a, const Fault &b)
{
    return a.kind == b.kind && a.object == b.object && a.controller == b.controller;
}

double durationOf(const Fault &fault)
{
    if (fault.kind != FaultKind::Spark)
        return fault.duration;
    const double sparks = std::max(1.0, std::round(fault.amount));
    return (sparks - 1) * Channel::SparkSpacing + Channel::ArcDuration;
}

} // namespace

FaultBook::FaultBook(ConnectionTable &connectionTable, PlantRun &plantRun,
                     const std::vector<ScheduledFault> &scheduled)
    : table(connectionTable), run(plantRun)
{
    run.queue.rank(*this);
    for (const ScheduledFault &entry : scheduled) {
        if (faultLevel(entry.fault.kind) != OrbItemId::System)
            addTurn({entry.at, true, entry.fault});
    }
}

FaultBook::~FaultBook()
{
    run.queue.setDue(*this, Never);
}

bool FaultBook::makesSense(const Fault &fault)
{
    const double amount = fault.amount;
    if (fault.object.level != faultLevel(fault.kind) || !std::isfinite(fault.duration) || fault.duration < 0
        || !std::isfinite(amount) || amount < 0)
        return false;
    switch (fault.kind) {
    case FaultKind::Leak:
        return amount > 0 && amount <= LargestLeak;
    case FaultKind::Spark:
        return amount <= MostSparks;
    default:
        return amount <= LargestExcess;
    }
}

TarnResult FaultBook::cause(const Fault &fault, double now)
{
    if (!makesSense(fault))
        return TarnResult::Failed;
    Controller *const controller = controllerOf(fault);
    if (controller == nullptr)
        return TarnResult::NoData;
    begin(fault, *controller, now);
    return TarnResult::Success;
}

TarnResult FaultBook::mend(const Fault &fault, double now)
{
    if (fault.object.level != faultLevel(fault.kind))
        return TarnResult::Failed;
    Controller *const controller = controllerOf(fault);
    return controller != nullptr && end(fault, *controller, now) ? TarnResult::Success : TarnResult::NoData;
}

void FaultBook::happen(double time)
{
    const Turn turn = turns.front();
    turns.erase(turns.begin());
    Controller *const controller = controllerOf(turn.fault);
    if (controller != nullptr && !turn.begins)
        end(turn.fault, *controller, time);
    else if (controller != nullptr && makesSense(turn.fault))
        begin(turn.fault, *controller, time);
    run.queue.setDue(*this, turns.empty() ? Never : turns.front().at);
}

Controller *FaultBook::controllerOf(const Fault &fault) const
{
    Controller *const controller = table.controller(fault.controller);
    return controller != nullptr && controller->hasObject(fault.object) ? controller : nullptr;
}

void FaultBook::begin(const Fault &fault, Controller &controller, double now)
{
    Fault begun = fault;
    begun.controller = controller.connectionName();
    forgetEnd(begun);
    const auto there = std::find_if(active.begin(), active.end(),
                                    [&begun](const Fault &other) { return isSame(begun, other); });
    if (there == active.end())
        active.push_back(begun);
    const double duration = durationOf(begun);
    if (duration > 0)
        addTurn({now + duration, false, begun});
    enter(JournalEntry::FaultBegins, begun, now);
    controller.applyFault(begun, true, now);
}

bool FaultBook::end(const Fault &fault, Controller &controller, double now)
{
    Fault ended = fault;
    ended.controller = controller.connectionName();
    const auto there = std::find_if(active.begin(), active.end(),
                                    [&ended](const Fault &other) { return isSame(ended, other); });
    if (there == active.end())
        return false;
    active.erase(there);
    forgetEnd(ended);
    enter(JournalEntry::FaultEnds, ended, now);
    controller.applyFault(ended, false, now);
    return true;
}

void FaultBook::forgetEnd(const Fault &fault)
{
    const auto isItsEnd = [&fault](const Turn &turn) { return !turn.begins && isSame(turn.fault, fault); };
    turns.erase(std::remove_if(turns.begin(), turns.end(), isItsEnd), turns.end());
    run.queue.setDue(*this, turns.empty() ? Never : turns.front().at);
}

void FaultBook::addTurn(const Turn &turn)
{
    const auto later = std::upper_bound(turns.begin(), turns.end(), turn,
                                        [](const Turn &a, const Turn &b) { return a.at < b.at; });
    turns.insert(later, turn);
    run.queue.setDue(*this, turns.front().at);
}

void FaultBook::enter(JournalEntry::Kind kind, const Fault &fault, double now)
{
    JournalEntry entry;
    entry.kind = kind;
    entry.time = now;
    entry.controller = fault.controller;
    entry.object = fault.object;
    entry.text = faultName(fault.kind);
    run.journal.add(std::move(entry));
}

} // namespace simulator
