#pragma once

#include <QString>

namespace workbench
{

/// `terminal-workbench rehearse`: the whole of it, with an application of its own that needs no display; the process's
/// exit code. Called instead of anything else in main(), with its arguments, of which the second is "rehearse".
int rehearse(int argumentCount, char **arguments, const QString &version);

} // namespace workbench
