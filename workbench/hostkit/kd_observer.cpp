#include "hostsdk/kd_observer.h"

#include "hostsdk/kd_child_event.h"

KdObserver::KdObserver() = default;
KdObserver::~KdObserver() = default;

void KdObserver::childEventOccured(unsigned int type)
{
    KdChildEvent event(static_cast<KD::EventType>(type));
    processChildEvent(event);
}
