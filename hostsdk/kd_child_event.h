#pragma once

#include "hostsdk/kd_parent_event.h"

/// The event that a tool, or a part of it, sends up. Same layout and operations as KdParentEvent.
class HOST_EXPORT KdChildEvent : public KdParentEvent
{
public:
    explicit KdChildEvent(KD::EventType eventType);
    KdChildEvent(KD::EventType eventType, const QString &argument); ///< text argument 0
    KdChildEvent(KD::EventType eventType, qint64 argument); ///< integer argument 0
    KdChildEvent(const KdChildEvent &other);
    KdChildEvent &operator=(const KdChildEvent &other);
    ~KdChildEvent();
};
