#pragma once

#include "hostclient/host_export.h"

#include <QMetaType>
#include <QString>

/// Address of an object in the system: a service, a line, a crate, a module or a channel, and optionally one of its
/// items. A plain value.
///
/// The connection is carried twice: as the index that DlDataAccess::getOrbConnectionIndex gives, and as its name. A
/// name that is not empty wins; otherwise the index says which connection is meant.
class OrbItemId
{
public:
    /// The level of the object. Only `Crate` is the library's own number; the others follow it upwards and downwards.
    enum Type : qint32
    {
        Undefined = 0,
        Item = 1, ///< an item without a place in the hierarchy
        System = 2, ///< the service behind a connection
        Line = 3,
        Crate = 4,
        Module = 5,
        Channel = 6,
    };

    OrbItemId() = default;
    // Not explicit: callers write an identifier's level where an identifier is expected.
    OrbItemId(Type level) : type(level) { }

    quint32 line = 0; ///< line index, from 0
    quint32 address = 0; ///< device address on the line; crates count from 1000, modules from 0
    Type type = Undefined;
    qint32 connection = -1; ///< index of the connection, -1 for none
    qint32 channel = -1; ///< channel index in its module, from 0; -1 for no channel
    quint32 reserved = 0; ///< keeps the texts aligned; always 0
    QString connectionName; ///< name of the connection, or empty when only the index is known
    QString itemName; ///< item of the object, such as "Status.voltageMeasure"; empty for the object itself
};

static_assert(sizeof(void *) != 8 || sizeof(OrbItemId) == 40,
              "identifiers cross the library's border by value and in vectors");

inline bool operator==(const OrbItemId &a, const OrbItemId &b)
{
    return a.type == b.type && a.connection == b.connection && a.line == b.line && a.address == b.address
        && a.channel == b.channel && a.connectionName == b.connectionName && a.itemName == b.itemName;
}

inline bool operator!=(const OrbItemId &a, const OrbItemId &b)
{
    return !(a == b);
}

Q_DECLARE_METATYPE(OrbItemId)
