#pragma once

#include "hostclient/host_export.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <memory>

class DlDataAccessPrivate;
class DlMessageSubscriber;
class OrbBackend;
class OrbClient;
class OrbItemId;
class OrbItemValue;

/// The host's data access layer. One instance, owned by the host, which outlives every tool.
///
/// Operations may be called from any thread; subscribers are called on the thread on which the object was made, always
/// from its event loop, in the order in which the service spoke. That thread also destroys it, which ends delivery.
///
/// Chosen by our kit: changes of structure, status and values go to the subscribers of the structure, log entries to
/// every subscriber once. A subscription gets what is said after it began, and nothing of before.
class HOST_EXPORT DlDataAccess
{
public:
    /// The host's own business: tools only ever see a pointer. `backend` is not owned and outlives this object.
    explicit DlDataAccess(OrbBackend &backend);
    ~DlDataAccess();
    DlDataAccess(const DlDataAccess &) = delete;
    DlDataAccess &operator=(const DlDataAccess &) = delete;

    /// The client behind the layer; never null, owned by the layer.
    OrbClient *getOrbClientPtr();

    /// Sends a raw request to a controller, named by its connection name or by its display text.
    /// True: the request was taken over, its answer follows as raw messages; `response` is what the service said at
    /// once (may be empty). False: it was refused, and `response` says why.
    bool executeRawOrbCommand(const QString &connectionName, const QString &command, QString &response);

    /// Hands the subscriber every raw message from now on. Subscribing twice changes nothing. Not owned.
    void subscribeRawMessage(DlMessageSubscriber *subscriber);

    /// Tells the subscriber when controllers, lines or devices come or go. Chosen by our kit: a new subscriber is
    /// told once, soon after, so that it learns what is there already; the identifier is then Undefined, for the whole
    /// system. Subscribing twice changes nothing.
    void subscribeStructureChanged(DlMessageSubscriber *subscriber);

    /// Ends every subscription of the subscriber. Once it returns (on the layer's thread) no call is made any more.
    void unsubscribe(DlMessageSubscriber *subscriber);

    /// Fills `controllers` with pairs of connection name and display text; false when there is none.
    bool getAllControllerNames(QVector<QPair<QString, QString>> &controllers);

    /// Fills `names` with the item names of the object's level; false when the level has none.
    /// Chosen by our kit: `writableOnly` leaves out what can only be read.
    bool getOrbItemNames(const OrbItemId &id, QVector<QString> &names, bool writableOnly);

    /// Index of a connection, or -1 when there is none of that name.
    int getOrbConnectionIndex(const QString &connectionName);

    /// Reads the item that `value` is addressed to and stores value and unit in it. A failed read leaves it invalid.
    void readItemValue(OrbItemValue &value);

private:
    const std::unique_ptr<DlDataAccessPrivate> d;
};
