#pragma once

#include "hostsdk/kd_plain_text_edit.h"

#include <QStringList>
#include <QVector>

class TerminalConsoleCompleter;
class QTextCursor;

/// A text that a program wrote.
struct ConsoleOutput
{
    QString text;
    bool isError;
};

/// A plain text editor turned into prompt and answer: what stands before the current prompt is earlier output and
/// stays as it is, the user edits the input after it, Return hands the input to the subclass. Base of both terminals.
/// GUI thread only.
///
/// A cycle: prompt printed (`busy` false), the user edits, Return (`busy` true), the subclass runs the command,
/// prints its results and then the next prompt. A subclass that never prints a prompt leaves the console deaf.
class TerminalConsole : public KdPlainTextEdit
{
    Q_OBJECT

public:
    /// `parent` owns the console; main data and observer outlive it.
    TerminalConsole(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~TerminalConsole() override;

    void printPrompt(); ///< "> ", and the console takes input again
    void printContinuationPrompt(); ///< ". ", and the console takes input again
    void printInputPrompt(); ///< "? ", and the next line goes to submitInput

    /// Inserts the text at the cursor, in white.
    void printText(const QString &text);

    /// Insert the trimmed text at the cursor, as a line of its own, in red and in green.
    void printError(const QString &text);
    void printSuccess(const QString &text);

    /// What printError and printSuccess print for each of the texts, in a single change of the document. Keeps the last
    /// 200,000 lines, or 20,000,000 characters, of it.
    void printOutput(const QVector<ConsoleOutput> &output);

    /// As printError and printSuccess, but above the prompt, for what nobody waits for: the line being typed stays whole.
    void printErrorAbovePrompt(const QString &text);
    void printSuccessAbovePrompt(const QString &text);

    /// Empties display and history, prints the banner (unless it is empty) and a prompt.
    void clearConsole(const QString &banner);

    /// Deletes the input.
    void removeInput();

    /// Runs the input up to the cursor as if Return had been pressed behind it.
    void executeInput();

    /// Shows candidates for the word before the cursor; an empty list hides them.
    void showCompletions(const QStringList &candidates);
    void hideCompletion();

    /// Replaces the word before the cursor by `completion` and closes the completion.
    void acceptCompletion(const QString &completion);

    // What subclasses override. All are called on the GUI thread; the text belongs to the console.

    /// A line was entered. Prints a new prompt and closes the completion by default.
    virtual void executeCommand(QString &command);

    /// A key was handled; `prefix` is the word before the cursor. Does nothing by default; an override answers,
    /// now or later, with showCompletions.
    virtual void requestCompletion(QString &prefix);

    /// A line was entered after printInputPrompt. Does nothing by default.
    virtual void submitInput(QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

    bool busy = false; ///< a line was handed over and no prompt followed yet: every key is dropped
    bool inputMode = false; ///< the next line answers a program's request for input
    int promptEnd = 0; ///< document position just behind the last prompt
    QStringList history; ///< executed commands, oldest first, without a limit
    int historyIndex = 0; ///< position in `history` while browsing, its size otherwise
    QString command; ///< the line being handed over; while browsing, what was typed before
    TerminalConsoleCompleter *completer = nullptr; ///< owned as a child
    int timerId = 0; ///< the timer that watches the popup while it holds the focus, 0 for none
    QString completionPrefix; ///< the word being completed
    int completionStart = -1; ///< document position where it begins, -1 when no completion is open

private:
    void insertInColour(const QString &text, const QColor &colour);
    void printLine(const QString &text, const QColor &colour);
    void printLineAbovePrompt(const QString &text, const QColor &colour);
    void startPrompt(const QString &prompt);
    void dropOldestOutput();

    QString textFrom(int start, int end) const;
    void readInput();
    void runInput();
    void handOver();
    void showHistoryEntry();
    void confineToInput();

    void tabPressed(QKeyEvent *event);
    void returnKeyPressed();
    void backspacePressed(QKeyEvent *event);
    void movedBackward(QKeyEvent *event);
    void movedForward(QKeyEvent *event);
    void upPressed();
    void downPressed();
    void otherKeyPressed(QKeyEvent *event);

    bool completionChosen();
    void findWord();
    void updateCompletion();
    void placePopup();
};
