// What the console makes of keys, mouse, focus and pasted text; the prompt and the display are in terminal_console.cpp.
#include "command_terminal/terminal_console.h"

#include "command_terminal/console_text.h"
#include "command_terminal/terminal_console_completer.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimerEvent>

namespace
{

constexpr int PopupGapPixels = 10;
constexpr int PopupWatchMs = 200;

// Whether the editor would change its text on this key. Copying and marking may reach into earlier output.
bool isEditingKey(const QKeyEvent &event)
{
    for (const QKeySequence::StandardKey key :
         {QKeySequence::Cut, QKeySequence::Paste, QKeySequence::Delete, QKeySequence::DeleteEndOfWord,
          QKeySequence::DeleteEndOfLine, QKeySequence::DeleteStartOfWord, QKeySequence::DeleteCompleteLine}) {
        if (event.matches(key))
            return true;
    }
    if (event.matches(QKeySequence::Copy) || event.matches(QKeySequence::SelectAll))
        return false;
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Enter)
        return true;
    // Direction marks, private characters and halves of characters are typed as well, though none counts as printable.
    const QString text = event.text();
    return !text.isEmpty()
        && (text.at(0) == QLatin1Char('\t') || text.at(0).category() != QChar::Other_Control);
}

} // namespace

void TerminalConsole::keyPressEvent(QKeyEvent *event)
{
    if (busy)
        return;

    switch (event->key()) {
    case Qt::Key_Tab:
        tabPressed(event);
        break;
    case Qt::Key_Return:
        returnKeyPressed();
        break;
    case Qt::Key_Backspace:
        backspacePressed(event);
        break;
    case Qt::Key_Home:
    case Qt::Key_Left:
    case Qt::Key_PageUp:
        movedBackward(event);
        break;
    case Qt::Key_End:
    case Qt::Key_Right:
    case Qt::Key_PageDown:
        movedForward(event);
        break;
    case Qt::Key_Up:
        upPressed();
        break;
    case Qt::Key_Down:
        downPressed();
        break;
    default: // the keypad's Enter is one of these: it breaks the line and is not meant to execute
        otherKeyPressed(event);
        break;
    }
    placePopup();
}

bool TerminalConsole::completionChosen()
{
    if (inputMode || !completer->isVisible())
        return false;
    acceptCompletion(completer->currentCompletion());
    return true;
}

void TerminalConsole::tabPressed(QKeyEvent *event)
{
    if (!completionChosen())
        otherKeyPressed(event);
}

