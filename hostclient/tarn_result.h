#pragma once

/// Result of an OrbClient operation. Callers may rely on one thing only: Success is 0, everything else is a failure.
/// The other values are our kit's, kept apart so that a log can say what went wrong.
enum class TarnResult : int
{
    Success = 0,
    Failed = 1, ///< the value or the command does not make sense for the item
    Denied = 2, ///< the item exists and cannot be written, or read, as was asked
    NoData = 3, ///< no such connection, object or item
    NotConnected = 4, ///< the connection is known and closed
};
