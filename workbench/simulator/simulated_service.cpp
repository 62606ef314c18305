#include "workbench/simulator/simulated_service.h"

#include "hostclient/orb_log_message.h"
#include "workbench/simulator/answer_text.h"
#include "workbench/simulator/real_clock.h"
#include "workbench/simulator/refusal_text.h"
#include "workbench/simulator/request_parser.h"

#include <utility>

namespace simulator
{

namespace
{

enum LogLevel
{
    Information = 0,
    Error = 2
};

ObjectAddress placeOf(const OrbItemId &id)
{
    return {id.type, id.line, id.address, id.channel};
}

// Why nothing can be done with a connection; Success when it can.
TarnResult usability(const Connection *connection)
{
    if (connection == nullptr)
        return TarnResult::NoData;
    return connection->isUsable() ? TarnResult::Success : TarnResult::NotConnected;
}

} // namespace

SimulatedService::SimulatedService() : SimulatedService(std::make_shared<RealClock>()) { }

SimulatedService::SimulatedService(std::shared_ptr<const SimulationClock> plantClock,
                                   const PlantLayout &layout)
    : clock(std::move(plantClock)), connections(layout.controllers)
{ }

SimulatedService::~SimulatedService()
{
    listeners.setListener(nullptr);
    answers.stop();
}

void SimulatedService::setLatency(std::chrono::milliseconds latency)
{
    latencyMilliseconds = qMax<qint64>(0, latency.count());
}

std::chrono::milliseconds SimulatedService::latency() const
{
    return std::chrono::milliseconds(latencyMilliseconds.load());
}

bool SimulatedService::setControllerAvailable(const QString &name, bool available)
{
    {
        const Guard lock(plantMutex);
        Controller *const controller = connections.controller(name);
        if (controller == nullptr)
            return false;
        if (controller->isAvailable() == available)
            return true;
        controller->setAvailable(available);
        JournalEntry entry;
        entry.kind = available ? JournalEntry::ControllerCame : JournalEntry::ControllerLeft;
        entry.controller = controller->connectionName();
        enter(entry);
    }
    notifyStructureChanged();
    return true;
}

bool SimulatedService::isControllerAvailable(const QString &name) const
{
    const Guard lock(plantMutex);
    const Controller *const controller = connections.controller(name);
    return controller != nullptr && controller->isAvailable();
}

QVector<QPair<QString, QString>> SimulatedService::allControllers() const
{
    QVector<QPair<QString, QString>> result;
    const Guard lock(plantMutex);
    for (const auto &controller : connections.controllers())
        result.append({controller->connectionName(), controller->displayText()});
    return result;
}

QVector<JournalEntry> SimulatedService::journal(quint64 from, int most)
{
    const Guard lock(plantMutex);
    return journalEntries.from(from, most);
}

quint64 SimulatedService::nextJournalNumber()
{
    const Guard lock(plantMutex);
    return journalEntries.nextNumber();
}

bool SimulatedService::channelSnapshot(const QString &controller, const ObjectAddress &channel,
                                       ChannelSnapshot &snapshot)
{
    const Guard lock(plantMutex);
    Controller *const target = connections.controller(controller);
    if (target == nullptr || channel.level != OrbItemId::Channel || !target->hasObject(channel))
        return false;
    snapshot = target->channelSnapshot(channel, clock->now());
    return true;
}

TarnResult SimulatedService::cause(const Fault &fault)
{
    if (fault.kind != FaultKind::Disconnect)
        return TarnResult::Failed;
    return setControllerAvailable(fault.controller, false) ? TarnResult::Success : TarnResult::NoData;
}

TarnResult SimulatedService::mend(const Fault &fault)
{
    if (fault.kind != FaultKind::Disconnect)
        return TarnResult::Failed;
    return setControllerAvailable(fault.controller, true) ? TarnResult::Success : TarnResult::NoData;
}

TarnResult SimulatedService::injectPassThroughMessage(const QString &connectionName,
                                                      const OrbRequestItem &request)
{
    return onConnection(connectionName, [&request](Connection &connection) {
        return connection.passThrough.inject(request);
    });
}

QString SimulatedService::connectionScript(const QString &connectionName) const
{
    const Guard lock(plantMutex);
    const Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QString() : connection->script.name;
}

QVector<OrbItemValue> SimulatedService::takeSentPassThroughMessages(const QString &connectionName)
{
    const Guard lock(plantMutex);
    Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QVector<OrbItemValue>() : connection->passThrough.takeSent();
}

QString SimulatedService::passThroughScript(const QString &connectionName) const
{
    const Guard lock(plantMutex);
    const Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QString() : connection->passThrough.scriptName();
}

void SimulatedService::setListener(OrbBackendListener *listener)
{
    listeners.setListener(listener);
}

TarnResult SimulatedService::openConnection(const QString &connectionName, const QString &address,
                                            const QString & /*login*/, const QString & /*password*/)
{
    return open(connectionName, address, {});
}

TarnResult SimulatedService::openScriptConnection(const QString &connectionName, const QString &address,
                                                  const QString &scriptName, const QString &sessionId,
                                                  const QString & /*login*/, const QString & /*password*/)
{
    return open(connectionName, address, {scriptName, sessionId});
}

TarnResult SimulatedService::open(const QString &connectionName, const QString &address,
                                  const ScriptOrigin &script)
{
    OrbItemId id(OrbItemId::System);
    {
        const Guard lock(plantMutex);
        const TarnResult result = connections.open(connectionName, address, script);
        if (result != TarnResult::Success)
            return result;
        id.connectionName = connectionName;
        id.connection = connections.indexOf(*connections.find(connectionName));
    }
    listeners.call([&id](OrbBackendListener &listener) { listener.statusChanged(id); });
    notifyStructureChanged();
    return TarnResult::Success;
}

TarnResult SimulatedService::closeConnection(const QString &connectionName)
{
    OrbItemId id(OrbItemId::System);
    {
        const Guard lock(plantMutex);
        Connection *const connection = connections.find(connectionName);
        if (connection == nullptr)
            return TarnResult::NoData;
        if (!connection->isOpen)
            return TarnResult::NotConnected;
        connection->isOpen = false;
        connection->passThrough.end();
        id.connectionName = connection->name;
        id.connection = connections.indexOf(*connection);
    }
    listeners.call([&id](OrbBackendListener &listener) { listener.statusChanged(id); });
    notifyStructureChanged();
    return TarnResult::Success;
}

QVector<QPair<QString, QString>> SimulatedService::controllers() const
{
    const Guard lock(plantMutex);
    return connections.usable();
}

int SimulatedService::connectionIndex(const QString &connectionName) const
{
    const Guard lock(plantMutex);
    const Connection *const connection = usableConnection(connectionName);
    return connection == nullptr ? -1 : connections.indexOf(*connection);
}

bool SimulatedService::isLocal(const QString &connectionName) const
{
    const Guard lock(plantMutex);
    const Connection *const connection = connections.find(connectionName);
    return connection != nullptr && connection->controller->isLocal()
        && connection->name == connection->controller->connectionName();
}

bool SimulatedService::crates(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &ids](const Connection &connection) {
        ids = connections.identifiers(connection, connection.controller->crates());
        return TarnResult::Success;
    };
    return onConnection(connectionName, list) == TarnResult::Success;
}

