#pragma once

namespace python_terminal
{

/// Has getpass.getpass() ask in the console. By itself it asks in the terminal window from which the host was started,
/// when there is one, where nobody looks; the console shows what is typed, and getpass warns of that.
///
/// On the interpreter's thread with the interpreter lock held, once it was started. Leaves no exception set.
void askForPasswordsInConsole();

} // namespace python_terminal
