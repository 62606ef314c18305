#include "command_terminal/terminal_console.h"

#include "command_terminal/console_text.h"
#include "command_terminal/terminal_console_completer.h"
#include "command_terminal/terminal_font.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextOption>

namespace
{

constexpr int TabStopPixels = 40;

QTextCharFormat formatInColour(const QColor &colour)
{
    QTextCharFormat format;
    format.setForeground(colour);
    return format;
}

/// A text as a line of its own; nothing when there is nothing in it to see.
QString lineOf(const QString &text)
{
    const QString line = text.trimmed();
    return line.isEmpty() ? line : line + QLatin1Char('\n');
}

} // namespace

TerminalConsole::TerminalConsole(QWidget *parent, KdMainData &hostData, KdObserver &eventObserver)
    : KdPlainTextEdit(parent, hostData, eventObserver), completer(new TerminalConsoleCompleter(this))
{
    QPalette blackAndWhite = palette();
    blackAndWhite.setColor(QPalette::Base, Qt::black);
    blackAndWhite.setColor(QPalette::Text, Qt::white);
    setPalette(blackAndWhite);
    setFont(command_terminal::terminalFont());
    setTabStopDistance(TabStopPixels);
    // Looking for a blank to break at takes the square of a word's length: an answer of some 100,000 characters without
    // one would freeze the window for many seconds.
    setWordWrapMode(QTextOption::WrapAnywhere);
    // Right-to-left input would otherwise turn its whole line around, the prompt included.
    QTextOption leftToRight = document()->defaultTextOption();
    leftToRight.setTextDirection(Qt::LeftToRight);
    document()->setDefaultTextOption(leftToRight);
    // Undo would take back output and move the prompt; it would also keep a copy of every line for a night.
    setUndoRedoEnabled(false);
    clearConsole(QString());
    completionStart = -1;
}

TerminalConsole::~TerminalConsole() = default;

void TerminalConsole::insertInColour(const QString &text, const QColor &colour)
{
    QTextCursor cursor = textCursor();
    cursor.clearSelection(); // what the user marked is not replaced by output
    cursor.insertText(text, formatInColour(colour));
    cursor.setCharFormat(formatInColour(Qt::white));
    setTextCursor(cursor);
}

void TerminalConsole::startPrompt(const QString &prompt)
{
    insertInColour(prompt, Qt::white);
    ensureCursorVisible();
    promptEnd = textCursor().position();
    busy = false;
}

void TerminalConsole::printPrompt()
{
    startPrompt(QStringLiteral("> "));
}

void TerminalConsole::printContinuationPrompt()
{
    startPrompt(QStringLiteral(". "));
}

void TerminalConsole::printInputPrompt()
{
    startPrompt(QStringLiteral("? "));
    inputMode = true;
}

void TerminalConsole::printText(const QString &text)
{
    insertInColour(text, Qt::white);
}

void TerminalConsole::printLine(const QString &text, const QColor &colour)
{
    insertInColour(lineOf(text), colour);
    ensureCursorVisible();
}

void TerminalConsole::printError(const QString &text)
{
    printLine(text, Qt::red);
}

void TerminalConsole::printSuccess(const QString &text)
{
    printLine(text, Qt::green);
}

void TerminalConsole::printOutput(const QVector<ConsoleOutput> &output)
{
    QTextCursor edit(document());
    edit.beginEditBlock();
    for (int i = 0; i < output.size();) {
        const bool isError = output.at(i).isError;
        QString lines;
        for (; i < output.size() && output.at(i).isError == isError; ++i)
            lines += lineOf(output.at(i).text);
        insertInColour(lines, isError ? Qt::red : Qt::green);
    }
    dropOldestOutput();
    edit.endEditBlock();
    ensureCursorVisible();
}