bool SimulatedService::modules(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &ids](const Connection &connection) {
        ids = connections.identifiers(connection, connection.controller->modules());
        return TarnResult::Success;
    };
    return onConnection(connectionName, list) == TarnResult::Success;
}

bool SimulatedService::crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &crate, &ids](const Connection &connection) {
        QVector<ObjectAddress> found;
        if (crate.type != OrbItemId::Crate
            || !connection.controller->crateModules(crate.line, crate.address, found))
            return TarnResult::NoData;
        ids = connections.identifiers(connection, found);
        return TarnResult::Success;
    };
    return onConnection(crate, list) == TarnResult::Success;
}

bool SimulatedService::itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const
{
    names.clear();
    const ItemTable *const items = Controller::itemsOf(id.type);
    if (items == nullptr)
        return false;
    if (!id.connectionName.isEmpty() || id.connection >= 0) {
        const Guard lock(plantMutex);
        const Connection *const connection = connections.find(id);
        if (connection == nullptr || !connection->isUsable())
            return false;
    }
    names = items->names(writableOnly);
    return true;
}

TarnResult SimulatedService::readItem(const OrbItemId &id, OrbItemReading &reading)
{
    return onConnection(id, [this, &id, &reading](const Connection &connection) {
        return connections.read(connection, placeOf(id), id.itemName, *clock, reading);
    });
}

