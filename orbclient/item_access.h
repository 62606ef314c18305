#pragma once

#include "hostclient/tarn_result.h"
#include "orbclient/python_include.h"
#include "orbclient/value_conversion.h"

#include <array>
#include <string_view>

class OrbClient;

// How every method that names an item reaches the hardware.
//
// Called on the interpreter's thread with the interpreter lock held, which stays held while the client blocks.

namespace orbclient
{

/// Where an object's items are, as its members say at this moment. Everything in it is borrowed.
struct ItemAddress
{
    OrbClient *client; ///< null for an object that no client made
    PyObject *connection; ///< name of the connection; null when the member is unset
    std::array<PyObject *, 3>
        indices; ///< line, device and channel, as far as the object has them; null when unset
    int levels; ///< how many of `indices` the object has: 0 for a connection, 2 for a device, 3 for a channel
};

/// What item access knows of an object type.
struct ItemOwner
{
    PyTypeObject *type;
    ItemAddress (*addressOf)(PyObject *self); ///< called with objects of exactly this type
};

/// Reads an item. Null, and deliberately no exception, when `self` is not exactly of the owner's type: a subclass does
/// not pass. "error" when the object has no client or the item cannot be read.
PyObject *readItem(PyObject *self, const ItemOwner &owner, std::string_view itemName, Conversion code,
                   bool withTimestamp);

/// Writes the value text of the one argument; "ok" or "error". Null, and deliberately no exception, when `self` is not
/// exactly of the owner's type; null with a TypeError when `arguments` does not hold one object.
PyObject *writeItem(PyObject *self, const ItemOwner &owner, PyObject *arguments, std::string_view itemName);

/// "ok" for success, else "error".
PyObject *resultString(TarnResult result);

} // namespace orbclient
