#include "tests/support/recording_observer.h"

#include <algorithm>
#include <iterator>

RecordingObserver::RecordingObserver() = default;
RecordingObserver::~RecordingObserver() = default;

void RecordingObserver::processChildEvent(KdChildEvent &event)
{
    recorded.push_back(event);
}

std::vector<quint32> RecordingObserver::types() const
{
    std::vector<quint32> types;
    std::transform(recorded.cbegin(), recorded.cend(), std::back_inserter(types),
                   [](const KdChildEvent &event) { return event.type; });
    return types;
}

std::vector<KdChildEvent> RecordingObserver::eventsOf(KD::EventType type) const
{
    std::vector<KdChildEvent> events;
    std::copy_if(recorded.cbegin(), recorded.cend(), std::back_inserter(events),
                 [&](const KdChildEvent &event) { return event.type == type; });
    return events;
}

QStringList RecordingObserver::textsOf(KD::EventType type) const
{
    QStringList texts;
    for (const KdChildEvent &event : recorded) {
        if (event.type == type)
            texts.append(event.getStringArgument(0));
    }
    return texts;
}

std::vector<qint64> RecordingObserver::integersOf(KD::EventType type) const
{
    std::vector<qint64> integers;
    for (const KdChildEvent &event : recorded) {
        if (event.type == type)
            integers.push_back(event.getIntArgument(0));
    }
    return integers;
}

void RecordingObserver::clear()
{
    recorded.clear();
}
