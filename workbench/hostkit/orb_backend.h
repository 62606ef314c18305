#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/tarn_result.h"

#include <QPair>
#include <QString>
#include <QVector>

struct OrbLogMessage;
class OrbItemValue;
class OrbRequestItem;

/// One item as a backend reads it.
struct OrbItemReading
{
    QString value; ///< "true", "false", a decimal number or a text
    QString unit; ///< "V", "A", "%/s"; empty for a plain number
    QString type; ///< "bool", "int", "float" or "string"
    double timestamp = 0; ///< when the value was taken, in seconds since 1970-01-01 UTC
};

/// Receives what a backend has to say of its own accord. May be called on any thread.
class HOST_EXPORT OrbBackendListener
{
public:
    /// A raw message from a connection: a trigger, or the data of an answer.
    virtual void rawMessage(const QString &connectionName, const QString &message) = 0;

    /// Something came or went below `id`.
    virtual void structureChanged(const OrbItemId &id) = 0;

    /// Values below `id` changed otherwise than by the passing of time.
    virtual void valuesChanged(const OrbItemId &id) = 0;

    /// The status of `id` changed (a connection opened or closed, a device failed).
    virtual void statusChanged(const OrbItemId &id) = 0;

    virtual void messageWasLogged(const OrbLogMessage &message) = 0;

protected:
    OrbBackendListener();
    ~OrbBackendListener();
};

/// The service that OrbClient and DlDataAccess speak to: the simulated system, the recording backend of a test, or a
/// network service. Called from the GUI thread and from an interpreter's thread at the same time; a backend locks
/// for itself, and calls its listener with no lock held. Identifiers name their connection by text or by index
/// (see OrbItemId).
class HOST_EXPORT OrbBackend
{
public:
    virtual ~OrbBackend();

    /// One listener, not owned; null ends it. No call to the old listener is under way once this returns.
    virtual void setListener(OrbBackendListener *listener) = 0;

    // Connections

    virtual TarnResult openConnection(const QString &connectionName, const QString &address,
                                      const QString &login, const QString &password) = 0;
    /// The same for a script that the service started, which names itself and the session that it was started in.
    virtual TarnResult openScriptConnection(const QString &connectionName, const QString &address,
                                            const QString &scriptName, const QString &sessionId,
                                            const QString &login, const QString &password) = 0;
    virtual TarnResult closeConnection(const QString &connectionName) = 0;
    /// Pairs of connection name and display text, in the order of the connection indices.
    virtual QVector<QPair<QString, QString>> controllers() const = 0;
    /// Index of an open connection, -1 for none. An index is never given to another connection later.
    virtual int connectionIndex(const QString &connectionName) const = 0;
    /// Whether the connection is the one to the service on this machine.
    virtual bool isLocal(const QString &connectionName) const = 0;

    // Structure. False, with an empty list, when there is no such connection or object.

    virtual bool crates(const QString &connectionName, QVector<OrbItemId> &ids) const = 0;
    virtual bool modules(const QString &connectionName, QVector<OrbItemId> &ids) const = 0;
    virtual bool crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const = 0;
    virtual bool itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const = 0;

    // Items. `id.itemName` says which.

    virtual TarnResult readItem(const OrbItemId &id, OrbItemReading &reading) = 0;
    virtual TarnResult writeItem(const OrbItemId &id, const QString &value) = 0;

    /// A raw request to a controller, named by its connection name or its display text. True: taken over, answers
    /// follow through the listener, never before this returns. False: refused, and `reply` says why.
    virtual bool rawRequest(const QString &controller, const QString &request, QString &reply) = 0;

    // Pass-through messages

    virtual TarnResult activatePassThrough(const QString &connectionName, const QString &scriptName) = 0;
    virtual TarnResult takePassThroughMessage(const QString &connectionName, OrbRequestItem &request) = 0;
    virtual TarnResult takePassThroughMessages(const QString &connectionName,
                                               QVector<OrbRequestItem> &requests) = 0;
    virtual TarnResult sendPassThroughMessages(const QString &connectionName,
                                               const QVector<OrbItemValue> &values) = 0;

    virtual TarnResult setDebugLevel(int level) = 0;
};
