#pragma once

#include <QString>

namespace workbench
{

/// Reads a whole text file, in UTF-8 or what its first bytes say; false with the reason in `error`.
bool readTextFile(const QString &path, QString &text, QString &error);

} // namespace workbench
