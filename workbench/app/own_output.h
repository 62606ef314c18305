#pragma once

#include <QFile>

namespace workbench
{

/// Standard output for the program's own lines alone: what anything else in the process writes there, the interpreter
/// when it starts or a script past its console, goes to standard error, so that every line that a machine reads is
/// ours. Made once, before the process has written anything.
class OwnOutput
{
public:
    OwnOutput();

    /// Where our lines go; open, and closed with this object.
    QFile &file() { return output; }

private:
    QFile output;
};

} // namespace workbench
