#pragma once

#include <QString>

namespace workbench
{

/// What a file contains. Plain data.
struct TextFile
{
    QString text;
    int foreignLine = 0; ///< the first that is not UTF-8, from 1 on; 0 when there is none
};

/// Reads a whole text file: in what its first bytes say, else in UTF-8, or in ISO 8859-1 where it is not UTF-8, as the
/// terminals' editor does. False with the reason in `error`.
bool readTextFile(const QString &path, TextFile &content, QString &error);

} // namespace workbench
