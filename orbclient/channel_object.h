#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QtGlobal>

class OrbClient;
class QString;

namespace orbclient
{

/// The type "orbClient.channel": one output channel of a module.
extern PyTypeObject channelType;

/// What the type's methods are, in their order.
MethodRows channelMethods();

/// A channel object for an address. `client` is not owned and may be null. A new reference; null with an exception
/// only when memory is exhausted. No item is read.
PyObject *newChannel(OrbClient *client, const QString &connectionName, quint32 line, quint32 moduleAddress,
                     quint32 index);

} // namespace orbclient
