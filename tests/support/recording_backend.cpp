#include "tests/support/recording_backend.h"

#include <QMetaObject>

#include <algorithm>
#include <iterator>
#include <utility>

RecordingBackend::RecordingBackend() = default;
RecordingBackend::~RecordingBackend() = default;

QVector<RecordedCall> RecordingBackend::calls() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return recorded;
}

int RecordingBackend::callCount() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return recorded.size();
}

QVector<RecordedCall> RecordingBackend::callsOf(const QString &operation) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    QVector<RecordedCall> found;
    std::copy_if(recorded.cbegin(), recorded.cend(), std::back_inserter(found),
                 [&](const RecordedCall &call) { return call.operation == operation; });
    return found;
}

QStringList RecordingBackend::requests() const
{
    QStringList texts;
    const QVector<RecordedCall> found = callsOf(QStringLiteral("rawRequest"));
    for (const RecordedCall &call : found)
        texts.append(call.arguments.at(1));
    return texts;
}

QVector<OrbItemValue> RecordingBackend::sentValues() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return sent;
}

void RecordingBackend::clearCalls()
{
    const std::lock_guard<std::mutex> lock(mutex);
    recorded.clear();
    sent.clear();
}

void RecordingBackend::setControllers(const QVector<QPair<QString, QString>> &list)
{
    const std::lock_guard<std::mutex> lock(mutex);
    connections.clear();
    for (const QPair<QString, QString> &controller : list)
        connections.append({controller.first, controller.second, true});
}

void RecordingBackend::setLocalConnection(const QString &connectionName)
{
    const std::lock_guard<std::mutex> lock(mutex);
    localConnection = connectionName;
}

void RecordingBackend::setResult(TarnResult value)
{
    const std::lock_guard<std::mutex> lock(mutex);
    result = value;
}

void RecordingBackend::setCrates(const QVector<OrbItemId> &ids)
{
    const std::lock_guard<std::mutex> lock(mutex);
    crateIds = ids;
}

void RecordingBackend::setModules(const QVector<OrbItemId> &ids)
{
    const std::lock_guard<std::mutex> lock(mutex);
    moduleIds = ids;
}

void RecordingBackend::setCrateModules(const QVector<OrbItemId> &ids)
{
    const std::lock_guard<std::mutex> lock(mutex);
    crateModuleIds = ids;
}

void RecordingBackend::setItemNames(OrbItemId::Type level, const QVector<QString> &names)
{
    const std::lock_guard<std::mutex> lock(mutex);
    namesOfLevel.insert(level, names);
}

void RecordingBackend::setItem(const QString &connectionName, const QString &path,
                               const OrbItemReading &reading)
{
    const std::lock_guard<std::mutex> lock(mutex);
    items.insert(connectionName + QLatin1Char(':') + path, reading);
}

void RecordingBackend::setPassThroughMessages(const QVector<OrbRequestItem> &requests)
{
    const std::lock_guard<std::mutex> lock(mutex);
    passThroughMessages = requests;
}

void RecordingBackend::setRawAnswer(const RawAnswer &answer)
{
    const std::lock_guard<std::mutex> lock(mutex);
    rawAnswer = answer;
}

void RecordingBackend::setRawHandler(RawHandler handler)
{
    const std::lock_guard<std::mutex> lock(mutex);
    rawHandler = std::move(handler);
}

void RecordingBackend::sendRawMessage(const QString &connectionName, const QString &message)
{
    tellListener([&](OrbBackendListener &target) { target.rawMessage(connectionName, message); });
}

void RecordingBackend::sendStructureChanged(const OrbItemId &id)
{
    tellListener([&](OrbBackendListener &target) { target.structureChanged(id); });
}

void RecordingBackend::sendValuesChanged(const OrbItemId &id)
{
    tellListener([&](OrbBackendListener &target) { target.valuesChanged(id); });
}

void RecordingBackend::sendStatusChanged(const OrbItemId &id)
{
    tellListener([&](OrbBackendListener &target) { target.statusChanged(id); });
}

void RecordingBackend::sendLogMessage(const OrbLogMessage &message)
{
    tellListener([&](OrbBackendListener &target) { target.messageWasLogged(message); });
}

bool RecordingBackend::hasListener() const
{
    const std::shared_lock<std::shared_mutex> lock(listenerLock);
    return listener != nullptr;
}

QString RecordingBackend::textOf(const OrbItemId &id)
{
    QStringList parts;
    if (id.type >= OrbItemId::Line)
        parts.append(QString::number(id.line));
    if (id.type >= OrbItemId::Crate)
        parts.append(QString::number(id.address));
    if (id.type == OrbItemId::Channel)
        parts.append(QString::number(id.channel));
    if (!id.itemName.isEmpty())
        parts.append(id.itemName);
    return id.connectionName + QLatin1Char(':') + parts.join(QLatin1Char('.'));
}

void RecordingBackend::setListener(OrbBackendListener *newListener)
{
    const std::unique_lock<std::shared_mutex> lock(listenerLock);
    listener = newListener;
}

TarnResult RecordingBackend::openConnection(const QString &connectionName, const QString &address,
                                            const QString &login, const QString &password)
{
    record("openConnection", {connectionName, address, login, password});
    return open(connectionName);
}

TarnResult RecordingBackend::openScriptConnection(const QString &connectionName, const QString &address,
                                                  const QString &scriptName, const QString &sessionId,
                                                  const QString &login, const QString &password)
{
    record("openScriptConnection", {connectionName, address, scriptName, sessionId, login, password});
    return open(connectionName);
}

