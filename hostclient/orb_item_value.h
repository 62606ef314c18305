#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"

#include <QString>
#include <QVariant>

/// A value of an item together with the address it belongs to, to be read into or to be sent. A plain value.
class HOST_EXPORT OrbItemValue
{
public:
    OrbItemValue();
    explicit OrbItemValue(const OrbItemId &id);
    OrbItemValue(const OrbItemValue &other);
    OrbItemValue(OrbItemValue &&other) noexcept;
    OrbItemValue &operator=(const OrbItemValue &other);
    OrbItemValue &operator=(OrbItemValue &&other) noexcept;
    ~OrbItemValue();

    const OrbItemId &id() const;
    void setId(const OrbItemId &id);

    /// The value as it was read or is to be sent; invalid when there is none.
    QVariant value() const;
    void setValue(const QVariant &value);

    /// The unit, such as "V"; empty for a plain number.
    QString unit() const;
    void setUnit(const QString &unit);

    /// The command that a pass-through message carries, as OrbRequestItem::getCommandTypeAsString spells it.
    QString command() const;
    void setCommand(const QString &command);

private:
    OrbItemId identifier;
    QVariant itemValue;
    QString unitText;
    QString commandText;
};
