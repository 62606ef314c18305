#pragma once

#include "orbclient/python_include.h"

namespace python_terminal
{

/// The names that a function finds when neither it nor the global dictionary has them: those of `locals`, then the
/// built-in ones. Statements run with separate global and local dictionaries; without this a function typed at the
/// prompt would not find the names beside it, itself included.
///
/// To be set as "__builtins__" of the global dictionary. Python asks it by item access because it is a dictionary of
/// another type. Called with the interpreter lock held; a new reference, or null with an exception.
PyObject *newFallbackNames(PyObject *locals);

/// The function to be set as "__getattr__" of the global dictionary: names of `locals` then are attributes of the module
/// as well, which is where pickle, and with it multiprocessing, looks for a script's functions and classes. Called with
/// the interpreter lock held; a new reference, or null with an exception.
PyObject *newModuleAttributes(PyObject *locals);

/// The function to be set as "__dir__" of the global dictionary: the names of `locals` then are listed among those of the
/// module, which is how unittest.main() finds a script's tests. As above.
PyObject *newModuleNames(PyObject *locals);

} // namespace python_terminal
