#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QtGlobal>

class OrbClient;
class QString;

namespace orbclient
{

/// The type "orbClient.module": one high-voltage module on a line.
extern PyTypeObject moduleType;

/// What the type's methods are, in their order.
MethodRows moduleMethods();

/// A module object with its channel objects, as many as the module says that it has; with none when that cannot be
/// read. `client` is not owned and may be null. A new reference; null with an exception only when memory is exhausted.
PyObject *newModule(OrbClient *client, const QString &connectionName, quint32 line, quint32 address);

} // namespace orbclient
