#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/probe_console.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <functional>
#include <memory>

/// The word before the cursor, the popup that completes it, and what closes it.
class TestTerminalConsoleCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void asksWithTheWordBeforeTheCursor_data();
    void asksWithTheWordBeforeTheCursor();
    void asksWithNothingBeforeTheInput();
    void acceptReplacesTheWord_data();
    void acceptReplacesTheWord();
    void acceptKeepsTextBehindTheCursor();
    void acceptBeforeTheInputOnlyCloses_data();
    void acceptBeforeTheInputOnlyCloses();
    void acceptWithoutEntryRemovesTheWord();
    void showPassesCandidatesOn();

    void popupStandsBelowTheWord_data();
    void popupStandsBelowTheWord();
    void popupStandsWithinTheText();
    void popupStaysWithoutCompletion();
    void popupFollowsOutputAboveThePrompt();

    void mouseAndGeometryClose_data();
    void mouseAndGeometryClose();
    void hideCompletionEndsTheWatch();
    void losingTheFocusCloses();
    void losingTheFocusToThePopupStartsTheWatch();
    void watchEndsWhenTheConsoleHasTheFocusAgain();
    void watchClosesWhenTheFocusIsElsewhere();

private:
    void complete();
    void giveFocusToPopup();
    QList<QAbstractEventDispatcher::TimerInfo> watchTimers() const;

    std::unique_ptr<TerminalFixture> host;
    std::unique_ptr<QWidget> window;
    ProbeConsole *console = nullptr; // owned by the window
    QLineEdit *elsewhere = nullptr; // owned by the window
};

void TestTerminalConsoleCompletion::init()
{
    host = std::make_unique<TerminalFixture>();
    window = std::make_unique<QWidget>();
    console = new ProbeConsole(*host);
    elsewhere = new QLineEdit;
    auto *layout = new QVBoxLayout(window.get());
    layout->addWidget(console);
    layout->addWidget(elsewhere);
    window->resize(500, 300);
    window->show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    console->setFocus();
    QVERIFY(console->hasFocus());
}

void TestTerminalConsoleCompletion::cleanup()
{
    window.reset();
    host.reset();
}

/// A word is typed and the popup is open below it.
void TestTerminalConsoleCompletion::complete()
{
    console->candidates = QStringList{QStringLiteral("getItem"), QStringLiteral("getStatus")};
    console->type(QStringLiteral("get"));
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completionStart, console->promptEnd);
}

void TestTerminalConsoleCompletion::giveFocusToPopup()
{
    // As a window system would that gives a popup the focus all the same.
    console->completer->findChild<QWidget *>()->setFocus();
    QApplication::setActiveWindow(console->completer);
    QVERIFY(console->completer->hasFocusInside());
    QVERIFY(!console->hasFocus());
}

QList<QAbstractEventDispatcher::TimerInfo> TestTerminalConsoleCompletion::watchTimers() const
{
    return QAbstractEventDispatcher::instance()->registeredTimers(console);
}

void TestTerminalConsoleCompletion::asksWithTheWordBeforeTheCursor_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("requested");
    QTest::addColumn<int>("start"); // from the end of the prompt
    QTest::newRow("every key asks") << QStringLiteral(
        "get") << QStringList{QStringLiteral("g"), QStringLiteral("ge"), QStringLiteral("get")}
                                    << 0;
    QTest::newRow("after a separator")
        << QStringLiteral("a b") << QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")} << 2;
    QTest::newRow("dots and digits belong to the word")
        << QStringLiteral("a.1_")
        << QStringList{QStringLiteral("a"), QStringLiteral("a."), QStringLiteral("a.1"),
                       QStringLiteral("a.1_")}
        << 0;
    QTest::newRow("first character is never examined")
        << QStringLiteral("(a") << QStringList{QStringLiteral("("), QStringLiteral("(a")} << 0;
    QTest::newRow("second character is examined")
        << QStringLiteral("a(b") << QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")} << 2;
}

