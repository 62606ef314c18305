#pragma once

#include "workbench/simulator/crate.h"
#include "workbench/simulator/object_address.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/plant_run.h"
#include "workbench/simulator/service_node.h"

#include <QHash>
#include <QVector>

#include <deque>

namespace simulator
{

/// A controller with all its devices. `now` is in s on the plant's clock and never before that of an earlier call; a read,
/// a write or a look first lets the plant come up to it. Not locked; the service does that.
///
/// Chosen for the simulation: "Control.reboot" takes all outputs to 0 at once and starts the service's own items over;
/// what was set in the devices is kept. "Control.shutdown" takes all outputs to 0 and the controller away, until it is
/// brought back with setAvailable().
class Controller
{
public:
    /// `plantRun` is not owned and outlives the controller.
    Controller(const ControllerLayout &controllerLayout, PlantRun &plantRun);
    // Devices are found by pointer.
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;

    const QString &connectionName() const { return layout.connectionName; }
    const QString &displayText() const { return layout.displayText; }
    const QString &address() const { return layout.address; }
    bool isLocal() const { return layout.isLocal; }
    bool isAvailable() const { return available; }
    void setAvailable(bool isThere) { available = isThere; }

    QVector<ObjectAddress> crates() const;
    QVector<ObjectAddress> modules() const;
    /// False when there is no such crate.
    bool crateModules(quint32 line, quint32 crate, QVector<ObjectAddress> &result) const;

    /// The items of a level; null for a level that has none. A line has those of the system.
    static const ItemTable *itemsOf(OrbItemId::Type level);

    bool hasObject(const ObjectAddress &object) const;

    /// Object and item exist.
    ItemValue read(const ObjectAddress &object, const ItemDefinition &item, const ConnectionView &view,
                   double now);
    TarnResult write(const ObjectAddress &object, const ItemDefinition &item, const ItemValue &value,
                     double now);

    /// Begins or ends a fault of an object that exists and is of the kind's level. The plant is up to `now`.
    void applyFault(const Fault &fault, bool begins, double now);

    /// A channel that exists.
    ChannelSnapshot channelSnapshot(const ObjectAddress &channel, double now);

private:
    static quint64 placeKey(quint32 line, quint32 address) { return (quint64(line) << 32) | address; }
    Module *module(const ObjectAddress &object) const;
    Crate *crate(const ObjectAddress &object) const;
    TarnResult writeSystem(const ItemDefinition &item, const ItemValue &value, double now);
    void dropOut(const SwitchOffCause &cause, double now);

    struct Line
    {
        quint32 line = 0;
        std::deque<Crate> crates;
        std::deque<Module> modules;
    };

    const ControllerLayout layout;
    PlantRun &run;
    RunningSummary summary;
    std::deque<Line> lines; // never changed after construction
    QHash<quint64, Crate *> crateIndex;
    QHash<quint64, Module *> moduleIndex;
    ServiceNode service;
    bool available = true;
};

} // namespace simulator
