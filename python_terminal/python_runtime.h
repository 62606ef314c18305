#pragma once

#include <QString>

namespace python_terminal
{

/// The Python installation beside the application: a folder "python-3.7.1" whose "Lib" holds the standard library and
/// its extension modules side by side. Where that folder is missing, a "lib" beside the application stands for it.
struct PythonRuntime
{
    QString home; ///< absolute path of that folder, whether it exists or not
    QString libraryPath; ///< absolute path of its "Lib", the interpreter's one search path, likewise
    QString
        interpreter; ///< absolute path of its "bin/python3.7", a plain interpreter; empty when it is not there
    bool wanted = false; ///< "python-3.7.1" or "lib" is there, either of which means that a start is intended
    bool usable = false; ///< what Python cannot start without is there: without it, it would end the process

    /// Looks beside the application file; says in the debug log what is missing.
    static PythonRuntime beside(const QString &applicationFile);
};

} // namespace python_terminal