/// A program that writes for a night must not take the memory of the whole host.
void TerminalConsole::dropOldestOutput()
{
    constexpr int MostLines = 200000;
    constexpr int MostCharacters = 20000000;
    // Taking away a little at a time would cost more than all of the output.
    constexpr int SpareLines = 2000;
    constexpr int SpareCharacters = 500000;
    const int lines = document()->blockCount();
    const int characters = document()->characterCount();
    if (lines < MostLines + SpareLines && characters < MostCharacters + SpareCharacters)
        return;
    const int removed = qMax(document()->findBlockByNumber(qMax(0, lines - MostLines)).position(),
                             document()->findBlock(qMax(0, characters - MostCharacters)).position());
    QTextCursor cursor(document());
    cursor.setPosition(removed, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    promptEnd = qMax(0, promptEnd - removed);
    if (completionStart != -1)
        completionStart = qMax(0, completionStart - removed);
}

void TerminalConsole::printLineAbovePrompt(const QString &text, const QColor &colour)
{
    constexpr int PromptLength = 2;
    const QString line = text.trimmed();
    if (line.isEmpty())
        return;
    QTextCursor cursor(document());
    cursor.setPosition(promptEnd - PromptLength);
    const int before = cursor.position();
    cursor.insertText(line + QLatin1Char('\n'), formatInColour(colour));
    const int inserted = cursor.position() - before;
    promptEnd += inserted;
    if (completionStart != -1)
        completionStart += inserted;
    ensureCursorVisible();
    placePopup();
}

void TerminalConsole::printErrorAbovePrompt(const QString &text)
{
    printLineAbovePrompt(text, Qt::red);
}

void TerminalConsole::printSuccessAbovePrompt(const QString &text)
{
    printLineAbovePrompt(text, Qt::green);
}

void TerminalConsole::clearConsole(const QString &banner)
{
    clear();
    QTextCursor cursor = textCursor();
    cursor.setCharFormat(formatInColour(Qt::white));
    setTextCursor(cursor);

    history.clear();
    busy = false;
    inputMode = false;
    promptEnd = 0;
    historyIndex = 0;
    if (!banner.isEmpty())
        printText(banner);
    printPrompt();
    hideCompletion();
}

void TerminalConsole::removeInput()
{
    QTextCursor cursor = textCursor();
    cursor.setPosition(promptEnd);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    setTextCursor(cursor);
}

QString TerminalConsole::textFrom(int start, int end) const
{
    QTextCursor cursor(document());
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    return cursor.selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void TerminalConsole::readInput()
{
    command.clear();
    const int position = textCursor().position();
    if (position >= promptEnd)
        command = command_terminal::handedOverLine(textFrom(promptEnd, position));
}

void TerminalConsole::runInput()
{
    readInput();
    if (!command.isEmpty() && (history.isEmpty() || history.constLast() != command))
        history.append(command);
    historyIndex = history.size();
    executeCommand(command);
    command.clear();
    hideCompletion();
}

void TerminalConsole::executeInput()
{
    runInput();
}

void TerminalConsole::handOver()
{
    busy = true;
    if (!inputMode) {
        runInput();
        return;
    }
    inputMode = false;
    readInput();
    submitInput(command);
    hideCompletion();
}

void TerminalConsole::showHistoryEntry()
{
    removeInput();
    insertInColour(historyIndex < history.size() ? history.at(historyIndex) : command, Qt::white);
    ensureCursorVisible();
}

void TerminalConsole::confineToInput()
{
    QTextCursor cursor = textCursor();
    const int end = document()->characterCount() - 1;
    const int inputStart = qMin(promptEnd, end);
    if (cursor.position() >= inputStart && cursor.anchor() >= inputStart)
        return;
    if (!cursor.hasSelection() || cursor.selectionEnd() <= inputStart) {
        cursor.setPosition(end);
    } else {
        const int selectionEnd = cursor.selectionEnd();
        cursor.setPosition(inputStart);
        cursor.setPosition(selectionEnd, QTextCursor::KeepAnchor);
    }
    setTextCursor(cursor);
}

// The hooks of the subclasses

void TerminalConsole::executeCommand(QString &)
{
    printPrompt();
    hideCompletion();
}

void TerminalConsole::requestCompletion(QString &) { }

void TerminalConsole::submitInput(QString &) { }
