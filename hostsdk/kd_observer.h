#pragma once

#include "hostclient/host_export.h"

class KdChildEvent;

/// Receives child events. The host is one, and so is every tool, for the parts that it is made of. Not owned by the
/// objects that report to it; it outlives them. GUI thread only.
class HOST_EXPORT KdObserver
{
public:
    /// Called with each event, on the GUI thread, before the sender goes on. The event belongs to the sender.
    virtual void processChildEvent(KdChildEvent &event) = 0;

    /// Builds an event of that type with no arguments and delivers it to processChildEvent.
    void childEventOccured(unsigned int type);

protected:
    KdObserver();
    ~KdObserver();
};
