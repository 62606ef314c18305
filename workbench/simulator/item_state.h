#pragma once

#include "workbench/simulator/condition_latch.h"
#include "workbench/simulator/item_definition.h"
#include "workbench/simulator/item_value.h"
#include "workbench/simulator/setting_store.h"

namespace simulator
{

/// A condition of a level's enumeration as a bit.
template <class Condition>
constexpr quint32 bit(Condition condition)
{
    return quint32(1) << static_cast<quint32>(condition);
}

/// What every level of the plant has in common: settings, events and errors.
struct ItemState
{
    SettingStore settings;
    ConditionLatch latch;

    /// Reads an item of any source but Quantity. `live` are the conditions that hold now.
    ItemValue read(const ItemDefinition &item, quint32 live) const;

    /// Stores a setting; false when the item is none.
    bool store(const ItemDefinition &item, const ItemValue &value);
};

} // namespace simulator
