#pragma once

#include <QtAlgorithms>
#include <QtGlobal>

namespace simulator
{

/// Keeps what happened until somebody clears it. Conditions are bits.
/// The counters count what was raised since the last clearing; what is already pending is not counted again.
class ConditionLatch
{
public:
    void raiseEvents(quint32 conditions) { pendingEvents |= conditions; }
    void raiseErrors(quint32 conditions) { pendingErrors |= conditions; }

    void clearEvents() { pendingEvents = 0; }
    void clearErrors() { pendingErrors = 0; }

    quint32 events() const { return pendingEvents; }
    quint32 errors() const { return pendingErrors; }
    quint32 eventCount() const { return qPopulationCount(pendingEvents); }
    quint32 errorCount() const { return qPopulationCount(pendingErrors); }

private:
    quint32 pendingEvents = 0;
    quint32 pendingErrors = 0;
};

} // namespace simulator
