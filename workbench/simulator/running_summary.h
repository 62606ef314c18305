#pragma once

#include <QString>
#include <QtGlobal>

namespace simulator
{

/// What an object contributes to the running state and the counters of the objects above it.
struct RunningCounts
{
    qint32 events = 0; ///< that no mask holds back
    qint32 errors = 0;
    qint32 failing = 0; ///< objects with an error
    qint32 ramping = 0; ///< channels
    qint32 on = 0; ///< channels

    RunningCounts &operator+=(const RunningCounts &other)
    {
        events += other.events;
        errors += other.errors;
        failing += other.failing;
        ramping += other.ramping;
        on += other.on;
        return *this;
    }

    RunningCounts &operator-=(const RunningCounts &other)
    {
        events -= other.events;
        errors -= other.errors;
        failing -= other.failing;
        ramping -= other.ramping;
        on -= other.on;
        return *this;
    }

    bool operator==(const RunningCounts &other) const
    {
        return events == other.events && errors == other.errors && failing == other.failing
            && ramping == other.ramping && on == other.on;
    }

    /// The worst first: "error", "info" (something ramps), "ok" (something is on), "off".
    QString runningState() const
    {
        if (failing > 0)
            return QStringLiteral("error");
        if (ramping > 0)
            return QStringLiteral("info");
        return on > 0 ? QStringLiteral("ok") : QStringLiteral("off");
    }
};

/// The counts of an object and of everything below it, kept up to date by whoever changes: asking costs the same
/// however much is below.
class RunningSummary
{
public:
    /// Null for the topmost; not owned.
    explicit RunningSummary(RunningSummary *above) : parent(above) { }

    const RunningCounts &counts() const { return total; }

    /// What somebody contributed becomes what he contributes now.
    void replace(const RunningCounts &before, const RunningCounts &after)
    {
        if (before == after)
            return;
        for (RunningSummary *level = this; level != nullptr; level = level->parent) {
            level->total += after;
            level->total -= before;
        }
    }

private:
    RunningSummary *const parent;
    RunningCounts total;
};

} // namespace simulator
