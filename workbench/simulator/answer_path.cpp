#include "workbench/simulator/answer_path.h"

#include "workbench/simulator/chance.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace simulator
{

namespace
{

constexpr double Never = std::numeric_limits<double>::infinity();

int countOf(double amount)
{
    return amount < 1 ? 1 : static_cast<int>(amount);
}

} // namespace

AnswerPath::AnswerPath(const ControllerLayout &layout, quint64 key)
    : latency(layout.latency), jitter(layout.jitter), chanceKey(key)
{ }

void AnswerPath::ask(PendingRequest request, std::chrono::milliseconds serviceLatency)
{
    const bool isServices = latency < 0 && jitter <= 0 && delay <= 0;
    if (isServices) {
        request.due = request.askedAt;
        request.release = RealTime::now() + serviceLatency;
    } else {
        const double own = latency < 0 ? std::chrono::duration<double>(serviceLatency).count() : latency;
        request.due = request.askedAt + own + drawJitter() + delay;
    }
    if (!requests.empty())
        request.due = std::max(request.due, requests.back().due);
    requests.push_back(std::move(request));
}

double AnswerPath::nextDue(double now, RealTime::time_point realNow) const
{
    if (requests.empty() || requests.front().release > realNow)
        return Never;
    const PendingRequest &next = requests.front();
    return next.waitsInRealTime() ? std::max(next.due, now) : next.due;
}

AnswerPath::RealTime::time_point AnswerPath::nextLook(double now, RealTime::time_point realNow) const
{
    if (requests.empty())
        return RealTime::time_point::max();
    const PendingRequest &next = requests.front();
    if (next.waitsInRealTime() && next.release > realNow)
        return next.release;
    return lookAfter(next.due - now, realNow);
}

AnswerPath::RealTime::time_point AnswerPath::lookAfter(double seconds, RealTime::time_point realNow)
{
    constexpr double Shortest = 0.001; // of a clock that stands
    constexpr double Longest = 86400; // for the sake of the range of RealTime
    const std::chrono::duration<double> wait(std::clamp(seconds, Shortest, Longest));
    // Rounded up: a moment too early would be one look more.
    return realNow + std::chrono::duration_cast<RealTime::duration>(wait) + std::chrono::microseconds(1);
}

PendingRequest AnswerPath::takeNext()
{
    PendingRequest next = std::move(requests.front());
    requests.pop_front();
    return next;
}

std::vector<PendingRequest> AnswerPath::drop(const QString &connection)
{
    const auto isMeant = [&connection](const auto &pending) {
        return connection.isEmpty() || pending.connection == connection;
    };
    std::vector<PendingRequest> dropped;
    if (kept && isMeant(*kept)) {
        PendingRequest request;
        request.number = kept->request;
        request.connection = kept->connection;
        request.askedAt = kept->askedAt;
        dropped.push_back(request);
        kept.reset();
    }
    std::copy_if(requests.begin(), requests.end(), std::back_inserter(dropped), isMeant);
    requests.erase(std::remove_if(requests.begin(), requests.end(), isMeant), requests.end());
    return dropped;
}

std::vector<ReadyAnswer> AnswerPath::send(const ReadyAnswer &answer)
{
    if (toDrop > 0) {
        --toDrop;
        return {};
    }
    if (isReordering && !kept) {
        kept = answer;
        return {};
    }
    std::vector<ReadyAnswer> result{answer};
    if (toDuplicate > 0) {
        --toDuplicate;
        result.push_back(answer);
    }
    if (kept) {
        result.push_back(*kept);
        kept.reset();
        isReordering = false;
    }
    return result;
}

std::vector<ReadyAnswer> AnswerPath::takeKept()
{
    std::vector<ReadyAnswer> result;
    if (kept)
        result.push_back(*kept);
    kept.reset();
    return result;
}

void AnswerPath::begin(FaultKind kind, double amount)
{
    if (kind == FaultKind::SlowAnswers)
        delay = amount;
    else if (kind == FaultKind::DropAnswers)
        toDrop += countOf(amount);
    else if (kind == FaultKind::DuplicateAnswers)
        toDuplicate += countOf(amount);
    else if (kind == FaultKind::ReorderAnswers)
        isReordering = true;
}

void AnswerPath::end(FaultKind kind)
{
    if (kind == FaultKind::SlowAnswers)
        delay = 0;
    else if (kind == FaultKind::DropAnswers)
        toDrop = 0;
    else if (kind == FaultKind::DuplicateAnswers)
        toDuplicate = 0;
    else if (kind == FaultKind::ReorderAnswers)
        isReordering = false;
}

bool AnswerPath::isActive(FaultKind kind) const
{
    switch (kind) {
    case FaultKind::SlowAnswers:
        return delay > 0;
    case FaultKind::DropAnswers:
        return toDrop > 0;
    case FaultKind::DuplicateAnswers:
        return toDuplicate > 0;
    case FaultKind::ReorderAnswers:
        return isReordering;
    default:
        return false;
    }
}

double AnswerPath::drawJitter()
{
    return jitter <= 0 ? 0 : jitter * chance::uniform(chance::mixed(chanceKey, draws++));
}

} // namespace simulator
