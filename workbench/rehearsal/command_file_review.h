#pragma once

#include <QString>
#include <QVector>

namespace rehearsal
{

/// A line that the command terminal executes. Plain data.
struct CommandLine
{
    int number = 0; ///< in the file, from 1 on
    QString text; ///< without the white space around it
};

/// Something that the command terminal does and an author seldom means. Plain data.
struct Remark
{
    int line = 0; ///< from 1 on; 0 for the whole file
    QString text;
};

/// A command file as the command terminal takes it.
struct CommandFileReview
{
    QVector<CommandLine> executed; ///< in the order of their execution
    QVector<Remark> remarks; ///< by line
};

/// Reads a command file the way the command terminal does: a pair of line feeds counts as one, the run ends at an empty
/// line and before a last line without a line feed. Line ends are any of LF, CR and CR LF.
CommandFileReview reviewCommandFile(const QString &text);

} // namespace rehearsal
