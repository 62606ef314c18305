#pragma once

#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_observer.h"

#include <QStringList>

#include <vector>

/// An observer that keeps a copy of every event. GUI thread only, as every observer.
class RecordingObserver : public KdObserver
{
public:
    RecordingObserver();
    ~RecordingObserver();

    void processChildEvent(KdChildEvent &event) override;

    /// All events, oldest first.
    const std::vector<KdChildEvent> &events() const { return recorded; }

    /// The numbers of all events, oldest first.
    std::vector<quint32> types() const;

    /// The events of one number, oldest first.
    std::vector<KdChildEvent> eventsOf(KD::EventType type) const;

    /// Text argument 0 and integer argument 0 of all events of one number, oldest first.
    QStringList textsOf(KD::EventType type) const;
    std::vector<qint64> integersOf(KD::EventType type) const;

    void clear();

private:
    std::vector<KdChildEvent> recorded;
};
