#pragma once

#include "workbench/simulator/crate.h"
#include "workbench/simulator/object_address.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/service_node.h"

#include <QHash>
#include <QVector>

#include <vector>

namespace simulator
{

/// A controller with all its devices. `now` is in seconds and never before that of an earlier call. Not locked; the
/// service does that.
///
/// Chosen for the simulation: "Control.reboot" takes all outputs to 0 at once and starts the service's own items over;
/// what was set in the devices is kept. "Control.shutdown" takes all outputs to 0 and the controller away, until it is
/// brought back with setAvailable().
class Controller
{
public:
    explicit Controller(const ControllerLayout &controllerLayout);
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

    /// A channel that exists.
    ChannelSnapshot channelSnapshot(const ObjectAddress &channel, double now);

private:
    struct ModulePlace
    {
        Crate *crate = nullptr; // null for a module with its own supply
        Module *module = nullptr;
        bool isPowered() const { return crate == nullptr || crate->isPowered(); }
    };

    static quint64 placeKey(quint32 line, quint32 address) { return (quint64(line) << 32) | address; }
    ModulePlace modulePlace(const ObjectAddress &object) const;
    Crate *crate(const ObjectAddress &object) const;
    RunningSummary summary(double now);
    TarnResult writeSystem(const ItemDefinition &item, const ItemValue &value, double now);
    void dropOut(double now);

    struct Line
    {
        quint32 line;
        std::vector<Crate> crates;
        std::vector<Module> modules;
    };

    const ControllerLayout layout;
    std::vector<Line> lines; // never changed after construction
    QHash<quint64, Crate *> crateIndex;
    QHash<quint64, ModulePlace> moduleIndex;
    ServiceNode service;
    bool available = true;
};

} // namespace simulator
