#pragma once

#include <QString>

namespace workbench
{

/// What a file contains. Plain data.
struct TextFile
{
    QString text;
    int foreignLine = 0; ///< the first that is not UTF-8, from 1 on; 0 unless it was read in ISO 8859-1
};

/// Reads a whole text file: in the Unicode that its byte order mark says, else in UTF-8; or in ISO 8859-1 where it is not
/// that. In a UTF-8 locale the terminals' editor does the same. False with the reason in `error`.
bool readTextFile(const QString &path, TextFile &content, QString &error);

} // namespace workbench
