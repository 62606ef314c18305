#pragma once

#include <QString>

namespace rehearsal
{

/// How a script came to its end. Plain data.
struct ScriptOutcome
{
    enum Kind : quint8
    {
        Done, ///< to its last line, or by an exit that says that all is well
        DoesNotCompile,
        Raised,
        Exited, ///< with a code that says that something is wrong
    };

    Kind kind = Done;
    int line = 0; ///< of the script, from 1 on; 0 when it is not known
    QString text; ///< the error, or the traceback, in several lines; empty when it is done
};

/// The Python terminal executes a text that does not compile without a word, and of an exception shows one line. This
/// is a text for it that executes `script` there in the same way, with the same names, and writes to `outcomeFile`, an
/// absolute path, how it ended. An exception goes on to the terminal as it would without. `shownName` is the script's
/// name in tracebacks.
QString wrappedScript(const QString &script, const QString &shownName, const QString &outcomeFile);

/// Reads what the wrapped script wrote; or false, when there is nothing that could be read.
bool readScriptOutcome(const QString &outcomeFile, ScriptOutcome &outcome);

} // namespace rehearsal
