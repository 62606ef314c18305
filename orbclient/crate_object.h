#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QtGlobal>

class OrbClient;
class QString;

namespace orbclient
{

/// The type "orbClient.crate": one crate on a line.
extern PyTypeObject crateType;

/// What the type's methods are, in their order.
MethodRows crateMethods();

/// A crate object with its module objects. `client` is not owned and may be null. A new reference; null with an
/// exception only when memory is exhausted.
PyObject *newCrate(OrbClient *client, const QString &connectionName, quint32 line, quint32 address);

} // namespace orbclient