void TestTerminalConsoleCompletion::asksWithTheWordBeforeTheCursor()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, requested);
    QFETCH(int, start);
    console->type(typed);
    QCOMPARE(console->requested, requested);
    QCOMPARE(console->completionPrefix, requested.constLast());
    QCOMPARE(console->completionStart, console->promptEnd + start);
}

void TestTerminalConsoleCompletion::asksWithNothingBeforeTheInput()
{
    console->type(QStringLiteral("get"));
    for (const int position : {console->promptEnd, 1, 0}) {
        console->requested.clear();
        console->moveTo(position);
        console->press(Qt::Key_Escape);
        QCOMPARE(console->requested, QStringList{QString()});
        QCOMPARE(console->completionStart, -1);
    }
}

void TestTerminalConsoleCompletion::acceptReplacesTheWord_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("input");
    QTest::newRow("whole input") << QStringLiteral("get") << QStringLiteral("getItem");
    QTest::newRow("last word") << QStringLiteral("get it") << QStringLiteral("get getItem");
    QTest::newRow("behind a separator") << QStringLiteral("get ") << QStringLiteral("get getItem");
    QTest::newRow("first separator is part of it") << QStringLiteral("(get") << QStringLiteral("getItem");
    QTest::newRow("second separator is not") << QStringLiteral("a(get") << QStringLiteral("a(getItem");
    QTest::newRow("nothing typed") << QString() << QStringLiteral("getItem");
}

void TestTerminalConsoleCompletion::acceptReplacesTheWord()
{
    QFETCH(QString, typed);
    console->type(typed);
    console->showCompletions({QStringLiteral("getItem")});
    console->press(Qt::Key_Tab);
    QTEST(console->input(), "input");
    QCOMPARE(console->cursorInInput(), console->input().size());
    QCOMPARE(console->coloursOf(0, console->toPlainText().size()), QList<QColor>{Qt::white});
    QVERIFY(!console->isPopupOpen());
    QCOMPARE(console->completionStart, -1);
}

void TestTerminalConsoleCompletion::acceptKeepsTextBehindTheCursor()
{
    console->type(QStringLiteral("a ge end"));
    console->moveTo(console->promptEnd + 4);
    console->showCompletions({QStringLiteral("getItem")});
    console->press(Qt::Key_Return);
    QCOMPARE(console->input(), QStringLiteral("a getItem end"));
    QCOMPARE(console->cursorInInput(), 9);
    QVERIFY(console->executed.isEmpty());
}

void TestTerminalConsoleCompletion::acceptBeforeTheInputOnlyCloses_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("promptEnd");
    QTest::newRow("in the prompt") << 1 << 2;
    QTest::newRow("in earlier output") << 4 << 8;
    QTest::newRow("at the very start") << 0 << 0;
}

void TestTerminalConsoleCompletion::acceptBeforeTheInputOnlyCloses()
{
    QFETCH(int, position);
    QFETCH(int, promptEnd);
    console->type(QStringLiteral("get item"));
    console->promptEnd = promptEnd;
    console->showCompletions({QStringLiteral("getItem")});
    console->moveTo(position);
    console->acceptCompletion(QStringLiteral("getItem"));
    QCOMPARE(console->toPlainText(), QStringLiteral("> get item"));
    QVERIFY(!console->isPopupOpen());
    QCOMPARE(console->completionStart, -1);
}

void TestTerminalConsoleCompletion::acceptWithoutEntryRemovesTheWord()
{
    console->type(QStringLiteral("get it"));
    console->completer->show();
    QCOMPARE(console->completer->currentCompletion(), QString());
    console->press(Qt::Key_Tab);
    QCOMPARE(console->input(), QStringLiteral("get "));
    QVERIFY(!console->isPopupOpen());
}

