#include "workbench/simulator/simulated_service.h"

#include "hostclient/orb_log_message.h"
#include "workbench/simulator/moment_clock.h"
#include "workbench/simulator/real_clock.h"
#include "workbench/simulator/refusal_text.h"
#include "workbench/simulator/request_parser.h"
#include "workbench/simulator/simulated_service_visit.h"

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

bool isOfController(const Fault &fault)
{
    return faultLevel(fault.kind) == OrbItemId::System;
}

} // namespace

SimulatedService::SimulatedService() : SimulatedService(std::make_shared<RealClock>()) { }

SimulatedService::SimulatedService(std::shared_ptr<const SimulationClock> plantClock,
                                   const PlantLayout &layout)
    : clock(std::move(plantClock)),
      run(layout.seed),
      connections(layout.controllers, run),
      faults(connections, run, layout.faults),
      transport(connections, run.journal, layout, clock->startedAt(),
                [this](double time) { run.queue.runUntil(time); })
{
    setAlarm();
}

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
        const Visit visit(*this);
        Controller *const controller = connections.controller(name);
        if (controller == nullptr)
            return false;
        if (!transport.setAvailable(*controller, available, visit.now))
            return true;
    }
    notifyStructureChanged();
    return true;
}

bool SimulatedService::isControllerAvailable(const QString &name) const
{
    const Visit visit(*this);
    const Controller *const controller = connections.controller(name);
    return controller != nullptr && controller->isAvailable();
}

QVector<QPair<QString, QString>> SimulatedService::allControllers() const
{
    QVector<QPair<QString, QString>> result;
    const Visit visit(*this);
    for (const auto &controller : connections.controllers())
        result.append({controller->connectionName(), controller->displayText()});
    return result;
}

QString SimulatedService::controllerOf(const QString &connectionName) const
{
    const Visit visit(*this);
    const Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QString() : connection->controller->connectionName();
}

QVector<JournalEntry> SimulatedService::journal(quint64 from, int most)
{
    const Visit visit(*this);
    return run.journal.from(from, most);
}

quint64 SimulatedService::nextJournalNumber()
{
    const Visit visit(*this);
    return run.journal.nextNumber();
}

bool SimulatedService::channelSnapshot(const QString &controller, const ObjectAddress &channel,
                                       ChannelSnapshot &snapshot)
{
    const Visit visit(*this);
    Controller *const target = connections.controller(controller);
    if (target == nullptr || channel.level != OrbItemId::Channel || !target->hasObject(channel))
        return false;
    snapshot = target->channelSnapshot(channel, visit.now);
    return true;
}

TarnResult SimulatedService::cause(const Fault &fault)
{
    TarnResult result = TarnResult::Failed;
    {
        const Visit visit(*this);
        result = isOfController(fault) ? transport.cause(fault, visit.now) : faults.cause(fault, visit.now);
    }
    setAlarm();
    return result;
}

TarnResult SimulatedService::mend(const Fault &fault)
{
    const Visit visit(*this);
    return isOfController(fault) ? transport.mend(fault, visit.now) : faults.mend(fault, visit.now);
}

QString SimulatedService::connectionScript(const QString &connectionName) const
{
    const Visit visit(*this);
    const Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QString() : connection->script.name;
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
        const Visit visit(*this);
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
        const Visit visit(*this);
        Connection *const connection = connections.find(connectionName);
        if (connection == nullptr)
            return TarnResult::NoData;
        if (!connection->isOpen)
            return TarnResult::NotConnected;
        transport.dropConnection(*connection, visit.now);
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
    const Visit visit(*this);
    return connections.usable();
}

int SimulatedService::connectionIndex(const QString &connectionName) const
{
    const Visit visit(*this);
    const Connection *const connection = connections.find(connectionName);
    return usability(connection) == TarnResult::Success ? connections.indexOf(*connection) : -1;
}

bool SimulatedService::isLocal(const QString &connectionName) const
{
    const Visit visit(*this);
    const Connection *const connection = connections.find(connectionName);
    return connection != nullptr && connection->controller->isLocal()
        && connection->name == connection->controller->connectionName();
}

bool SimulatedService::crates(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &ids](const Connection &connection, double /*now*/) {
        ids = connections.identifiers(connection, connection.controller->crates());
        return TarnResult::Success;
    };
    return onConnection(connectionName, list) == TarnResult::Success;
}

bool SimulatedService::modules(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &ids](const Connection &connection, double /*now*/) {
        ids = connections.identifiers(connection, connection.controller->modules());
        return TarnResult::Success;
    };
    return onConnection(connectionName, list) == TarnResult::Success;
}

bool SimulatedService::crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const
{
    ids.clear();
    const auto list = [this, &crate, &ids](const Connection &connection, double /*now*/) {
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
        const Visit visit(*this);
        const Connection *const connection = connections.find(id);
        if (connection == nullptr || !connection->isUsable())
            return false;
    }
    names = items->names(writableOnly);
    return true;
}

TarnResult SimulatedService::readItem(const OrbItemId &id, OrbItemReading &reading)
{
    return onConnection(id, [this, &id, &reading](const Connection &connection, double now) {
        return connections.read(connection, placeOf(id), id.itemName, MomentClock(now, clock->startedAt()),
                                reading);
    });
}

TarnResult SimulatedService::writeItem(const OrbItemId &id, const QString &value)
{
    AnswerNotice changed;
    const TarnResult result = onConnection(id, [&](const Connection &connection, double now) {
        return transport.write(connection, id, value, {}, 0, now, changed);
    });
    if (result == TarnResult::Success)
        tell(changed);
    return result;
}

bool SimulatedService::rawRequest(const QString &controller, const QString &request, QString &reply)
{
    reply.clear();
    QVector<RequestCommand> commands;
    QString complaint;
    const bool makesSense = RequestParser::parse(request, commands, complaint);
    {
        const Visit visit(*this);
        const Connection *const connection = connections.find(controller);
        if (usability(connection) != TarnResult::Success)
            reply = connections.refusalOf(controller);
        else if (!makesSense)
            reply = complaint;
        else
            transport.ask(*connection, request, commands, visit.now, latency());
        if (!reply.isEmpty())
            transport.refuse(connection == nullptr ? controller : connection->controller->connectionName(),
                             request, reply, visit.now);
    }
    if (!reply.isEmpty()) {
        log(1, QStringLiteral("request to %1 refused: %2").arg(quoted(controller), reply));
        return false;
    }
    log(2, QStringLiteral("request to %1: %2").arg(quoted(controller), request));
    // The last thing here, so that the answer cannot overtake the return by more than the return itself takes.
    setAlarm();
    return true;
}

TarnResult SimulatedService::setDebugLevel(int level)
{
    if (level < 0 || level > 2)
        return TarnResult::Failed;
    debugLevel = level;
    return TarnResult::Success;
}

void SimulatedService::setAlarm()
{
    const Guard lock(plantMutex);
    const auto when = transport.nextLook(clock->now());
    if (when == AnswerTransport::RealTime::time_point::max())
        return;
    answers.setAlarm(when, [this] {
        {
            const Visit visit(*this);
        }
        setAlarm();
    });
}

void SimulatedService::tell(const AnswerNotice &notice) const
{
    listeners.call([&notice](OrbBackendListener &listener) {
        switch (notice.kind) {
        case AnswerNotice::RawMessage:
            listener.rawMessage(notice.connection, notice.message);
            break;
        case AnswerNotice::ValuesChanged:
            listener.valuesChanged(notice.id);
            break;
        case AnswerNotice::StructureChanged:
            listener.structureChanged(OrbItemId(OrbItemId::System));
            break;
        }
    });
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
