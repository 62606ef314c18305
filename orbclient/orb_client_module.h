#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QtGlobal>

class OrbClient;

// The Python module "orbClient", through which scripts read and write every item of the hardware.
//
// Everything here is called on the interpreter's thread with the interpreter lock held.

/// Creates the module with its functions and its object types; null with a Python exception when that fails. Each call
/// makes another module, with no client. An embedding program registers it as the built-in "orbClient"; as an
/// extension, orbClientPython_3_for_ORB, a plain interpreter finds it by this name.
extern "C" Q_DECL_EXPORT PyObject *PyInit_orbClientPython_3_for_ORB();

namespace orbclient
{

/// What the module's functions are, in their order: rows of the kind Call.
MethodRows moduleFunctions();

/// Tells the module through which client its functions work; null for none. The client is not owned. Before it goes,
/// the module must be given another one or null: objects that were made through it then fail with "error".
/// Does nothing when `module` is not this module.
void setModuleClient(PyObject *module, OrbClient *client);

} // namespace orbclient
