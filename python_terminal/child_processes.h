#pragma once

#include <QString>

namespace python_terminal
{

// Processes that a script starts. Its own program is the host's, which must not start a second time; and a copy of the
// host by fork() has the interpreter's thread alone: no window, no event loop, nobody who takes texts.
//
// Everything here is called on the interpreter's thread with the interpreter lock held, once it was started.

/// Has scripts start `interpreter`, the path of a plain Python 3.7, when they start themselves (sys.executable); an
/// empty path says that there is none. Prepares the interpreter for fork().
void prepareForChildProcesses(const QString &interpreter);

/// Whether this process is a copy of the host that a script made. It has no client: calls of orbClient fail there.
bool isForkedProcess();

/// What a script writes in such a process goes to the standard streams that it shares with the host.
void writeInForkedProcess(const QString &text, bool isError);

/// Ends such a process after its statement, as a plain interpreter ends after its script: an exception that is set is
/// written to standard error. The host's own clean-up does not run.
[[noreturn]] void endForkedProcess();

} // namespace python_terminal
