#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QTest>

#include <functional>
#include <vector>

/// What the user does to the text changes the input only: never the prompt, never what stands before it.
class TestTerminalConsoleOutputGuard : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void earlierOutputStays_data();
    void earlierOutputStays();
    void nothingChangesWhileBusy_data();
    void nothingChangesWhileBusy();
    void changesTheSelectedInput_data();
    void changesTheSelectedInput();
    void copyReachesEarlierOutput();
};

namespace
{

using Action = std::function<void(ProbeConsole &)>;

Action pressing(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](ProbeConsole &target) { target.press(key, modifiers); };
}

/// A key whose text is not the one that the key has by itself.
Action keyText(Qt::Key key, const QString &text, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](ProbeConsole &target) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&target, &event);
    };
}

Action composing(const QString &preedit, const QString &commit, int from = 0, int length = 0)
{
    return [=](ProbeConsole &target) {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit, from, length);
        QApplication::sendEvent(&target, &event);
    };
}

void drop(ProbeConsole &target, Qt::DropAction action, const QPoint &position)
{
    QMimeData dragged;
    dragged.setText(QStringLiteral("dropped"));
    QDragEnterEvent enter(position, action, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target.viewport(), &enter);
    QDragMoveEvent move(position, action, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target.viewport(), &move);
    QDropEvent event(position, action, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target.viewport(), &event);
}

