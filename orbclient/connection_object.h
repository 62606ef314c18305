#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

class OrbClient;
class QString;

namespace orbclient
{

/// The type "orbClient.connection": one open connection to a service.
extern PyTypeObject connectionType;

/// What the type's methods are, in their order.
MethodRows connectionMethods();

/// A connection object with its crate and module objects. `client` is not owned and may be null. A new reference; null
/// with an exception only when memory is exhausted.
PyObject *newConnection(OrbClient *client, const QString &connectionName);

} // namespace orbclient
