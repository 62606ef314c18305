#pragma once

#include "orbclient/python_include.h"

namespace orbclient
{

/// In what the module's object types differ.
struct ObjectTypeParts
{
    const char *name; ///< with the module's name before it: "orbClient.channel"
    const char *docstring;
    Py_ssize_t size; ///< of an object, in bytes
    newfunc create;
    reprfunc text; ///< both repr() and str()
    PyMemberDef *members; ///< lives as long as the process
    PyMethodDef *methods; ///< likewise; null for none
    initproc initialise; ///< null when constructor arguments are ignored
};

/// A static type, not yet ready. It can be subclassed and has no instance dictionary.
///
/// The type carries the dictionary-subclass flag although its objects are no dictionaries; the flag is part of the
/// module's interface, and so is that nothing is freed when an object of the type is released.
PyTypeObject makeObjectType(const ObjectTypeParts &parts);

} // namespace orbclient