void sendMouse(ProbeConsole &target, QEvent::Type type, const QPoint &position, Qt::MouseButton button,
               Qt::MouseButtons buttons)
{
    QMouseEvent event(type, position, target.viewport()->mapToGlobal(position), button, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(target.viewport(), &event);
}

/// Presses over the first line, drags to its end, releases, and types over what that may have marked.
void dragOverOutput(ProbeConsole &target)
{
    const QPoint from = target.rectAt(1).center();
    const QPoint to = target.rectAt(6).center();
    sendMouse(target, QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    sendMouse(target, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
    sendMouse(target, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

struct Named
{
    const char *name;
    Action act;
};

std::vector<Named> editingActions()
{
    return {
        {"letter", pressing(Qt::Key_X)},
        {"blank", pressing(Qt::Key_Space)},
        {"Tab", pressing(Qt::Key_Tab)},
        {"Shift+Tab", keyText(Qt::Key_Backtab, QStringLiteral("\t"), Qt::ShiftModifier)},
        {"Enter", pressing(Qt::Key_Enter)},
        {"Ctrl+Enter", pressing(Qt::Key_Enter, Qt::ControlModifier)},
        {"Backspace", pressing(Qt::Key_Backspace)},
        {"Shift+Backspace", pressing(Qt::Key_Backspace, Qt::ShiftModifier)},
        {"Ctrl+Backspace", pressing(Qt::Key_Backspace, Qt::ControlModifier)},
        {"Ctrl+Shift+Backspace", pressing(Qt::Key_Backspace, Qt::ControlModifier | Qt::ShiftModifier)},
        {"Alt+Backspace", pressing(Qt::Key_Backspace, Qt::AltModifier)},
        {"Delete", pressing(Qt::Key_Delete)},
        {"Ctrl+Delete", pressing(Qt::Key_Delete, Qt::ControlModifier)},
        {"Shift+Delete", pressing(Qt::Key_Delete, Qt::ShiftModifier)},
        {"Ctrl+X", pressing(Qt::Key_X, Qt::ControlModifier)},
        {"Ctrl+V", pressing(Qt::Key_V, Qt::ControlModifier)},
        {"Shift+Insert", pressing(Qt::Key_Insert, Qt::ShiftModifier)},
        {"Cut key", keyText(Qt::Key_Cut, QString())},
        {"Paste key", keyText(Qt::Key_Paste, QString())},
        {"Ctrl+K", pressing(Qt::Key_K, Qt::ControlModifier)},
        {"Ctrl+U", pressing(Qt::Key_U, Qt::ControlModifier)},
        {"Ctrl+D", pressing(Qt::Key_D, Qt::ControlModifier)},
        {"Ctrl+H", pressing(Qt::Key_H, Qt::ControlModifier)},
        {"Ctrl+W", pressing(Qt::Key_W, Qt::ControlModifier)},
        {"Ctrl+Z", pressing(Qt::Key_Z, Qt::ControlModifier)},
        {"Ctrl+Y", pressing(Qt::Key_Y, Qt::ControlModifier)},
        {"undo key", keyText(Qt::Key_Undo, QString())},
        {"Up", pressing(Qt::Key_Up)},
        {"Down", pressing(Qt::Key_Down)},
        {"AltGr text", keyText(Qt::Key_Q, QStringLiteral("@"), Qt::ControlModifier | Qt::AltModifier)},
        {"private use text", keyText(Qt::Key_unknown, QStringLiteral("\ue000"))},
        {"direction mark text", keyText(Qt::Key_unknown, QStringLiteral("\u200f"))},
        {"no-break blank text", keyText(Qt::Key_unknown, QStringLiteral("\u00a0"))},
        {"non-BMP text", keyText(Qt::Key_unknown, QString::fromUcs4(U"\U0001F600", 1))},
        {"paste slot", [](ProbeConsole &target) { target.paste(); }},
        {"commit", composing(QString(), QStringLiteral("w"))},
        {"preedit and commit",
         [](ProbeConsole &target) {
             composing(QStringLiteral("ni"), QString())(target);
             composing(QString(), QStringLiteral("\u4f60"))(target);
         }},
        {"abandoned preedit",
         [](ProbeConsole &target) {
             composing(QStringLiteral("ni"), QString())(target);
             composing(QString(), QString())(target);
         }},
        {"commit that replaces", composing(QString(), QStringLiteral("w"), -3, 3)},
        {"commit that only removes", composing(QString(), QString(), -4, 4)},
        {"commit that removes far back", composing(QString(), QString(), -100, 50)},
        {"drop", [](ProbeConsole &target) { drop(target, Qt::CopyAction, target.rectAt(4).center()); }},
        {"moving drop", [](ProbeConsole &target) { drop(target, Qt::MoveAction, QPoint(2, 2)); }},
        {"middle click",
         [](ProbeConsole &target) {
             QTest::mouseClick(target.viewport(), Qt::MiddleButton, {}, target.rectAt(4).center());
         }},
        {"drag with the mouse, then type",
         [](ProbeConsole &target) {
             dragOverOutput(target);
             target.type(QStringLiteral("y"));
         }},
        {"triple click, then type",
         [](ProbeConsole &target) {
             const QPoint point = target.rectAt(4).center();
             QTest::mouseClick(target.viewport(), Qt::LeftButton, {}, point);
             QTest::mouseDClick(target.viewport(), Qt::LeftButton, {}, point);
             QTest::mouseClick(target.viewport(), Qt::LeftButton, {}, point);
             target.type(QStringLiteral("y"));
         }},
    };
}

struct NamedStart
{
    const char *name;
    Action place;
};

std::vector<NamedStart> starts()
{
    return {
        {"everything selected", [](ProbeConsole &target) { target.press(Qt::Key_A, Qt::ControlModifier); }},
        {"all but the first character selected, backwards",
         [](ProbeConsole &target) { target.mark(target.toPlainText().size(), 1); }},
        {"output selected", [](ProbeConsole &target) { target.mark(1, 5); }},
        {"prompt selected",
         [](ProbeConsole &target) { target.mark(target.promptEnd - 2, target.promptEnd); }},
        {"cursor in the output", [](ProbeConsole &target) { target.moveTo(4); }},
        {"cursor in the prompt", [](ProbeConsole &target) { target.moveTo(target.promptEnd - 1); }},
        {"cursor behind the prompt", [](ProbeConsole &target) { target.moveTo(target.promptEnd); }},
        {"cursor at the end", [](ProbeConsole &) {}},
    };
}

} // namespace

Q_DECLARE_METATYPE(Action)

void TestTerminalConsoleOutputGuard::init()
{
    QVERIFY(showConsole());
    QGuiApplication::clipboard()->setText(QStringLiteral("clip\nboard"));

    console->enterLine(QStringLiteral("command"));
    console->printText(QStringLiteral("answer of two words\n"));
    console->printError(QStringLiteral("bad"));
    console->printPrompt();
    console->type(QStringLiteral("ab cd"));
}

void TestTerminalConsoleOutputGuard::cleanup()
{
    closeConsole();
}

void TestTerminalConsoleOutputGuard::earlierOutputStays_data()
{
    QTest::addColumn<Action>("place");
    QTest::addColumn<Action>("act");
    for (const NamedStart &start : starts()) {
        for (const Named &action : editingActions())
            QTest::addRow("%s: %s", start.name, action.name) << start.place << action.act;
    }
}

void TestTerminalConsoleOutputGuard::earlierOutputStays()
{
    QFETCH(Action, place);
    QFETCH(Action, act);

    const int promptEnd = console->promptEnd;
    const QString earlier = console->toPlainText().left(promptEnd);
    const QList<QColor> colours = console->coloursOf(0, promptEnd);
    place(*console);
    act(*console);

    QCOMPARE(console->toPlainText().left(promptEnd), earlier);
    QCOMPARE(console->coloursOf(0, promptEnd), colours);
    QCOMPARE(console->promptEnd, promptEnd);

    // And the console goes on: the next line is the input as it now stands.
    console->press(Qt::Key_End, Qt::ControlModifier);
    const QString input = console->input();
    console->executed.clear();
    console->press(Qt::Key_Return);
    QCOMPARE(console->executed.size(), 1);
    QCOMPARE(console->executed.constFirst().trimmed(), input.trimmed());
    QVERIFY(console->toPlainText().startsWith(earlier));
    QVERIFY(console->toPlainText().endsWith(QStringLiteral("\n> ")));
}

void TestTerminalConsoleOutputGuard::nothingChangesWhileBusy_data()
{
    earlierOutputStays_data();
}

void TestTerminalConsoleOutputGuard::nothingChangesWhileBusy()
{
    QFETCH(Action, place);
    QFETCH(Action, act);
    place(*console);
    const QString text = console->toPlainText();
    const int cursor = console->textCursor().position();
    const int anchor = console->textCursor().anchor();
    console->busy = true;
    act(*console);
    QCOMPARE(console->toPlainText(), text);
    QCOMPARE(console->textCursor().position(), cursor);
    QCOMPARE(console->textCursor().anchor(), anchor);
}

void TestTerminalConsoleOutputGuard::changesTheSelectedInput_data()
{
    QTest::addColumn<Action>("act");
    QTest::addColumn<QString>("input");
    QTest::newRow("letter") << pressing(Qt::Key_X) << QStringLiteral("x");
    QTest::newRow("Backspace") << pressing(Qt::Key_Backspace) << QString();
    QTest::newRow("Delete") << pressing(Qt::Key_Delete) << QString();
    QTest::newRow("cut") << pressing(Qt::Key_X, Qt::ControlModifier) << QString();
    QTest::newRow("paste") << pressing(Qt::Key_V, Qt::ControlModifier) << QStringLiteral("clip\nboard");
    QTest::newRow("commit") << composing(QString(), QStringLiteral("w")) << QStringLiteral("w");
    QTest::newRow("private use text")
        << keyText(Qt::Key_unknown, QStringLiteral("\ue000")) << QStringLiteral("\ue000");
}

void TestTerminalConsoleOutputGuard::changesTheSelectedInput()
{
    QFETCH(Action, act);
    console->press(Qt::Key_A, Qt::ControlModifier);
    act(*console);
    QTEST(console->input(), "input");
}

void TestTerminalConsoleOutputGuard::copyReachesEarlierOutput()
{
    console->press(Qt::Key_A, Qt::ControlModifier);
    console->press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), console->toPlainText());
    QVERIFY(console->textCursor().hasSelection());
}

QTEST_MAIN(TestTerminalConsoleOutputGuard)

#include "tst_terminal_console_output_guard.moc"
