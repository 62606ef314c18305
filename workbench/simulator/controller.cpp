#include "workbench/simulator/controller.h"

#include <algorithm>

namespace simulator
{

namespace
{

ObjectAddress deviceAddress(OrbItemId::Type level, quint32 line, quint32 address)
{
    return {level, line, address, -1};
}

ControllerLayout withoutLines(ControllerLayout layout)
{
    layout.lines = {}; // made into objects
    return layout;
}

bool isSystem(const ObjectAddress &object)
{
    return object.level == OrbItemId::System || object.level == OrbItemId::Line;
}

} // namespace

Controller::Controller(const ControllerLayout &controllerLayout, PlantRun &plantRun)
    : layout(withoutLines(controllerLayout)), run(plantRun), summary(nullptr)
{
    for (const LineLayout &lineLayout : controllerLayout.lines) {
        lines.emplace_back();
        Line &line = lines.back();
        line.line = lineLayout.line;
        const DevicePlace place{&run, &summary, layout.connectionName, line.line};
        for (const CrateLayout &crateLayout : lineLayout.crates) {
            Crate &chassis = line.crates.emplace_back(crateLayout, place);
            crateIndex.insert(placeKey(line.line, chassis.address()), &chassis);
            for (Module &inside : chassis.modules())
                moduleIndex.insert(placeKey(line.line, inside.address()), &inside);
        }
        for (const ModuleLayout &moduleLayout : lineLayout.modules) {
            Module &added = line.modules.emplace_back(moduleLayout, place);
            moduleIndex.insert(placeKey(line.line, added.address()), &added);
        }
    }
}

QVector<ObjectAddress> Controller::crates() const
{
    QVector<ObjectAddress> result;
    for (const Line &line : lines) {
        for (const Crate &chassis : line.crates)
            result.append(deviceAddress(OrbItemId::Crate, line.line, chassis.address()));
    }
    return result;
}

QVector<ObjectAddress> Controller::modules() const
{
    QVector<ObjectAddress> result;
    for (const Line &line : lines) {
        for (const Crate &chassis : line.crates) {
            for (const Module &member : chassis.modules())
                result.append(deviceAddress(OrbItemId::Module, line.line, member.address()));
        }
        for (const Module &member : line.modules)
            result.append(deviceAddress(OrbItemId::Module, line.line, member.address()));
    }
    return result;
}

bool Controller::crateModules(quint32 line, quint32 crateAddress, QVector<ObjectAddress> &result) const
{
    result.clear();
    const Crate *found = crateIndex.value(placeKey(line, crateAddress), nullptr);
    if (found == nullptr)
        return false;
    for (const Module &member : found->modules())
        result.append(deviceAddress(OrbItemId::Module, line, member.address()));
    return true;
}

const ItemTable *Controller::itemsOf(OrbItemId::Type level)
{
    switch (level) {
    case OrbItemId::System:
    case OrbItemId::Line:
        return &systemItems();
    case OrbItemId::Crate:
        return &crateItems();
    case OrbItemId::Module:
        return &moduleItems();
    case OrbItemId::Channel:
        return &channelItems();
    case OrbItemId::Undefined:
    case OrbItemId::Item:
        break;
    }
    return nullptr;
}

bool Controller::hasObject(const ObjectAddress &object) const
{
    switch (object.level) {
    case OrbItemId::System:
        return true;
    case OrbItemId::Line:
        return std::any_of(lines.begin(), lines.end(),
                           [&object](const Line &line) { return line.line == object.line; });
    case OrbItemId::Crate:
        return crate(object) != nullptr;
    case OrbItemId::Module:
        return module(object) != nullptr;
    case OrbItemId::Channel: {
        const Module *const found = module(object);
        return found != nullptr && object.channel >= 0
            && static_cast<std::size_t>(object.channel) < found->channelCount();
    }
    case OrbItemId::Undefined:
    case OrbItemId::Item:
        break;
    }
    return false;
}

ItemValue Controller::read(const ObjectAddress &object, const ItemDefinition &item,
                           const ConnectionView &view, double now)
{
    run.queue.runUntil(now);
    if (isSystem(object)) {
        if (item.source == ItemSource::Quantity
            && static_cast<SystemQuantity>(item.argument) == SystemQuantity::RunningStateOrb)
            return ItemValue::of(summary.counts().runningState());
        return service.read(item, view, now);
    }
    if (object.level == OrbItemId::Crate)
        return crate(object)->read(item, now);
    if (object.level == OrbItemId::Module)
        return module(object)->read(item, now);
    return module(object)->readChannel(static_cast<std::size_t>(object.channel), item, now);
}

TarnResult Controller::write(const ObjectAddress &object, const ItemDefinition &item, const ItemValue &value,
                             double now)
{
    run.queue.runUntil(now);
    if (isSystem(object))
        return writeSystem(item, value, now);
    if (object.level == OrbItemId::Crate)
        return crate(object)->write(item, value, now);
    if (object.level == OrbItemId::Module)
        return module(object)->write(item, value, now);
    return module(object)->writeChannel(static_cast<std::size_t>(object.channel), item, value, now);
}

void Controller::applyFault(const Fault &fault, bool begins, double now)
{
    const ObjectAddress &object = fault.object;
    switch (faultLevel(fault.kind)) {
    case OrbItemId::Crate:
        crate(object)->applyFault(fault, begins, now);
        break;
    case OrbItemId::Module:
        module(object)->applyFault(fault, begins, now);
        break;
    case OrbItemId::Channel:
        module(object)->applyChannelFault(static_cast<std::size_t>(object.channel), fault, begins, now);
        break;
    default:
        break; // the transport's
    }
}

ChannelSnapshot Controller::channelSnapshot(const ObjectAddress &channel, double now)
{
    run.queue.runUntil(now);
    return module(channel)->channelSnapshot(static_cast<std::size_t>(channel.channel), now);
}

Module *Controller::module(const ObjectAddress &object) const
{
    return moduleIndex.value(placeKey(object.line, object.address), nullptr);
}

Crate *Controller::crate(const ObjectAddress &object) const
{
    return crateIndex.value(placeKey(object.line, object.address), nullptr);
}

TarnResult Controller::writeSystem(const ItemDefinition &item, const ItemValue &value, double now)
{
    const auto which = static_cast<SystemQuantity>(item.argument);
    const bool isOwn = item.source == ItemSource::Quantity
        && (which == SystemQuantity::Reboot || which == SystemQuantity::Shutdown);
    if (!isOwn)
        return service.write(item, value, now);
    if (value.isTrue()) {
        dropOut({QString::fromLatin1(item.name), {OrbItemId::System}}, now);
        service.restart(now);
        available = which != SystemQuantity::Shutdown;
    }
    return TarnResult::Success;
}

void Controller::dropOut(const SwitchOffCause &cause, double now)
{
    for (Line &line : lines) {
        for (Crate &chassis : line.crates)
            chassis.dropOut(cause, now);
        for (Module &member : line.modules)
            member.dropOut(cause, now);
    }
}

} // namespace simulator
