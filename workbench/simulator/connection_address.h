#pragma once

#include <QString>

namespace simulator
{

/// Whether the text is "host:port" with a port from 1 to 65535.
bool isConnectionAddress(const QString &address);

} // namespace simulator
