#pragma once

#include <QCoreApplication>
#include <QString>

namespace workbench
{

/// For functions of the workbench that belong to no class; a class has a tr() of its own.
inline QString tr(const char *text)
{
    return QCoreApplication::translate("workbench", text);
}

} // namespace workbench
