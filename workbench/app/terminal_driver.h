#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTextCursor>

class QAction;
class QPlainTextEdit;
class QWidget;

namespace workbench
{

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

    /// The console's complete lines since the last call.
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
