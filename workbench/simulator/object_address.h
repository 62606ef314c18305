#pragma once

#include "hostclient/orb_item_id.h"

#include <QString>

namespace simulator
{

/// Place of an object on a controller. What a level does not need is ignored.
struct ObjectAddress
{
    OrbItemId::Type level = OrbItemId::Undefined;
    quint32 line = 0;
    quint32 address = 0;
    qint32 channel = -1;
};

inline bool operator==(const ObjectAddress &a, const ObjectAddress &b)
{
    return a.level == b.level && a.line == b.line && a.address == b.address && a.channel == b.channel;
}

inline bool operator!=(const ObjectAddress &a, const ObjectAddress &b)
{
    return !(a == b);
}

/// As operators write it: "0.3.7" for a channel, "0.3" for a module, "0.1000" for a crate, "0" for a line, empty for
/// the system.
QString addressText(const ObjectAddress &object);

/// The level and the address, "channel 0.3.7"; "controller" for the system.
QString placeName(const ObjectAddress &object);

} // namespace simulator