void TerminalConsole::returnKeyPressed()
{
    if (completionChosen())
        return;
    moveCursor(QTextCursor::End);
    // Without modifiers: Shift would make it a line separator, which is part of the text and ends nothing.
    QKeyEvent plainReturn(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    KdPlainTextEdit::keyPressEvent(&plainReturn);
    handOver();
}

void TerminalConsole::backspacePressed(QKeyEvent *event)
{
    const bool hadSelection = textCursor().hasSelection();
    if (hadSelection)
        confineToInput();
    QTextCursor cursor = textCursor();
    // Of a selection of earlier output only nothing is left now, and nothing is deleted in its place.
    const bool deletesBackward = !hadSelection && cursor.position() > promptEnd;
    if (deletesBackward && event->modifiers().testFlag(Qt::ControlModifier)) {
        // The editor's word may begin in front of the prompt.
        cursor.movePosition(QTextCursor::PreviousWord, QTextCursor::KeepAnchor);
        cursor.setPosition(qMax(cursor.position(), promptEnd), QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    } else if (deletesBackward || cursor.hasSelection()) {
        KdPlainTextEdit::keyPressEvent(event);
    }
    hideCompletion();
}

void TerminalConsole::movedBackward(QKeyEvent *event)
{
    if (textCursor().position() > promptEnd) {
        KdPlainTextEdit::keyPressEvent(event);
        QTextCursor cursor = textCursor();
        if (cursor.position() < promptEnd) {
            const bool marking = event->modifiers().testFlag(Qt::ShiftModifier);
            cursor.setPosition(promptEnd, marking ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
            setTextCursor(cursor);
        }
    }
    hideCompletion();
}

void TerminalConsole::movedForward(QKeyEvent *event)
{
    KdPlainTextEdit::keyPressEvent(event);
    hideCompletion();
}

void TerminalConsole::upPressed()
{
    if (completer->isVisible()) {
        completer->selectPrevious();
        return;
    }
    if (inputMode)
        return;
    if (historyIndex == history.size() && !history.isEmpty())
        command = textFrom(promptEnd, document()->characterCount() - 1);
    if (historyIndex >= 1) {
        --historyIndex;
        showHistoryEntry();
    }
}

void TerminalConsole::downPressed()
{
    if (completer->isVisible()) {
        completer->selectNext();
        return;
    }
    if (inputMode)
        return;
    if (historyIndex < history.size()) {
        ++historyIndex;
        showHistoryEntry();
    }
}

void TerminalConsole::otherKeyPressed(QKeyEvent *event)
{
    if (isEditingKey(*event))
        confineToInput();
    if (event->key() == Qt::Key_Enter) {
        // As for Return: a line feed, whatever is held down with it.
        QKeyEvent plainEnter(QEvent::KeyPress, Qt::Key_Enter, Qt::KeypadModifier, QStringLiteral("\r"));
        KdPlainTextEdit::keyPressEvent(&plainEnter);
    } else {
        KdPlainTextEdit::keyPressEvent(event);
    }
    updateCompletion();
}

// Completion

void TerminalConsole::findWord()
{
    completionPrefix.clear();
    completionStart = -1;
    const int position = textCursor().position();
    if (position <= promptEnd)
        return;
    const QString input = textFrom(promptEnd, position);
    const int start = command_terminal::wordStart(input);
    completionPrefix = input.mid(start);
    completionStart = promptEnd + start;
}

void TerminalConsole::updateCompletion()
{
    findWord();
    requestCompletion(completionPrefix);
}

void TerminalConsole::acceptCompletion(const QString &completion)
{
    findWord();
    QTextCursor cursor = textCursor();
    const int position = cursor.position();
    if (position >= 1 && position >= promptEnd) {
        cursor.setPosition(completionStart == -1 ? position : completionStart);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        cursor.insertText(completion);
        setTextCursor(cursor);
    }
    hideCompletion();
}

void TerminalConsole::showCompletions(const QStringList &candidates)
{
    completer->showCompletions(candidates);
}

void TerminalConsole::hideCompletion()
{
    completer->hide();
    if (timerId != 0) {
        killTimer(timerId);
        timerId = 0;
    }
    completionStart = -1;
}

void TerminalConsole::placePopup()
{
    if (completionStart == -1)
        return;
    QTextCursor cursor(document());
    // A shorter command of the history may have taken the place of the word.
    cursor.setPosition(qMin(completionStart, document()->characterCount() - 1));
    completer->move(viewport()->mapToGlobal(cursorRect(cursor).bottomLeft() + QPoint(0, PopupGapPixels)));
}

// Mouse, focus and geometry

void TerminalConsole::mousePressEvent(QMouseEvent *)
{
    setFocus(Qt::OtherFocusReason);
}

void TerminalConsole::mouseReleaseEvent(QMouseEvent *event)
{
    // The middle button pastes at the cursor and not under the mouse, where earlier output may stand.
    const QClipboard *clipboard = QGuiApplication::clipboard();
    if (event->button() == Qt::MiddleButton && clipboard->supportsSelection())
        insertFromMimeData(clipboard->mimeData(QClipboard::Selection));
}

void TerminalConsole::mouseDoubleClickEvent(QMouseEvent *)
{
    hideCompletion();
}

void TerminalConsole::contextMenuEvent(QContextMenuEvent *)
{
    hideCompletion();
}

void TerminalConsole::focusOutEvent(QFocusEvent *event)
{
    KdPlainTextEdit::focusOutEvent(event);
    if (!completer->isVisible() || !completer->hasFocusInside())
        hideCompletion();
    else if (timerId == 0)
        timerId = startTimer(PopupWatchMs, Qt::CoarseTimer);
}

void TerminalConsole::moveEvent(QMoveEvent *event)
{
    KdPlainTextEdit::moveEvent(event);
    hideCompletion();
}

void TerminalConsole::resizeEvent(QResizeEvent *event)
{
    KdPlainTextEdit::resizeEvent(event);
    hideCompletion();
}

void TerminalConsole::timerEvent(QTimerEvent *event)
{
    if (timerId == 0 || event->timerId() != timerId) {
        KdPlainTextEdit::timerEvent(event);
        return;
    }
    if (hasFocus()) {
        killTimer(timerId);
        timerId = 0;
    } else if (!completer->hasFocusInside()) {
        hideCompletion();
    }
}

// Text that comes in otherwise than by keys

void TerminalConsole::inputMethodEvent(QInputMethodEvent *event)
{
    if (busy)
        return;
    const bool replaces = event->replacementLength() > 0;
    if (replaces || !event->commitString().isEmpty() || !event->preeditString().isEmpty())
        confineToInput();
    if (!replaces) {
        KdPlainTextEdit::inputMethodEvent(event);
        return;
    }
    // What is replaced counts from the cursor, after the selection went, and may reach over the prompt.
    const QTextCursor cursor = textCursor();
    const int position = cursor.selectionStart();
    const int end = document()->characterCount() - 1 - (cursor.selectionEnd() - position);
    const int from = qBound(promptEnd, position + event->replacementStart(), end);
    const int to = qBound(from, position + event->replacementStart() + event->replacementLength(), end);
    QInputMethodEvent confined(event->preeditString(), event->attributes());
    confined.setCommitString(event->commitString(), from - position, to - from);
    KdPlainTextEdit::inputMethodEvent(&confined);
}

bool TerminalConsole::canInsertFromMimeData(const QMimeData *source) const
{
    return source && !busy && source->hasText();
}

void TerminalConsole::insertFromMimeData(const QMimeData *source)
{
    if (!canInsertFromMimeData(source))
        return;
    confineToInput();
    KdPlainTextEdit::insertFromMimeData(source);
    ensureCursorVisible();
}
