#pragma once

#include "hostclient/orb_item_id.h"
#include "hostclient/tarn_result.h"
#include "workbench/hostkit/orb_backend.h"
#include "workbench/simulator/controller.h"
#include "workbench/simulator/pass_through.h"
#include "workbench/simulator/plant_run.h"
#include "workbench/simulator/simulation_clock.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <memory>
#include <vector>

namespace simulator
{

/// Who opens a connection: a script that the service started. Both texts are empty for anybody else.
struct ScriptOrigin
{
    QString name;
    QString sessionId; ///< of the session that the script was started in
};

/// A connection to a controller. Its index is its place in the table.
struct Connection
{
    QString name;
    QString displayText;
    QString sessionId; ///< the connection's own
    ScriptOrigin script;
    Controller *controller = nullptr; // never null, not owned
    bool isOpen = true;
    PassThrough passThrough;

    bool isUsable() const { return isOpen && controller->isAvailable(); }
};

/// The controllers of a plant and the connections to them. Not locked; the service does that. Connections and
/// controllers stay where they are for as long as the table exists.
///
/// Each controller starts with an open connection of its own name, index 0 for the first one. Names are looked for
/// among connection names first, then among display texts.
class ConnectionTable
{
public:
    /// `run` is not owned and outlives the table.
    ConnectionTable(const std::vector<ControllerLayout> &layouts, PlantRun &run);

    const std::vector<std::unique_ptr<Controller>> &controllers() const { return plant; }
    Controller *controller(const QString &nameOrText) const;

    /// A connection of that name, also a closed one; null for none.
    Connection *find(const QString &nameOrText) const;
    /// By name when there is one, by index otherwise.
    Connection *find(const OrbItemId &id) const;
    int indexOf(const Connection &connection) const;

    /// The connections that can be used, as name and display text.
    QVector<QPair<QString, QString>> usable() const;
    int clientsOf(const Controller &target) const;

    /// The identifiers by which the connection's clients know these objects.
    QVector<OrbItemId> identifiers(const Connection &connection, const QVector<ObjectAddress> &objects) const;

    /// Reads and writes items of the connection's controller, as OrbBackend has it. The connection is usable. `unit` is
    /// empty for the item's own.
    TarnResult read(const Connection &connection, const ObjectAddress &object, const QString &item,
                    const SimulationClock &clock, OrbItemReading &reading) const;
    TarnResult write(const Connection &connection, const ObjectAddress &object, const QString &item,
                     const QString &value, const QString &unit, const SimulationClock &clock) const;

    /// What somebody is told who asked for a connection that cannot be used.
    QString refusalOf(const QString &name) const;

    TarnResult open(const QString &name, const QString &address, const ScriptOrigin &script);

private:
    Controller *controllerAt(const QString &address) const;
    Connection &add(const QString &name, const QString &displayText, Controller &target);

    std::vector<std::unique_ptr<Controller>> plant;
    std::vector<std::unique_ptr<Connection>> connections;
};

} // namespace simulator
