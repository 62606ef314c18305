#pragma once

#include "hostclient/host_export.h"
#include "hostclient/tarn_item.h"
#include "hostclient/tarn_result.h"

#include <QHash>
#include <QString>
#include <QVector>

class OrbBackend;
class OrbItemId;
class OrbItemValue;
class OrbRequestItem;

/// The client of the control system's service. One instance, owned by the host.
///
/// Every operation may be called from any thread and blocks until it has its result. None throws. Connections are
/// named by the text under which they were opened. An item path is "item", "line.address.item" or
/// "line.address.channel.item" with decimal numbers, such as "0.4.1.Status.voltageMeasure"; addresses from 1000 on
/// are crates.
class HOST_EXPORT OrbClient
{
public:
    /// The host's own business: tools only ever see a pointer. `backend` is not owned and outlives the client.
    explicit OrbClient(OrbBackend &backend);
    ~OrbClient();
    OrbClient(const OrbClient &) = delete;
    OrbClient &operator=(const OrbClient &) = delete;

    /// Opens a connection to "ip:port". `number` is 1 before the call; its value afterwards has no meaning.
    TarnResult establishConnection(const QString &connectionName, const QString &address,
                                   const QString &login, const QString &password, unsigned &number);

    /// The same for a script that the service started. Chosen by our kit for the four further texts: script name,
    /// session id, login, password.
    TarnResult establishScriptConnection(const QString &connectionName, const QString &address,
                                         const QString &scriptName, const QString &sessionId,
                                         const QString &login, const QString &password, unsigned &number);

    /// Whether requests reach the connection: false for a name that is unknown or closed.
    bool checkHasConnection(const QString &connectionName);

    /// Closes a connection. Chosen by our kit: NoData for an unknown name, NotConnected for one that is closed already.
    TarnResult closeConnection(const QString &connectionName);

    /// Names and indices of the open connections, with or without the one to the local service.
    QHash<QString, unsigned> getConnectionsIndices(bool includeLocal) const;

    /// Reads an item. The record's first text is empty when the read failed.
    TarnItem getItem(const QString &connectionName, const QString &itemPath);
    TarnItem getItem(const char *connectionName, const char *itemPath);

    /// Writes an item from the text of its value.
    TarnResult setItem(const QString &connectionName, const QString &itemPath, const QString &value);
    TarnResult setItem(const char *connectionName, const char *itemPath, const char *value);

    /// Reads the item that `value` is addressed to into it; false when there is no such item.
    bool readItemValue(OrbItemValue &value);

    /// As DlDataAccess::executeRawOrbCommand.
    bool executeRawOrbCommand(const QString &connectionName, const QString &command, QString &response);

    /// The crates, the modules of all lines, and the modules of one crate; false when there is no such connection.
    bool getCrates(const QString &connectionName, QVector<OrbItemId> &crates);
    bool getModules(const QString &connectionName, QVector<OrbItemId> &modules);
    bool getCrateModules(const QString &connectionName, const OrbItemId &crate, QVector<OrbItemId> &modules);

    /// Pass-through: requests that the service forwards to a script instead of answering them itself. A message that
    /// was handed out is not handed out again. Chosen by our kit: Failed before pass-through is activated on the
    /// connection, NoData for an unknown connection, NotConnected for a closed one. When no message waits, the next one
    /// is NoData and leaves `request` as it was, and the list is a Success that is empty. `requests` is cleared first,
    /// whatever the result.
    TarnResult activateDataPassThrough(const QString &connectionName, const QString &scriptName);
    TarnResult getNextPassThroughMessage(const QString &connectionName, OrbRequestItem &request);
    TarnResult getPassThroughMessageList(const QString &connectionName, QVector<OrbRequestItem> &requests);
    TarnResult sendPassThroughMessage(const QString &connectionName, const OrbItemValue &value);
    TarnResult sendPassThroughMessage(const QString &connectionName, const QVector<OrbItemValue> &values);

    /// 0 silent, 1 errors to stderr, 2 everything to stderr and stdout. Chosen by our kit: any other level is Failed and
    /// changes nothing.
    TarnResult setDebugLevel(int level);

    /// Version of the client library.
    static QString getVersionString();

private:
    OrbBackend &backend;
};
