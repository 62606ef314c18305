#pragma once

#include <QString>
#include <QVector>

namespace layering
{

/// One #include line.
struct Include
{
    int line = 0; ///< Counted from 1.
    QString path;
    bool quoted = false;
};

/// The text with comments blanked, line breaks kept; raw strings are blanked too, ordinary ones stay.
QString withoutComments(const QString &text);

/// As withoutComments, with ordinary strings and characters blanked as well.
QString codeOnly(const QString &text);

/// The includes of a source, in their order; those in comments and in raw strings are none.
QVector<Include> includesOf(const QString &text);

} // namespace layering
