#pragma once

#include "workbench/simulator/fault.h"
#include "workbench/simulator/pending_answer.h"
#include "workbench/simulator/plant_layout.h"

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

namespace simulator
{

/// The way between the clients and one controller: how long a request is under way, and what becomes of its answer. A
/// request is carried out when its way is over, and answered at once; requests keep their order. Times are in s on the
/// plant's clock. Not locked; the service does that.
///
/// Chosen for the simulation: what a layout or a fault says of latency and jitter passes on the plant's clock. A
/// controller without a latency of its own, without jitter and not slow has that of the service, which passes in real
/// time whatever the plant's clock does.
class AnswerPath
{
public:
    using RealTime = std::chrono::steady_clock;

    /// Jitter is drawn from `key`.
    AnswerPath(const ControllerLayout &layout, quint64 key);

    void ask(PendingRequest request, std::chrono::milliseconds serviceLatency);
    /// When the next request has to be carried out; infinity for never, or not yet to be said. One whose real time has
    /// passed is due at `now`.
    double nextDue(double now, RealTime::time_point realNow) const;
    /// When to look again at the latest; the latest time of all when there is no need to.
    RealTime::time_point nextLook(double now, RealTime::time_point realNow) const;
    /// After so many s on a clock that runs by itself; one that does not is looked at again and again.
    static RealTime::time_point lookAfter(double seconds, RealTime::time_point realNow);
    /// The next request, which there is.
    PendingRequest takeNext();

    /// Requests and answers that were under way, of that connection, or of all when it is empty.
    std::vector<PendingRequest> drop(const QString &connection = {});

    /// What goes out instead of the answer, in this order: nothing when it gets lost.
    std::vector<ReadyAnswer> send(const ReadyAnswer &answer);
    /// What was kept back; it goes out now.
    std::vector<ReadyAnswer> takeKept();

    /// SlowAnswers, DropAnswers, DuplicateAnswers and ReorderAnswers; a count adds to what is left of an earlier one.
    void begin(FaultKind kind, double amount);
    void end(FaultKind kind);
    bool isActive(FaultKind kind) const;

private:
    double drawJitter();

    const double latency; // below 0 for the service's
    const double jitter;
    const quint64 chanceKey;
    quint64 draws = 0;
    std::deque<PendingRequest> requests;
    double delay = 0;
    int toDrop = 0;
    int toDuplicate = 0;
    bool isReordering = false;
    std::optional<ReadyAnswer> kept;
};

} // namespace simulator
