#pragma once

#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_console_completer.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QFocusEvent>
#include <QStringList>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimerEvent>

/// A console that keeps what its hooks were called with and shows its state.
class ProbeConsole : public TerminalConsole
{
public:
    /// What the console's state was when a hook was called.
    struct State
    {
        bool busy = false;
        bool inputMode = false;
        QStringList history;
        int historyIndex = -1;
    };

    explicit ProbeConsole(TerminalFixture &host, QWidget *parent = nullptr)
        : TerminalConsole(parent, host.mainData, host.observer)
    { }

    void executeCommand(QString &line) override
    {
        executed.append(line);
        atHook = {busy, inputMode, history, historyIndex};
        if (prompts)
            TerminalConsole::executeCommand(line);
    }

    void requestCompletion(QString &prefix) override
    {
        requested.append(prefix);
        if (!candidates.isEmpty())
            showCompletions(candidates);
    }

    void submitInput(QString &line) override
    {
        submitted.append(line);
        atHook = {busy, inputMode, history, historyIndex};
        TerminalConsole::submitInput(line);
    }

    using TerminalConsole::busy;
    using TerminalConsole::command;
    using TerminalConsole::completer;
    using TerminalConsole::completionPrefix;
    using TerminalConsole::completionStart;
    using TerminalConsole::history;
    using TerminalConsole::historyIndex;
    using TerminalConsole::inputMode;
    using TerminalConsole::mousePressEvent;
    using TerminalConsole::promptEnd;
    using TerminalConsole::timerId;

    // Short ways to act and to look

    void type(const QString &keys) { QTest::keyClicks(this, keys); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(this, key, modifiers);
    }

    void enterLine(const QString &line)
    {
        type(line);
        press(Qt::Key_Return);
    }

    /// Marks from `anchor` to `position`, both document positions.
    void mark(int anchor, int position)
    {
        QTextCursor cursor = textCursor();
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        setTextCursor(cursor);
    }

    void moveTo(int position) { mark(position, position); }

    QString input() const { return toPlainText().mid(promptEnd); }
    int cursorInInput() const { return textCursor().position() - promptEnd; }
    bool isPopupOpen() const { return completer->isVisible(); }

    QRect rectAt(int position) const
    {
        QTextCursor cursor(document());
        cursor.setPosition(position);
        return cursorRect(cursor);
    }

    /// The colour in which the character at `position` is painted.
    QColor colourAt(int position) const
    {
        QTextCursor cursor(document());
        cursor.setPosition(position + 1); // a cursor has the format of the character before it
        const QBrush foreground = cursor.charFormat().foreground();
        return foreground.style() == Qt::NoBrush ? palette().color(QPalette::Text) : foreground.color();
    }

    /// The colours of `length` characters, line feeds left out, as they change from one to the next.
    QList<QColor> coloursOf(int start, int length) const
    {
        QList<QColor> colours;
        for (int i = start; i < start + length; ++i) {
            if (document()->characterAt(i) == QChar::ParagraphSeparator)
                continue;
            const QColor colour = colourAt(i);
            if (colours.isEmpty() || colours.constLast() != colour)
                colours.append(colour);
        }
        return colours;
    }

    bool prompts = true; ///< whether a command is answered by a prompt, as the base class does it
    QStringList candidates; ///< shown whenever completion is asked for, unless empty
    QStringList executed;
    QStringList requested;
    QStringList submitted;
    State atHook; ///< at the last call of executeCommand or submitInput
    int ticks = 0; ///< of the timer that watches the popup
    Qt::FocusReason focusReason = Qt::NoFocusReason; ///< of the last focus that came

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        focusReason = event->reason();
        TerminalConsole::focusInEvent(event);
    }

    void timerEvent(QTimerEvent *event) override
    {
        if (timerId != 0 && event->timerId() == timerId)
            ++ticks;
        TerminalConsole::timerEvent(event);
    }
};
