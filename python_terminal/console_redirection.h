#pragma once

#include "orbclient/python_include.h"

class TerminalPythonThread;

// The Python module "ConsoleRedirection": its one type stands for sys.stdout, sys.stderr and sys.stdin. What Python
// writes becomes signals of the interpreter host; a line that it reads comes from there.
//
// Everything here is called with the interpreter lock held.

namespace python_terminal
{

/// Creates the module; what the interpreter calls for the built-in "ConsoleRedirection".
PyObject *initialiseConsoleRedirection();

/// A stream object for the host, which must outlive the interpreter; of standard error when `isError`. A new
/// reference, or null with an exception.
PyObject *newConsoleRedirection(TerminalPythonThread *owner, bool isError);

} // namespace python_terminal