TarnResult SimulatedService::writeItem(const OrbItemId &id, const QString &value)
{
    return write(id, placeOf(id), value, QString(), 0);
}

bool SimulatedService::rawRequest(const QString &controller, const QString &request, QString &reply)
{
    reply.clear();
    QString connectionName;
    {
        const Guard lock(plantMutex);
        const Connection *const connection = usableConnection(controller);
        if (connection == nullptr)
            reply = connections.refusalOf(controller);
        else
            connectionName = connection->name;
    }
    QVector<RequestCommand> commands;
    if (!reply.isEmpty() || !RequestParser::parse(request, commands, reply)) {
        log(1, QStringLiteral("request to %1 refused: %2").arg(quoted(controller), reply));
        return false;
    }
    log(2, QStringLiteral("request to %1: %2").arg(quoted(controller), request));
    JournalEntry entry;
    entry.kind = JournalEntry::Request;
    entry.controller = connectionName;
    entry.text = request;
    quint64 number = 0;
    {
        const Guard lock(plantMutex);
        number = ++lastRequest;
        entry.request = number;
        enter(entry);
    }
    const double askedAt = clock->now();
    // The last thing here, so that the answer cannot overtake the return by more than the return itself takes.
    answers.post(latency(), [this, connectionName, commands, number, askedAt] {
        answer(connectionName, commands, number, askedAt);
    });
    return true;
}

TarnResult SimulatedService::activatePassThrough(const QString &connectionName, const QString &scriptName)
{
    return onConnection(connectionName, [&scriptName](Connection &connection) {
        connection.passThrough.activate(scriptName);
        return TarnResult::Success;
    });
}

TarnResult SimulatedService::takePassThroughMessage(const QString &connectionName, OrbRequestItem &request)
{
    return onConnection(connectionName, [&request](Connection &connection) {
        return connection.passThrough.takeNext(request);
    });
}

TarnResult SimulatedService::takePassThroughMessages(const QString &connectionName,
                                                     QVector<OrbRequestItem> &requests)
{
    requests.clear();
    return onConnection(connectionName, [&requests](Connection &connection) {
        return connection.passThrough.takeAll(requests);
    });
}

TarnResult SimulatedService::sendPassThroughMessages(const QString &connectionName,
                                                     const QVector<OrbItemValue> &values)
{
    return onConnection(connectionName,
                        [&values](Connection &connection) { return connection.passThrough.send(values); });
}

TarnResult SimulatedService::setDebugLevel(int level)
{
    if (level < 0 || level > 2)
        return TarnResult::Failed;
    debugLevel = level;
    return TarnResult::Success;
}

template <class Name, class Function>
TarnResult SimulatedService::onConnection(const Name &nameOrId, Function function) const
{
    const Guard lock(plantMutex);
    Connection *const connection = connections.find(nameOrId);
    const TarnResult result = usability(connection);
    return result == TarnResult::Success ? function(*connection) : result;
}

Connection *SimulatedService::usableConnection(const QString &name) const
{
    Connection *const connection = connections.find(name);
    return connection != nullptr && connection->isUsable() ? connection : nullptr;
}

