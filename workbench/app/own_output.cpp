#include "workbench/app/own_output.h"

#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace workbench
{

OwnOutput::OwnOutput()
{
    std::fflush(stdout);
#ifdef Q_OS_UNIX
    const int own = dup(STDOUT_FILENO);
    if (own >= 0 && dup2(STDERR_FILENO, STDOUT_FILENO) >= 0
        && output.open(own, QIODevice::WriteOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
        return;
#endif
    output.open(stdout, QIODevice::WriteOnly);
}

} // namespace workbench
