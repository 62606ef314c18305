#include "workbench/simulator/connection_table.h"

#include "workbench/simulator/connection_address.h"
#include "workbench/simulator/item_text.h"
#include "workbench/simulator/refusal_text.h"

#include <QStringList>

namespace simulator
{

ConnectionTable::ConnectionTable(const std::vector<ControllerLayout> &layouts, PlantRun &run)
{
    for (const ControllerLayout &layout : layouts) {
        plant.push_back(std::make_unique<Controller>(layout, run));
        add(layout.connectionName, layout.displayText, *plant.back());
    }
}

Controller *ConnectionTable::controller(const QString &nameOrText) const
{
    for (const auto &candidate : plant) {
        if (candidate->connectionName() == nameOrText)
            return candidate.get();
    }
    for (const auto &candidate : plant) {
        if (candidate->displayText() == nameOrText)
            return candidate.get();
    }
    return nullptr;
}

Connection *ConnectionTable::find(const QString &nameOrText) const
{
    for (const auto &connection : connections) {
        if (connection->name == nameOrText)
            return connection.get();
    }
    for (const auto &connection : connections) {
        if (connection->displayText == nameOrText)
            return connection.get();
    }
    return nullptr;
}

Connection *ConnectionTable::find(const OrbItemId &id) const
{
    if (!id.connectionName.isEmpty())
        return find(id.connectionName);
    if (id.connection < 0 || static_cast<std::size_t>(id.connection) >= connections.size())
        return nullptr;
    return connections[static_cast<std::size_t>(id.connection)].get();
}

int ConnectionTable::indexOf(const Connection &connection) const
{
    for (std::size_t i = 0; i < connections.size(); ++i) {
        if (connections[i].get() == &connection)
            return static_cast<int>(i);
    }
    return -1;
}

QVector<QPair<QString, QString>> ConnectionTable::usable() const
{
    QVector<QPair<QString, QString>> result;
    for (const auto &connection : connections) {
        if (connection->isUsable())
            result.append({connection->name, connection->displayText});
    }
    return result;
}

int ConnectionTable::clientsOf(const Controller &target) const
{
    int result = 0;
    for (const auto &connection : connections) {
        if (connection->isOpen && connection->controller == &target)
            ++result;
    }
    return result;
}

TarnResult ConnectionTable::open(const QString &name, const QString &address, const ScriptOrigin &script)
{
    Connection *const existing = find(name);
    if (name.isEmpty() || !isConnectionAddress(address) || (existing != nullptr && existing->isOpen))
        return TarnResult::Failed;
    // A name keeps its controller, and with it its index.
    Controller *const target = existing != nullptr ? existing->controller : controllerAt(address);
    if (target == nullptr || !target->isAvailable())
        return TarnResult::NotConnected;
    Connection &connection = existing != nullptr
        ? *existing
        : add(name, QStringLiteral("%1 (%2)").arg(target->displayText(), name), *target);
    connection.isOpen = true;
    connection.script = script;
    return TarnResult::Success;
}

QVector<OrbItemId> ConnectionTable::identifiers(const Connection &connection,
                                                const QVector<ObjectAddress> &objects) const
{
    QVector<OrbItemId> result;
    result.reserve(objects.size());
    for (const ObjectAddress &object : objects) {
        OrbItemId id(object.level);
        id.line = object.line;
        id.address = object.address;
        id.channel = object.channel;
        id.connection = indexOf(connection);
        id.connectionName = connection.name;
        result.append(id);
    }
    return result;
}

TarnResult ConnectionTable::read(const Connection &connection, const ObjectAddress &object,
                                 const QString &item, const SimulationClock &clock,
                                 OrbItemReading &reading) const
{
    Controller &controller = *connection.controller;
    const ItemTable *const items = Controller::itemsOf(object.level);
    const ItemDefinition *const definition = items == nullptr ? nullptr : items->find(item);
    if (definition == nullptr || !controller.hasObject(object))
        return TarnResult::NoData;
    if (!isReadable(*definition))
        return TarnResult::Denied;
    const double now = clock.now();
    const QString &scriptSession = connection.script.sessionId;
    const ConnectionView view{connection.name, connection.displayText,
                              scriptSession.isEmpty() ? connection.sessionId : scriptSession,
                              clientsOf(controller)};
    reading.value = formatValue(*definition, controller.read(object, *definition, view, now));
    reading.unit = items->unit(*definition);
    reading.type = kindName(definition->kind);
    reading.timestamp = clock.startedAt() + now;
    return TarnResult::Success;
}

TarnResult ConnectionTable::write(const Connection &connection, const ObjectAddress &object,
                                  const QString &item, const QString &value, const QString &unit,
                                  const SimulationClock &clock) const
{
    Controller &controller = *connection.controller;
    const ItemTable *const items = Controller::itemsOf(object.level);
    const ItemDefinition *const definition = items == nullptr ? nullptr : items->find(item);
    if (definition == nullptr || !controller.hasObject(object))
        return TarnResult::NoData;
    if (!isWritable(*definition))
        return TarnResult::Denied;
    ItemValue parsed;
    if (!parseValue(*definition, value, unit, parsed))
        return TarnResult::Failed;
    return controller.write(object, *definition, parsed, clock.now());
}

QString ConnectionTable::refusalOf(const QString &name) const
{
    QStringList present;
    const QVector<QPair<QString, QString>> others = usable();
    for (const QPair<QString, QString> &entry : others)
        present << QStringLiteral("\"%1\" (%2)").arg(entry.second, entry.first);
    return QStringLiteral("there is no controller %1; there %2")
        .arg(quoted(name),
             present.isEmpty() ? QStringLiteral("is none at present")
                               : QStringLiteral("are: ") + present.join(QStringLiteral(", ")));
}

Controller *ConnectionTable::controllerAt(const QString &address) const
{
    for (const auto &candidate : plant) {
        if (candidate->address() == address)
            return candidate.get();
    }
    return plant.empty() ? nullptr : plant.front().get();
}

Connection &ConnectionTable::add(const QString &name, const QString &displayText, Controller &target)
{
    auto connection = std::make_unique<Connection>();
    connection->name = name;
    connection->displayText = displayText;
    connection->sessionId = QStringLiteral("session-%1").arg(connections.size() + 1);
    connection->controller = &target;
    connections.push_back(std::move(connection));
    return *connections.back();
}

} // namespace simulator
