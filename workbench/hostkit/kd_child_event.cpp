#include "hostsdk/kd_child_event.h"

KdChildEvent::KdChildEvent(KD::EventType eventType) : KdParentEvent(eventType) { }

KdChildEvent::KdChildEvent(KD::EventType eventType, const QString &argument) : KdParentEvent(eventType)
{
    stringArguments.append(argument);
}

KdChildEvent::KdChildEvent(KD::EventType eventType, qint64 argument) : KdParentEvent(eventType)
{
    intArguments.append(argument);
}

KdChildEvent::KdChildEvent(const KdChildEvent &other) = default;
KdChildEvent &KdChildEvent::operator=(const KdChildEvent &other) = default;
KdChildEvent::~KdChildEvent() = default;
