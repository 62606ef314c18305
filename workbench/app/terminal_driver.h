#pragma once

#include <QCoreApplication>
#include <QString>

class QAction;
class QComboBox;
class QPlainTextEdit;
class QWidget;

namespace workbench
{

/// Operates an open command terminal as a user would: through its controls, by their names. Nothing but the tool's
/// widget is known of it. GUI thread only.
class TerminalDriver
{
    Q_DECLARE_TR_FUNCTIONS(workbench::TerminalDriver)

public:
    /// The tool is kept and outlives the driver.
    explicit TerminalDriver(QWidget &tool);

    /// The control that the tool lacks; empty when it has all that is needed here.
    QString missingControl() const;

    /// Whether the terminal has learned which controllers there are.
    bool knowsControllers() const;

    /// Chooses a controller by display text or connection name, the first when `name` is empty. False: `error` names
    /// those there are.
    bool chooseController(const QString &name, QString &error);

    /// Shows the editor with this text in it.
    void edit(const QString &text);

    /// Executes what the editor holds.
    void execute();

    /// Whether a file runs or an answer is awaited.
    bool isBusy() const;

    /// The console's complete lines since the last call.
    QString takeNewLines();

    /// The line that is not complete: the prompt, and what is typed behind it.
    QString lastLine() const;

private:
    QAction *action(const QString &text) const;

    QWidget &tool;
    QComboBox *const controllerBox;
    QPlainTextEdit *const console;
    QPlainTextEdit *const editor;
    int linesTaken = 0;
};

} // namespace workbench