TarnResult SimulatedService::write(const OrbItemId &id, const ObjectAddress &object, const QString &value,
                                   const QString &unit, quint64 request)
{
    OrbItemId changed = id;
    bool wentAway = false;
    const TarnResult result = onConnection(id, [&](const Connection &connection) {
        const TarnResult written = connections.write(connection, object, id.itemName, value, unit, *clock);
        wentAway = !connection.controller->isAvailable();
        changed.connectionName = connection.name;
        changed.connection = connections.indexOf(connection);
        JournalEntry entry;
        entry.kind = JournalEntry::Write;
        entry.result = written;
        entry.request = request;
        entry.controller = connection.controller->connectionName();
        entry.object = object;
        entry.item = id.itemName;
        entry.text = unit.isEmpty() ? value : value + QLatin1Char(' ') + unit;
        enter(entry);
        return written;
    });
    if (result != TarnResult::Success)
        return result;
    if (wentAway)
        notifyStructureChanged();
    else
        listeners.call([&changed](OrbBackendListener &listener) { listener.valuesChanged(changed); });
    return TarnResult::Success;
}

void SimulatedService::answer(const QString &connectionName, const QVector<RequestCommand> &commands,
                              quint64 request, double askedAt)
{
    QStringList data;
    TarnResult result = TarnResult::Success;
    for (const RequestCommand &command : commands) {
        result = carryOut(connectionName, command, request, data);
        if (result == TarnResult::NotConnected)
            return; // went away, maybe in the middle of it
        if (result != TarnResult::Success)
            break;
    }
    const QString trigger = triggerMessage(result);
    enterAnswer(connectionName, request, askedAt, trigger);
    listeners.call([&](OrbBackendListener &listener) { listener.rawMessage(connectionName, trigger); });
    if (result != TarnResult::Success || data.isEmpty())
        return;
    const QString message = dataMessage(data);
    enterAnswer(connectionName, request, askedAt, message);
    listeners.call([&](OrbBackendListener &listener) { listener.rawMessage(connectionName, message); });
}

TarnResult SimulatedService::carryOut(const QString &connectionName, const RequestCommand &command,
                                      quint64 request, QStringList &data)
{
    if (command.kind == RequestCommand::SetItem) {
        OrbItemId id(command.object.level);
        id.line = command.object.line;
        id.address = command.object.address;
        id.channel = command.object.channel;
        id.connectionName = connectionName;
        id.itemName = command.item;
        return write(id, command.object, command.value, command.unit, request);
    }
    OrbItemReading reading;
    const TarnResult result =
        onConnection(connectionName, [this, &command, &reading](const Connection &connection) {
            return connections.read(connection, command.object, command.item, *clock, reading);
        });
    if (result == TarnResult::Success)
        data << dataObject(connectionName, command, reading);
    return result;
}

void SimulatedService::enter(JournalEntry entry)
{
    entry.time = clock->now();
    journalEntries.add(std::move(entry));
}

void SimulatedService::enterAnswer(const QString &connectionName, quint64 request, double askedAt,
                                   const QString &text)
{
    JournalEntry entry;
    entry.kind = JournalEntry::Answer;
    entry.controller = connectionName;
    entry.request = request;
    entry.text = text;
    entry.delay = clock->now() - askedAt;
    const Guard lock(plantMutex);
    enter(std::move(entry));
}

void SimulatedService::log(int debugLevelNeeded, const QString &text)
{
    if (debugLevel < debugLevelNeeded)
        return;
    const qint64 milliseconds = qRound64((clock->startedAt() + clock->now()) * 1000);
    const OrbLogMessage message{QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC),
                                debugLevelNeeded == 1 ? Error : Information, text};
    listeners.call([&message](OrbBackendListener &listener) { listener.messageWasLogged(message); });
}

void SimulatedService::notifyStructureChanged()
{
    const OrbItemId everything(OrbItemId::System);
    listeners.call([&everything](OrbBackendListener &listener) { listener.structureChanged(everything); });
}

} // namespace simulator
