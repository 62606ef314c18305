#pragma once

#include <QFont>

namespace command_terminal
{

/// The fixed-pitch font of console and editor: the system's own, or another where the system names one that is not.
QFont terminalFont();

} // namespace command_terminal
