#pragma once

#include "orbclient/python_include.h"

class OrbClient;
class OrbItemValue;
class OrbRequestItem;
class QString;

namespace orbclient
{

/// The type "orbClient.dataFrame": one pass-through message, a record of nine Python objects.
extern PyTypeObject dataFrameType;

/// A frame with all members set, from a request that was received. `client` is not used. A new reference; null with an
/// exception only when memory is exhausted.
PyObject *newDataFrame(OrbClient *client, const QString &connectionName, const OrbRequestItem &request);

/// Fills a message to send from a frame; unset members give empty texts, -1 and an invalid value. False, with a
/// default-constructed message, when `object` is not exactly a data frame. Raises nothing.
bool dataFrameToItemValue(OrbItemValue &itemValue, PyObject *object);

} // namespace orbclient
