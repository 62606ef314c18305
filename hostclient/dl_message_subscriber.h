#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"

#include <QString>

struct OrbLogMessage;

/// What the data access layer has at hand when it asks a subscriber whether it wants it.
struct DlNotificationQuery
{
    /// Third word of a query. Only StructureChanged is the library's own number.
    enum Kind : quint32
    {
        StructureChanged = 1,
        RawMessage = 2,
        LogMessage = 3,
        StatusChanged = 4,
        ValuesChanged = 5,
    };

    quint32 connection = 0; ///< index of the connection that it comes from, all ones for none
    quint32 sequence = 0; ///< counts the notifications of this layer
    quint32 kind = 0; ///< one of Kind
    quint32 reserved = 0; ///< always 0
};

/// Receives notifications of the data access layer. Constructor and destructor are public and not virtual: the layer
/// never owns a subscriber. A subscriber unsubscribes itself before it is destroyed.
///
/// The layer calls all of these on the thread that DlDataAccess lives on (the GUI thread). A subscriber must still
/// be ready for structureChanged, and for wantsNotification just before it on the same thread, on any thread, since
/// other data access layers do call them from theirs.
class HOST_EXPORT DlMessageSubscriber
{
public:
    DlMessageSubscriber();
    ~DlMessageSubscriber();

    /// Asked before each notification: does this subscriber want it?
    /// Chosen by our kit for raw messages: they go to those who answer true (a console that waits for its answer)
    /// and, when nobody does, to every subscriber of raw messages, so that a late answer is seen and not lost.
    virtual bool wantsNotification(DlNotificationQuery &query) = 0;

    /// An entry was added to the service's log. Does nothing by default.
    virtual void messageWasLogged(const OrbLogMessage &message);

    /// The status of an object changed. Does nothing by default.
    virtual void statusChanged(const OrbItemId &id);

    /// Values of an object changed. Does nothing by default.
    virtual void valuesChanged(const OrbItemId &id);

    /// Controllers, lines or devices came or went below `id`. Does nothing by default.
    virtual void structureChanged(const OrbItemId &id);

    /// A raw message of a controller arrived: a trigger or the data of an answer. Does nothing by default.
    virtual void rawMessageReceived(const QString &message);
};
