#include "hostclient/orb_client.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "workbench/hostkit/orb_backend.h"
#include "workbench/hostkit/orb_item_path.h"

#include <QPair>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{

/// Copies as much of the text as the field holds. A text that fills its field has no NUL, as TarnItem says.
template <std::size_t Size>
void fillField(char (&field)[Size], const QString &text)
{
    const QByteArray bytes = text.toLatin1();
    std::memcpy(field, bytes.constData(), std::min(Size, static_cast<std::size_t>(bytes.size())));
}

/// Seconds with milliseconds, or with fewer digits where these would not fit: a number cut off is another number.
template <std::size_t Size>
void fillTimestamp(char (&field)[Size], double timestamp)
{
    if (!std::isfinite(timestamp))
        return;
    constexpr int Milliseconds = 3;
    constexpr int ShortestPrecision = 15;
    const QString text = QString::number(timestamp, 'f', Milliseconds);
    fillField(field,
              text.size() <= static_cast<int>(Size) ? text
                                                    : QString::number(timestamp, 'g', ShortestPrecision));
}

QVariant toVariant(const OrbItemReading &reading)
{
    bool ok = false;
    if (reading.type == QLatin1String("bool")) {
        if (reading.value == QLatin1String("true"))
            return true;
        if (reading.value == QLatin1String("false"))
            return false;
    } else if (reading.type == QLatin1String("int")) {
        const qlonglong number = reading.value.toLongLong(&ok);
        if (ok)
            return number;
    } else if (reading.type == QLatin1String("float")) {
        const double number = reading.value.toDouble(&ok);
        if (ok)
            return number;
    }
    return reading.value;
}

/// The identifier of an item on a connection; false when the path is none.
bool makeItemId(const OrbBackend &backend, const QString &connectionName, const QString &itemPath,
                OrbItemId &id)
{
    if (!hostkit::parseItemPath(itemPath, id))
        return false;
    id.connectionName = connectionName;
    id.connection = backend.connectionIndex(connectionName);
    return true;
}

} // namespace

OrbClient::OrbClient(OrbBackend &service) : backend(service) { }

OrbClient::~OrbClient() = default;

TarnResult OrbClient::establishConnection(const QString &connectionName, const QString &address,
                                          const QString &login, const QString &password, unsigned &)
{
    return backend.openConnection(connectionName, address, login, password);
}

TarnResult OrbClient::establishScriptConnection(const QString &connectionName, const QString &address,
                                                const QString &scriptName, const QString &sessionId,
                                                const QString &login, const QString &password, unsigned &)
{
    return backend.openScriptConnection(connectionName, address, scriptName, sessionId, login, password);
}

bool OrbClient::checkHasConnection(const QString &connectionName)
{
    return backend.connectionIndex(connectionName) >= 0;
}

TarnResult OrbClient::closeConnection(const QString &connectionName)
{
    return backend.closeConnection(connectionName);
}

QHash<QString, unsigned> OrbClient::getConnectionsIndices(bool includeLocal) const
{
    QHash<QString, unsigned> indices;
    const QVector<QPair<QString, QString>> controllers = backend.controllers();
    for (const QPair<QString, QString> &controller : controllers) {
        // Another thread may have closed it since it was listed.
        const int index = backend.connectionIndex(controller.first);
        if (index >= 0 && (includeLocal || !backend.isLocal(controller.first)))
            indices.insert(controller.first, static_cast<unsigned>(index));
    }
    return indices;
}

TarnItem OrbClient::getItem(const QString &connectionName, const QString &itemPath)
{
    TarnItem item{};
    OrbItemId id;
    OrbItemReading reading;
    if (!makeItemId(backend, connectionName, itemPath, id)
        || backend.readItem(id, reading) != TarnResult::Success)
        return item;
    fillField(item.path, itemPath);
    fillField(item.value, reading.value);
    fillField(item.unit, reading.unit);
    fillField(item.type, reading.type);
    fillTimestamp(item.timestamp, reading.timestamp);
    return item;
}

TarnItem OrbClient::getItem(const char *connectionName, const char *itemPath)
{
    return getItem(QString::fromLatin1(connectionName), QString::fromLatin1(itemPath));
}

TarnResult OrbClient::setItem(const QString &connectionName, const QString &itemPath, const QString &value)
{
    OrbItemId id;
    if (!makeItemId(backend, connectionName, itemPath, id))
        return TarnResult::NoData;
    return backend.writeItem(id, value);
}

TarnResult OrbClient::setItem(const char *connectionName, const char *itemPath, const char *value)
{
    return setItem(QString::fromLatin1(connectionName), QString::fromLatin1(itemPath),
                   QString::fromLatin1(value));
}

bool OrbClient::readItemValue(OrbItemValue &value)
{
    OrbItemReading reading;
    const bool success = backend.readItem(value.id(), reading) == TarnResult::Success;
    value.setValue(success ? toVariant(reading) : QVariant());
    value.setUnit(success ? reading.unit : QString());
    return success;
}

bool OrbClient::executeRawOrbCommand(const QString &connectionName, const QString &command, QString &response)
{
    response.clear();
    return backend.rawRequest(connectionName, command, response);
}

bool OrbClient::getCrates(const QString &connectionName, QVector<OrbItemId> &crates)
{
    crates.clear();
    return backend.crates(connectionName, crates);
}

bool OrbClient::getModules(const QString &connectionName, QVector<OrbItemId> &modules)
{
    modules.clear();
    return backend.modules(connectionName, modules);
}

bool OrbClient::getCrateModules(const QString &connectionName, const OrbItemId &crate,
                                QVector<OrbItemId> &modules)
{
    modules.clear();
    // Callers build a crate's identifier from line and address alone.
    OrbItemId id = crate;
    id.connectionName = connectionName;
    id.connection = backend.connectionIndex(connectionName);
    return backend.crateModules(id, modules);
}

TarnResult OrbClient::activateDataPassThrough(const QString &connectionName, const QString &scriptName)
{
    return backend.activatePassThrough(connectionName, scriptName);
}

TarnResult OrbClient::getNextPassThroughMessage(const QString &connectionName, OrbRequestItem &request)
{
    return backend.takePassThroughMessage(connectionName, request);
}

TarnResult OrbClient::getPassThroughMessageList(const QString &connectionName,
                                                QVector<OrbRequestItem> &requests)
{
    requests.clear();
    return backend.takePassThroughMessages(connectionName, requests);
}

TarnResult OrbClient::sendPassThroughMessage(const QString &connectionName, const OrbItemValue &value)
{
    return backend.sendPassThroughMessages(connectionName, {value});
}

TarnResult OrbClient::sendPassThroughMessage(const QString &connectionName,
                                             const QVector<OrbItemValue> &values)
{
    return backend.sendPassThroughMessages(connectionName, values);
}

TarnResult OrbClient::setDebugLevel(int level)
{
    return backend.setDebugLevel(level);
}

QString OrbClient::getVersionString()
{
    return QStringLiteral(HOST_KIT_VERSION);
}
