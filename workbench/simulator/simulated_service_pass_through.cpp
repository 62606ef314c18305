// Messages between controllers and scripts.

#include "workbench/simulator/simulated_service.h"

#include "workbench/simulator/pass_through_text.h"
#include "workbench/simulator/simulated_service_visit.h"

#include <utility>

namespace simulator
{

TarnResult SimulatedService::injectPassThroughMessage(const QString &connectionName,
                                                      const OrbRequestItem &request)
{
    return onConnection(connectionName, [&request](Connection &connection, double /*now*/) {
        return connection.passThrough.inject(request);
    });
}

QVector<OrbItemValue> SimulatedService::takeSentPassThroughMessages(const QString &connectionName)
{
    const Visit visit(*this);
    Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QVector<OrbItemValue>() : connection->passThrough.takeSent();
}

QString SimulatedService::passThroughScript(const QString &connectionName) const
{
    const Visit visit(*this);
    const Connection *const connection = connections.find(connectionName);
    return connection == nullptr ? QString() : connection->passThrough.scriptName();
}

TarnResult SimulatedService::activatePassThrough(const QString &connectionName, const QString &scriptName)
{
    return onConnection(connectionName, [&scriptName](Connection &connection, double /*now*/) {
        connection.passThrough.activate(scriptName);
        return TarnResult::Success;
    });
}

TarnResult SimulatedService::takePassThroughMessage(const QString &connectionName, OrbRequestItem &request)
{
    return onConnection(connectionName, [this, &request](Connection &connection, double now) {
        const TarnResult result = connection.passThrough.takeNext(request);
        if (result == TarnResult::Success)
            enterPassThrough(JournalEntry::PassThroughIn, connection, passThroughText(request), now);
        return result;
    });
}

TarnResult SimulatedService::takePassThroughMessages(const QString &connectionName,
                                                     QVector<OrbRequestItem> &requests)
{
    requests.clear();
    return onConnection(connectionName, [this, &requests](Connection &connection, double now) {
        const TarnResult result = connection.passThrough.takeAll(requests);
        for (const OrbRequestItem &request : std::as_const(requests))
            enterPassThrough(JournalEntry::PassThroughIn, connection, passThroughText(request), now);
        return result;
    });
}

TarnResult SimulatedService::sendPassThroughMessages(const QString &connectionName,
                                                     const QVector<OrbItemValue> &values)
{
    return onConnection(connectionName, [this, &values](Connection &connection, double now) {
        const TarnResult result = connection.passThrough.send(values);
        if (result != TarnResult::Success)
            return result;
        for (const OrbItemValue &value : values)
            enterPassThrough(JournalEntry::PassThroughOut, connection, passThroughText(value), now);
        return result;
    });
}

void SimulatedService::enterPassThrough(JournalEntry::Kind kind, const Connection &connection,
                                        const QString &text, double now)
{
    JournalEntry entry;
    entry.kind = kind;
    entry.controller = connection.controller->connectionName();
    entry.text = text;
    entry.time = now;
    run.journal.add(entry);
}

} // namespace simulator
