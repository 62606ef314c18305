#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// An example of a page: what is done, and what the terminal then shows. Plain data.
struct GuideExample
{
    enum Kind
    {
        CommandFile, ///< a block "commands", with the block "transcript" behind it
        PythonFile, ///< a block "python", likewise
        CommandSession, ///< a block "terminal": what is typed behind the prompts, and what is answered
        PythonSession, ///< a block "python-terminal", likewise
    };

    int line = 0; ///< of the page, where the block begins
    Kind kind = CommandFile;
    QString text; ///< of the file; empty for a session
    QStringList transcript; ///< lines; "…" stands for anything in a line, and alone in a line for any lines
};

/// Blocks "sh", and "output" of what they print: run_page.sh executes those of the pages that it is given.
enum class ShellBlocks
{
    Executed,
    Refused, ///< nobody would notice what is wrong in them
};

/// The examples of a page in Markdown, in order. Blocks in other languages are none. `error` says what is wrong with
/// the page; empty when nothing is.
QVector<GuideExample> readGuide(const QString &page, ShellBlocks shellBlocks, QString &error);

/// Whether these lines are what was expected, whose "…" stand for anything.
bool matches(const QStringList &lines, const QStringList &expected);
