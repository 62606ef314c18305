#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/connection_table.h"
#include "workbench/simulator/event_queue.h"
#include "workbench/simulator/fault.h"
#include "workbench/simulator/plant_run.h"

#include <vector>

namespace simulator
{

/// The faults of channels, modules and crates, by schedule or by hand: which there are, and when they begin and end. Times
/// are in s on the plant's clock. Not locked; the service does that.
///
/// Chosen for the simulation: a fault that is there already is replaced, its duration starts over. Sparks are over with
/// the arc of the last one, whatever their duration.
class FaultBook final : private QueuedEvent
{
public:
    /// Takes the scheduled faults that are not of the controllers' level; one of an object that does not exist never
    /// comes. Table and run are not owned; the run outlives this object.
    FaultBook(ConnectionTable &connectionTable, PlantRun &plantRun,
              const std::vector<ScheduledFault> &scheduled);
    ~FaultBook() override;
    FaultBook(const FaultBook &) = delete;
    FaultBook &operator=(const FaultBook &) = delete;

    /// The plant is up to `now`. NoData when there is no such object, Failed when the kind is not for one of that level
    /// or its duration or amount makes no sense.
    TarnResult cause(const Fault &fault, double now);
    /// NoData when there is no such fault.
    TarnResult mend(const Fault &fault, double now);

    /// Whether a fault of an object of that level can be that long and that much: neither is below 0, a leak is more than
    /// 0 and at most 1000 A, there are at most 10000 sparks, and nothing is more than 1000 degrees warmer.
    static bool makesSense(const Fault &fault);

private:
    struct Turn
    {
        double at = 0;
        bool begins = false;
        Fault fault;
    };

    void happen(double time) override;
    Controller *controllerOf(const Fault &fault) const;
    void begin(const Fault &fault, Controller &controller, double now);
    bool end(const Fault &fault, Controller &controller, double now);
    void forgetEnd(const Fault &fault);
    void addTurn(const Turn &turn);
    void enter(JournalEntry::Kind kind, const Fault &fault, double now);

    ConnectionTable &table;
    PlantRun &run;
    std::vector<Fault> active; // by the controllers' connection names
    std::vector<Turn> turns; // by time
};

} // namespace simulator
