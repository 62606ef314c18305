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

bool isSystem(const ObjectAddress &object)
{
    return object.level == OrbItemId::System || object.level == OrbItemId::Line;
}

} // namespace

Controller::Controller(const ControllerLayout &controllerLayout) : layout(controllerLayout)
{
    lines.reserve(layout.lines.size());
    for (const LineLayout &line : layout.lines) {
        lines.push_back({line.line, {}, {}});
        lines.back().crates.reserve(line.crates.size());
        for (const CrateLayout &crateLayout : line.crates)
            lines.back().crates.emplace_back(crateLayout);
        lines.back().modules.reserve(line.modules.size());
        for (const ModuleLayout &moduleLayout : line.modules)
            lines.back().modules.emplace_back(moduleLayout);
    }
    for (Line &line : lines) {
        for (Crate &crate : line.crates) {
            crateIndex.insert(placeKey(line.line, crate.address()), &crate);
            for (Module &module : crate.modules())
                moduleIndex.insert(placeKey(line.line, module.address()), {&crate, &module});
        }
        for (Module &module : line.modules)
            moduleIndex.insert(placeKey(line.line, module.address()), {nullptr, &module});
    }
}

QVector<ObjectAddress> Controller::crates() const
{
    QVector<ObjectAddress> result;
    for (const Line &line : lines) {
        for (const Crate &crate : line.crates)
            result.append(deviceAddress(OrbItemId::Crate, line.line, crate.address()));
    }
    return result;
}

QVector<ObjectAddress> Controller::modules() const
{
    QVector<ObjectAddress> result;
    for (const Line &line : lines) {
        for (const Crate &crate : line.crates) {
            for (const Module &module : crate.modules())
                result.append(deviceAddress(OrbItemId::Module, line.line, module.address()));
        }
        for (const Module &module : line.modules)
            result.append(deviceAddress(OrbItemId::Module, line.line, module.address()));
    }
    return result;
}

bool Controller::crateModules(quint32 line, quint32 crateAddress, QVector<ObjectAddress> &result) const
{
    result.clear();
    const Crate *found = crateIndex.value(placeKey(line, crateAddress), nullptr);
    if (found == nullptr)
        return false;
    for (const Module &module : found->modules())
        result.append(deviceAddress(OrbItemId::Module, line, module.address()));
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
        return modulePlace(object).module != nullptr;
    case OrbItemId::Channel: {
        const ModulePlace place = modulePlace(object);
        return place.module != nullptr && object.channel >= 0
            && static_cast<std::size_t>(object.channel) < place.module->channelCount();
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
    if (isSystem(object)) {
        if (item.source == ItemSource::Quantity
            && static_cast<SystemQuantity>(item.argument) == SystemQuantity::RunningStateOrb)
            return ItemValue::of(summary(now).runningState());
        return service.read(item, view, now);
    }
    if (object.level == OrbItemId::Crate)
        return crate(object)->read(item, now);
    const ModulePlace place = modulePlace(object);
    if (object.level == OrbItemId::Module)
        return place.module->read(item, place.isPowered(), now);
    return place.module->readChannel(static_cast<std::size_t>(object.channel), item, place.isPowered(), now);
}

TarnResult Controller::write(const ObjectAddress &object, const ItemDefinition &item, const ItemValue &value,
                             double now)
{
    if (isSystem(object))
        return writeSystem(item, value, now);
    if (object.level == OrbItemId::Crate)
        return crate(object)->write(item, value, now);
    const ModulePlace place = modulePlace(object);
    if (object.level == OrbItemId::Module)
        return place.module->write(item, value, place.isPowered(), now);
    return place.module->writeChannel(static_cast<std::size_t>(object.channel), item, value,
                                      place.isPowered(), now);
}

ChannelSnapshot Controller::channelSnapshot(const ObjectAddress &channel, double now)
{
    const ModulePlace place = modulePlace(channel);
    return place.module->channelSnapshot(static_cast<std::size_t>(channel.channel), place.isPowered(), now);
}

Controller::ModulePlace Controller::modulePlace(const ObjectAddress &object) const
{
    return moduleIndex.value(placeKey(object.line, object.address));
}

Crate *Controller::crate(const ObjectAddress &object) const
{
    return crateIndex.value(placeKey(object.line, object.address), nullptr);
}

RunningSummary Controller::summary(double now)
{
    RunningSummary result;
    for (Line &line : lines) {
        for (Crate &crate : line.crates)
            result += crate.summary(now);
        for (Module &module : line.modules)
            result += module.summary(true, now);
    }
    return result;
}

TarnResult Controller::writeSystem(const ItemDefinition &item, const ItemValue &value, double now)
{
    const auto which = static_cast<SystemQuantity>(item.argument);
    const bool isOwn = item.source == ItemSource::Quantity
        && (which == SystemQuantity::Reboot || which == SystemQuantity::Shutdown);
    if (!isOwn)
        return service.write(item, value, now);
    if (value.isTrue()) {
        dropOut(now);
        service.restart(now);
        available = which != SystemQuantity::Shutdown;
    }
    return TarnResult::Success;
}

void Controller::dropOut(double now)
{
    for (Line &line : lines) {
        for (Crate &crate : line.crates)
            crate.dropOut(now);
        for (Module &module : line.modules)
            module.dropOut(now);
    }
}

} // namespace simulator