void TestTerminalConsoleCompletion::showPassesCandidatesOn()
{
    console->showCompletions({QStringLiteral("b"), QStringLiteral("a")});
    QVERIFY(console->isPopupOpen());
    QVERIFY(console->hasFocus()); // the popup never takes it
    QCOMPARE(console->completer->currentCompletion(), QStringLiteral("b"));
    console->completer->selectNext();
    QCOMPARE(console->completer->currentCompletion(), QStringLiteral("a"));
    console->showCompletions({});
    QVERIFY(!console->isPopupOpen());
}

// Where the popup stands

void TestTerminalConsoleCompletion::popupStandsBelowTheWord_data()
{
    QTest::addColumn<QString>("earlier");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<Qt::Key>("lastKey");
    QTest::newRow("at the prompt") << QString() << QStringLiteral("get") << Qt::Key_T;
    QTest::newRow("third word") << QString() << QStringLiteral("a bcd get") << Qt::Key_T;
    QTest::newRow("walking down in it") << QString() << QStringLiteral("a get") << Qt::Key_Down;
    QTest::newRow("walking up in it") << QString() << QStringLiteral("a get") << Qt::Key_Up;
    QTest::newRow("scrolled") << QStringLiteral("line\n").repeated(100) << QStringLiteral("a get")
                              << Qt::Key_T;
}

void TestTerminalConsoleCompletion::popupStandsBelowTheWord()
{
    QFETCH(QString, earlier);
    QFETCH(QString, typed);
    QFETCH(Qt::Key, lastKey);
    console->printText(earlier);
    console->printPrompt();
    console->candidates = QStringList{QStringLiteral("getItem")};
    console->type(typed);
    console->completer->move(1, 1);
    console->press(lastKey);
    const QPoint corner = console->rectAt(console->completionStart).bottomLeft();
    const QPoint expected = console->viewport()->mapToGlobal(QPoint(corner.x(), corner.y() + 10));
    QCOMPARE(console->completer->pos(), expected);
    QVERIFY(expected != QPoint(1, 1));
}

void TestTerminalConsoleCompletion::popupStandsWithinTheText()
{
    // An older command that is shorter than what is being completed.
    console->enterLine(QStringLiteral("a"));
    console->type(QStringLiteral("a much longer line"));
    console->press(Qt::Key_Up);
    QCOMPARE(console->input(), QStringLiteral("a"));
    const QPoint corner = console->cursorRect().bottomLeft();
    QCOMPARE(console->completer->pos(),
             console->viewport()->mapToGlobal(QPoint(corner.x(), corner.y() + 10)));
}

void TestTerminalConsoleCompletion::popupStaysWithoutCompletion()
{
    complete();
    console->completer->move(1, 1);
    console->press(Qt::Key_Left);
    QCOMPARE(console->completionStart, -1);
    QCOMPARE(console->completer->pos(), QPoint(1, 1));
}

void TestTerminalConsoleCompletion::popupFollowsOutputAboveThePrompt()
{
    complete();
    console->printErrorAbovePrompt(QStringLiteral("one\ntwo"));
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completionStart, console->promptEnd);
    const QPoint corner = console->rectAt(console->promptEnd).bottomLeft();
    QCOMPARE(console->completer->pos(),
             console->viewport()->mapToGlobal(QPoint(corner.x(), corner.y() + 10)));
    console->press(Qt::Key_Tab);
    QCOMPARE(console->toPlainText(), QStringLiteral("one\ntwo\n> getItem"));
}

// What closes it

using Action = std::function<void(ProbeConsole &)>;
Q_DECLARE_METATYPE(Action)