TarnResult RecordingBackend::open(const QString &connectionName)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (result == TarnResult::Success)
        connections.append({connectionName, connectionName, true});
    return result;
}

TarnResult RecordingBackend::closeConnection(const QString &connectionName)
{
    record("closeConnection", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    const int index = openIndex(connectionName);
    if (index < 0)
        return TarnResult::NoData;
    if (result == TarnResult::Success)
        connections[index].open = false;
    return result;
}

QVector<QPair<QString, QString>> RecordingBackend::controllers() const
{
    record("controllers", {});
    const std::lock_guard<std::mutex> lock(mutex);
    QVector<QPair<QString, QString>> list;
    for (const Connection &connection : connections) {
        if (connection.open)
            list.append({connection.name, connection.displayText});
    }
    return list;
}

int RecordingBackend::connectionIndex(const QString &connectionName) const
{
    record("connectionIndex", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    return openIndex(connectionName);
}

bool RecordingBackend::isLocal(const QString &connectionName) const
{
    record("isLocal", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    return connectionName == localConnection;
}

bool RecordingBackend::crates(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    record("crates", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    ids = crateIds;
    return openIndex(connectionName) >= 0;
}

bool RecordingBackend::modules(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    record("modules", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    ids = moduleIds;
    return openIndex(connectionName) >= 0;
}

bool RecordingBackend::crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const
{
    record("crateModules", {textOf(crate)});
    const std::lock_guard<std::mutex> lock(mutex);
    ids = crateModuleIds;
    return openIndex(crate.connectionName) >= 0;
}

bool RecordingBackend::itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const
{
    record("itemNames",
           {textOf(id), QString::number(id.type),
            writableOnly ? QStringLiteral("writableOnly") : QStringLiteral("all")});
    const std::lock_guard<std::mutex> lock(mutex);
    names = namesOfLevel.value(id.type);
    return !names.isEmpty();
}

TarnResult RecordingBackend::readItem(const OrbItemId &id, OrbItemReading &reading)
{
    record("readItem", {textOf(id)});
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = items.constFind(itemKey(id));
    if (found == items.constEnd())
        return TarnResult::NoData;
    reading = *found;
    return TarnResult::Success;
}

TarnResult RecordingBackend::writeItem(const OrbItemId &id, const QString &value)
{
    record("writeItem", {textOf(id), value});
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = items.find(itemKey(id));
    if (result == TarnResult::Success && found != items.end())
        found->value = value;
    return result;
}

bool RecordingBackend::rawRequest(const QString &controller, const QString &request, QString &reply)
{
    record("rawRequest", {controller, request});
    RawHandler handler;
    RawAnswer answer;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        handler = rawHandler;
        answer = rawAnswer;
    }
    if (handler)
        answer = handler(controller, request);
    // A backend that has nothing to say need not touch the text.
    if (!answer.reply.isEmpty())
        reply = answer.reply;
    // Never before this returns, as every backend promises.
    if (!answer.messages.isEmpty()) {
        QMetaObject::invokeMethod(
            &later,
            [this, controller, messages = answer.messages] {
                for (const QString &message : messages)
                    sendRawMessage(controller, message);
            },
            Qt::QueuedConnection);
    }
    return answer.accepted;
}

TarnResult RecordingBackend::activatePassThrough(const QString &connectionName, const QString &scriptName)
{
    record("activatePassThrough", {connectionName, scriptName});
    const std::lock_guard<std::mutex> lock(mutex);
    return result;
}

TarnResult RecordingBackend::takePassThroughMessage(const QString &connectionName, OrbRequestItem &request)
{
    record("takePassThroughMessage", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    if (passThroughMessages.isEmpty())
        return TarnResult::NoData;
    request = passThroughMessages.takeFirst();
    return TarnResult::Success;
}

TarnResult RecordingBackend::takePassThroughMessages(const QString &connectionName,
                                                     QVector<OrbRequestItem> &requests)
{
    record("takePassThroughMessages", {connectionName});
    const std::lock_guard<std::mutex> lock(mutex);
    requests = std::exchange(passThroughMessages, {});
    return result;
}

TarnResult RecordingBackend::sendPassThroughMessages(const QString &connectionName,
                                                     const QVector<OrbItemValue> &values)
{
    record("sendPassThroughMessages", {connectionName, QString::number(values.size())});
    const std::lock_guard<std::mutex> lock(mutex);
    sent += values;
    return result;
}

TarnResult RecordingBackend::setDebugLevel(int level)
{
    record("setDebugLevel", {QString::number(level)});
    const std::lock_guard<std::mutex> lock(mutex);
    return result;
}

void RecordingBackend::record(const char *operation, const QStringList &arguments) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    recorded.append({QString::fromLatin1(operation), arguments});
}

/// The index of an open connection, -1 for none. The mutex is held.
int RecordingBackend::openIndex(const QString &connectionName) const
{
    for (int i = 0; i < connections.size(); ++i) {
        if (connections.at(i).open && connections.at(i).name == connectionName)
            return i;
    }
    return -1;
}

/// An item's key, its connection named by text or by index. The mutex is held.
QString RecordingBackend::itemKey(const OrbItemId &id) const
{
    OrbItemId named = id;
    if (named.connectionName.isEmpty() && named.connection >= 0 && named.connection < connections.size())
        named.connectionName = connections.at(named.connection).name;
    return textOf(named);
}

void RecordingBackend::tellListener(const std::function<void(OrbBackendListener &)> &call)
{
    const std::shared_lock<std::shared_mutex> lock(listenerLock);
    if (listener != nullptr)
        call(*listener);
}
