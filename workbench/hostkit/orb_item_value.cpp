#include "hostclient/orb_item_value.h"

OrbItemValue::OrbItemValue() = default;

OrbItemValue::OrbItemValue(const OrbItemId &id) : identifier(id) { }

OrbItemValue::OrbItemValue(const OrbItemValue &other) = default;
OrbItemValue::OrbItemValue(OrbItemValue &&other) noexcept = default;
OrbItemValue &OrbItemValue::operator=(const OrbItemValue &other) = default;
OrbItemValue &OrbItemValue::operator=(OrbItemValue &&other) noexcept = default;
OrbItemValue::~OrbItemValue() = default;

const OrbItemId &OrbItemValue::id() const
{
    return identifier;
}

void OrbItemValue::setId(const OrbItemId &id)
{
    identifier = id;
}

QVariant OrbItemValue::value() const
{
    return itemValue;
}

void OrbItemValue::setValue(const QVariant &value)
{
    itemValue = value;
}

QString OrbItemValue::unit() const
{
    return unitText;
}

void OrbItemValue::setUnit(const QString &unit)
{
    unitText = unit;
}

QString OrbItemValue::command() const
{
    return commandText;
}

void OrbItemValue::setCommand(const QString &command)
{
    commandText = command;
}