void TestTerminalConsoleCompletion::mouseAndGeometryClose_data()
{
    QTest::addColumn<Action>("act");
    QTest::addColumn<bool>("open");
    QTest::newRow("double-click") << Action([](ProbeConsole &target) {
        QTest::mouseDClick(target.viewport(), Qt::LeftButton, {}, QPoint(30, 5));
    }) << false;
    QTest::newRow("context menu") << Action([](ProbeConsole &target) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5));
        QApplication::sendEvent(target.viewport(), &event);
    }) << false;
    QTest::newRow("context menu by key") << Action([](ProbeConsole &target) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5));
        QApplication::sendEvent(&target, &event);
    }) << false;
    QTest::newRow("move") << Action([](ProbeConsole &target) { target.move(3, 3); }) << false;
    QTest::newRow("resize") << Action([](ProbeConsole &target) { target.resize(300, 100); }) << false;
    QTest::newRow("hideCompletion") << Action([](ProbeConsole &target) { target.hideCompletion(); }) << false;
    QTest::newRow("press leaves it") << Action([](ProbeConsole &target) {
        QTest::mouseClick(target.viewport(), Qt::LeftButton, {}, QPoint(30, 5));
    }) << true;
}

void TestTerminalConsoleCompletion::mouseAndGeometryClose()
{
    QFETCH(Action, act);
    QFETCH(bool, open);
    complete();
    act(*console);
    QCOMPARE(console->isPopupOpen(), open);
    QCOMPARE(console->completionStart, open ? console->promptEnd : -1);
    QCOMPARE(QApplication::activePopupWidget(), nullptr); // no menu
    QVERIFY(!console->textCursor().hasSelection());
    QCOMPARE(console->cursorInInput(), 3);
}

void TestTerminalConsoleCompletion::hideCompletionEndsTheWatch()
{
    complete();
    giveFocusToPopup();
    QVERIFY(console->timerId != 0);
    console->hideCompletion();
    QCOMPARE(console->timerId, 0);
    QVERIFY(watchTimers().isEmpty());
    QVERIFY(!console->isPopupOpen());
    QCOMPARE(console->completionStart, -1);
}

void TestTerminalConsoleCompletion::losingTheFocusCloses()
{
    complete();
    elsewhere->setFocus();
    QVERIFY(!console->isPopupOpen());
    QCOMPARE(console->completionStart, -1);
    QCOMPARE(console->timerId, 0);
    QVERIFY(watchTimers().isEmpty());
}

void TestTerminalConsoleCompletion::losingTheFocusToThePopupStartsTheWatch()
{
    complete();
    giveFocusToPopup();
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completionStart, console->promptEnd);

    const QList<QAbstractEventDispatcher::TimerInfo> timers = watchTimers();
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst().timerId, console->timerId);
    QCOMPARE(timers.constFirst().interval, 200);
    QCOMPARE(timers.constFirst().timerType, Qt::CoarseTimer);

    QTRY_VERIFY(console->ticks >= 2); // it keeps running as long as the popup has the focus
    QVERIFY(console->isPopupOpen());
    QVERIFY(console->timerId != 0);
}

void TestTerminalConsoleCompletion::watchEndsWhenTheConsoleHasTheFocusAgain()
{
    complete();
    giveFocusToPopup();
    console->setFocus();
    window->activateWindow();
    QTRY_VERIFY(console->hasFocus());
    QTRY_COMPARE(console->timerId, 0);
    QVERIFY(watchTimers().isEmpty());
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->completionStart, console->promptEnd);
    console->press(Qt::Key_Tab);
    QCOMPARE(console->input(), QStringLiteral("getItem"));
}

void TestTerminalConsoleCompletion::watchClosesWhenTheFocusIsElsewhere()
{
    complete();
    giveFocusToPopup();
    elsewhere->setFocus();
    window->activateWindow();
    QTRY_VERIFY(elsewhere->hasFocus());
    QTRY_VERIFY(!console->isPopupOpen());
    QCOMPARE(console->timerId, 0);
    QVERIFY(watchTimers().isEmpty());
    QCOMPARE(console->completionStart, -1);
}

QTEST_MAIN(TestTerminalConsoleCompletion)

#include "tst_terminal_console_completion.moc"
