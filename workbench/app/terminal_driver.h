#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTextCursor>
#include <QVector>

class QAction;
class QPlainTextEdit;
class QWidget;

namespace workbench
{

/// A line that a terminal shows. Plain data.
struct TerminalLine
{
    enum Kind
    {
        Plain, ///< what was typed, or the terminal's own
        Success, ///< shown in green: an answer, or what a script printed
        Error, ///< shown in red
    };

    Kind kind = Plain;
    QString text;
};

/// Operates an open terminal as a user would: through its controls, by their names. Nothing but the tool's widget is
/// known of it. GUI thread only.
class TerminalDriver
{
    Q_DECLARE_TR_FUNCTIONS(workbench::TerminalDriver)
    Q_DISABLE_COPY(TerminalDriver)

public:
    /// The tool is kept and outlives the driver.
    explicit TerminalDriver(QWidget &tool);
    virtual ~TerminalDriver();

    /// The control that the tool lacks; empty when it has all that is needed here, without which nothing else may be
    /// called.
    virtual QString missingControl() const;

    /// Whether the terminal can begin; it needs some time after it was opened.
    virtual bool isReady() const = 0;

    /// Makes the terminal's settings before a file: its requests go to this controller, the first when the text is
    /// empty, where that is for the terminal to choose. Called when it is ready, or did not become so in time. False:
    /// `error` says why it cannot begin.
    virtual bool prepare(const QString &controller, QString &error) = 0;

    /// Whether a file runs or an answer is awaited.
    virtual bool isBusy() const = 0;

    /// Whether a file that runs waits for a line that the user types.
    virtual bool waitsForUser() const = 0;

    /// Why the terminal cannot go on, for the operator; empty while it can.
    virtual QString obstacle() const = 0;

    /// Shows the editor with this text in it.
    void edit(const QString &text);

    /// Executes what the editor holds.
    void execute();

    /// Presses the keys that stop what is executed.
    void stop();

    /// Empties the console, with the lines that were not taken yet; a Python terminal forgets the names of its scripts.
    void clear();

    /// The console's complete lines since the last call of this or the next.
    QVector<TerminalLine> takeLines();
    /// The same as one text.
    QString takeNewLines();

    /// The line that is not complete: the prompt, and what is typed behind it.
    QString lastLine() const;

protected:
    QWidget &tool;
    QPlainTextEdit *const console;

private:
    QAction *action(const QString &text) const;

    QPlainTextEdit *const editor;
    QTextCursor linesTaken; ///< stands behind them, also when the console drops its oldest ones
};

} // namespace workbench
