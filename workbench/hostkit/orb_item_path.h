#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"

#include <QString>

namespace hostkit
{

/// Addresses from here on are crates, below it modules.
constexpr quint32 FirstCrateAddress = 1000;

/// Reads an item path, as OrbClient takes it, into the level, place and item name of `id`; its connection is left
/// alone. False, with `id` as it was, when the path is none: no item name, a number that does not fit, one number
/// alone, more than three numbers, or a channel of a crate. For any thread.
HOST_EXPORT bool parseItemPath(const QString &path, OrbItemId &id);

} // namespace hostkit
