#include "workbench/simulator/item_state.h"

namespace simulator
{

ItemValue ItemState::read(const ItemDefinition &item, quint32 live) const
{
    switch (item.source) {
    case ItemSource::Constant:
        if (item.kind == ItemKind::String)
            return ItemValue::of(QString::fromUtf8(item.text));
        return ItemValue::of(item.number);
    case ItemSource::Setting:
        return ItemValue::of(settings.value(item.argument, item.number));
    case ItemSource::Status:
        return ItemValue::of((live & bit(item.argument)) != 0);
    case ItemSource::StatusNot:
        return ItemValue::of((live & bit(item.argument)) == 0);
    case ItemSource::Event:
        return ItemValue::of((latch.events() & bit(item.argument)) != 0);
    case ItemSource::Error:
        return ItemValue::of((latch.errors() & bit(item.argument)) != 0);
    case ItemSource::Quantity:
        break;
    }
    Q_ASSERT_X(false, "ItemState::read", item.name); // the object answers for its quantities
    return {};
}

bool ItemState::store(const ItemDefinition &item, const ItemValue &value)
{
    if (item.source != ItemSource::Setting)
        return false;
    settings.set(item.argument, value.number);
    return true;
}

} // namespace simulator
