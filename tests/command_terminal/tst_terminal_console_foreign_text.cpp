#include "command_terminal/terminal_console.h"

#include "tests/command_terminal/shown_console.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>

/// Text that is pasted, dropped or composed, text of any script, and what the mouse does.
class TestTerminalConsoleForeignText : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void pastedTextBecomesInput_data();
    void pastedTextBecomesInput();
    void pastedTextHasTheColoursOfTheConsole();
    void onlyTextIsPasted();
    void pasteGoesToTheCursor_data();
    void pasteGoesToTheCursor();
    void dropGoesToTheInput_data();
    void dropGoesToTheInput();
    void composedTextBecomesInput();
    void composedTextReplacesWithinTheInput_data();
    void composedTextReplacesWithinTheInput();
    void composedTextAsksForNoCompletion();
    void backspaceTakesWholeCharacters();

    void promptStaysAtTheLeft_data();
    void promptStaysAtTheLeft();
    void promptStaysAtTheLeftAfterPastedLines();
    void promptStaysAtTheLeftAfterRightToLeftOutput();

    void pressOnlyGivesFocus_data();
    void pressOnlyGivesFocus();
    void pressGivesFocusForNoReasonOfItsOwn();
    void draggingMarksNothing();
    void doubleClickMarksNothing();

private:
    void paste(const QString &text);
    void checkPromptAtTheLeft();
};

namespace
{

const QString Hebrew = QStringLiteral("\u05e9\u05dc\u05d5\u05dd");
const QString Arabic = QStringLiteral("\u0645\u0631\u062d\u0628\u0627");
const QString Smiley = QString::fromUcs4(U"\U0001F600", 1);

} // namespace

void TestTerminalConsoleForeignText::init()
{
    QVERIFY(showConsole());
}

void TestTerminalConsoleForeignText::cleanup()
{
    closeConsole();
}

void TestTerminalConsoleForeignText::paste(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
    console->press(Qt::Key_V, Qt::ControlModifier);
}

void TestTerminalConsoleForeignText::pastedTextBecomesInput_data()
{
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("line"); // as it is handed over

    const auto same = [](const char *name, const QString &text) { QTest::newRow(name) << text << text; };
    same("plain", QStringLiteral("getItem"));
    same("line feed", QStringLiteral("one\ntwo"));
    same("many line feeds", QStringLiteral("\none\n\n\ntwo"));
    QTest::newRow("carriage return and line feed")
        << QStringLiteral("one\r\ntwo\r\n") << QStringLiteral("one\ntwo");
    QTest::newRow("carriage return") << QStringLiteral("one\rtwo") << QStringLiteral("one\ntwo");
    QTest::newRow("paragraph separator") << QStringLiteral("one\u2029two") << QStringLiteral("one\ntwo");
    same("line separator", QStringLiteral("one\u2028two"));
    same("no-break blank", QStringLiteral("one\u00a0two"));
    same("tabs", QStringLiteral("one\ttwo"));
    same("non-BMP characters", Smiley + QStringLiteral("a") + Smiley);
    same("half a character", QString(QChar(0xd83d)) + QStringLiteral("a"));
    same("right-to-left text", Hebrew + QLatin1Char(' ') + Arabic);
    same("direction marks", QStringLiteral("\u202ea\u202c\u200fb"));
    same("combining marks", QStringLiteral("e\u0301\u0327\u0327"));
    same("NUL", QStringLiteral("one") + QChar(0) + QStringLiteral("two"));
    same("control characters", QStringLiteral("a\u0001\u001b[31mb\u007f"));
    same("object replacement", QStringLiteral("a\ufffcb"));
    same("prompts",
         QStringLiteral("> > ? . "
                        "x"));
    same("mark-up", QStringLiteral("<b>bold</b> &amp;"));
    same("very long", QStringLiteral("0123456789").repeated(5000));
    same("many lines", QStringLiteral("line\n").repeated(2000) + QStringLiteral("end"));
}

void TestTerminalConsoleForeignText::pastedTextBecomesInput()
{
    QFETCH(QString, pasted);
    console->enterLine(QStringLiteral("first"));
    const QString earlier = console->toPlainText();
    const int promptEnd = console->promptEnd;
    paste(pasted);

    QCOMPARE(console->promptEnd, promptEnd);
    QVERIFY(console->toPlainText().startsWith(earlier));
    QVERIFY(console->textCursor().atEnd());
    checkPromptAtTheLeft();
    QCOMPARE(console->executed.size(), 1); // nothing runs before Return

    console->press(Qt::Key_Return);
    QCOMPARE(console->executed.size(), 2);
    QTEST(console->executed.constLast(), "line");
    QCOMPARE(console->history.constLast(), console->executed.constLast());
    QVERIFY(console->toPlainText().startsWith(earlier));
    QVERIFY(console->toPlainText().endsWith(QStringLiteral("\n> ")));

    console->press(Qt::Key_Up); // and back out of the history as it went in
    console->press(Qt::Key_Return);
    QTEST(console->executed.constLast(), "line");
    QCOMPARE(console->history.size(), 2);
}

void TestTerminalConsoleForeignText::pastedTextHasTheColoursOfTheConsole()
{
    auto *both = new QMimeData;
    both->setHtml(QStringLiteral("<p style='color:#0000ff;font-size:40pt'>blue</p><p>line</p>"));
    both->setText(QStringLiteral("blue\nline"));
    QGuiApplication::clipboard()->setMimeData(both); // which owns it from here on
    console->printError(QStringLiteral("bad"));
    console->printPrompt();
    console->press(Qt::Key_V, Qt::ControlModifier);
    console->type(QStringLiteral("x"));
    console->printText(QStringLiteral("y"));
    QCOMPARE(console->input(), QStringLiteral("blue\nlinexy"));
    QCOMPARE(console->coloursOf(console->promptEnd, 11), QList<QColor>{Qt::white});
}

void TestTerminalConsoleForeignText::onlyTextIsPasted()
{
    auto *picture = new QMimeData;
    picture->setImageData(QImage(3, 3, QImage::Format_RGB32));
    QGuiApplication::clipboard()->setMimeData(picture); // which owns it from here on
    console->press(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(console->toPlainText(), QStringLiteral("> "));
    QVERIFY(!console->canPaste());
}

void TestTerminalConsoleForeignText::pasteGoesToTheCursor_data()
{
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QString>("input");
    QTest::newRow("inside the input") << 3 << QStringLiteral("aXYb");
    QTest::newRow("right behind the prompt") << 2 << QStringLiteral("XYab");
    QTest::newRow("in the prompt") << 1 << QStringLiteral("abXY");
    QTest::newRow("at the very start") << 0 << QStringLiteral("abXY");
}

void TestTerminalConsoleForeignText::pasteGoesToTheCursor()
{
    QFETCH(int, cursor);
    console->type(QStringLiteral("ab"));
    console->moveTo(cursor);
    paste(QStringLiteral("XY"));
    QTEST(console->input(), "input");
}

void TestTerminalConsoleForeignText::dropGoesToTheInput_data()
{
    QTest::addColumn<int>("at"); // document position under the mouse
    QTest::addColumn<QString>("text");
    QTest::newRow("over earlier output") << 4 << QStringLiteral("> first\n> abXY");
    QTest::newRow("over the prompt") << 9 << QStringLiteral("> first\n> abXY");
    QTest::newRow("inside the input") << 11 << QStringLiteral("> first\n> aXYb");
    QTest::newRow("behind the input") << 12 << QStringLiteral("> first\n> abXY");
}

void TestTerminalConsoleForeignText::dropGoesToTheInput()
{
    QFETCH(int, at);
    console->enterLine(QStringLiteral("first"));
    console->type(QStringLiteral("ab"));
    QMimeData dragged;
    dragged.setText(QStringLiteral("XY"));
    const QPoint position(console->rectAt(at).left(), console->rectAt(at).center().y());
    QDragEnterEvent enter(position, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(console->viewport(), &enter);
    QDropEvent drop(position, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(console->viewport(), &drop);
    QTEST(console->toPlainText(), "text");
}

void TestTerminalConsoleForeignText::composedTextBecomesInput()
{
    console->type(QStringLiteral("a"));
    QInputMethodEvent composing(QStringLiteral("ni"), {});
    QApplication::sendEvent(console.get(), &composing);
    QCOMPARE(console->input(), QStringLiteral("a"));
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("\u4f60"));
    QApplication::sendEvent(console.get(), &composed);
    QCOMPARE(console->input(), QStringLiteral("a\u4f60"));
    QCOMPARE(console->coloursOf(console->promptEnd, 2), QList<QColor>{Qt::white});
    console->press(Qt::Key_Return);
    QCOMPARE(console->executed, QStringList{QStringLiteral("a\u4f60")});
}

void TestTerminalConsoleForeignText::composedTextReplacesWithinTheInput_data()
{
    QTest::addColumn<int>("from"); // counts from the cursor
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("text");
    QTest::newRow("before the cursor") << -2 << 1 << QStringLiteral("> abXd");
    QTest::newRow("up to the cursor") << -2 << 2 << QStringLiteral("> abX");
    QTest::newRow("past the end") << -1 << 5 << QStringLiteral("> abcX");
    QTest::newRow("from before the prompt") << -6 << 3 << QStringLiteral("> Xbcd");
    QTest::newRow("all before the prompt") << -6 << 1 << QStringLiteral("> Xabcd");
}

void TestTerminalConsoleForeignText::composedTextReplacesWithinTheInput()
{
    QFETCH(int, from);
    QFETCH(int, length);
    console->type(QStringLiteral("abcdef"));
    console->mark(console->promptEnd + 6, console->promptEnd + 4); // what is marked goes first
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("X"), from, length);
    QApplication::sendEvent(console.get(), &composed);
    QTEST(console->toPlainText(), "text");
}

void TestTerminalConsoleForeignText::composedTextAsksForNoCompletion()
{
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("word"));
    QApplication::sendEvent(console.get(), &composed);
    QCOMPARE(console->requested, QStringList()); // keys ask; this is none
    console->type(QStringLiteral("s"));
    QCOMPARE(console->requested, QStringList{QStringLiteral("words")});
}

void TestTerminalConsoleForeignText::backspaceTakesWholeCharacters()
{
    paste(QStringLiteral("a") + Smiley);
    console->press(Qt::Key_Backspace);
    QCOMPARE(console->input(), QStringLiteral("a"));
    console->press(Qt::Key_Backspace);
    console->press(Qt::Key_Backspace);
    QCOMPARE(console->toPlainText(), QStringLiteral("> "));
}

// Right-to-left text leaves the prompt where it is

void TestTerminalConsoleForeignText::checkPromptAtTheLeft()
{
    const QTextBlock line = console->document()->findBlock(console->promptEnd - 2);
    QCOMPARE(line.textDirection(), Qt::LeftToRight);
    // From the left edge: a blank margin, then the two characters of the prompt.
    const int left = qRound(console->document()->documentMargin());
    const int width = console->fontMetrics().horizontalAdvance(QLatin1Char('>'));
    QCOMPARE(console->rectAt(line.position()).left() + console->horizontalScrollBar()->value(), left);
    const int second = console->rectAt(line.position() + 1).left() + console->horizontalScrollBar()->value();
    QVERIFY2(qAbs(second - left - width) <= 1, qPrintable(QString::number(second)));
}

void TestTerminalConsoleForeignText::promptStaysAtTheLeft_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("Hebrew") << Hebrew;
    QTest::newRow("Arabic") << Arabic;
    QTest::newRow("direction mark") << QStringLiteral("\u200f");
    QTest::newRow("override") << QStringLiteral("\u202eabc");
    QTest::newRow("mixed") << Hebrew + QStringLiteral(" abc 12");
}

void TestTerminalConsoleForeignText::promptStaysAtTheLeft()
{
    QFETCH(QString, text);
    paste(text);
    checkPromptAtTheLeft();
    console->press(Qt::Key_Return);
    console->press(Qt::Key_Up);
    QCOMPARE(console->input(), text);
    checkPromptAtTheLeft();
    console->removeInput();
    for (const QChar c : std::as_const(text)) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(console.get(), &event);
    }
    QCOMPARE(console->input(), text);
    checkPromptAtTheLeft();
}

void TestTerminalConsoleForeignText::promptStaysAtTheLeftAfterPastedLines()
{
    paste(Hebrew + QStringLiteral("\nabc\n") + Arabic);
    checkPromptAtTheLeft();
    console->press(Qt::Key_Return);
    paste(Hebrew);
    checkPromptAtTheLeft();
    console->press(Qt::Key_Enter);
    console->press(Qt::Key_Return);
    console->clearConsole(QString());
    paste(Hebrew);
    checkPromptAtTheLeft();
}

void TestTerminalConsoleForeignText::promptStaysAtTheLeftAfterRightToLeftOutput()
{
    console->printText(QLatin1Char('\n') + Hebrew + QLatin1Char('\n') + Arabic + QLatin1Char('\n'));
    console->printError(Hebrew);
    console->printPrompt();
    console->printErrorAbovePrompt(Arabic + QLatin1Char('\n') + Hebrew);
    checkPromptAtTheLeft();
    paste(Hebrew);
    checkPromptAtTheLeft();
}

// Mouse

void TestTerminalConsoleForeignText::pressOnlyGivesFocus_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int{Qt::LeftButton};
    QTest::newRow("middle") << int{Qt::MiddleButton};
    QTest::newRow("right") << int{Qt::RightButton};
}

void TestTerminalConsoleForeignText::pressOnlyGivesFocus()
{
    QFETCH(int, button);
    const auto pressed = static_cast<Qt::MouseButton>(button);
    console->enterLine(QStringLiteral("first"));
    console->type(QStringLiteral("input"));
    console->clearFocus();
    QVERIFY(!console->hasFocus());
    QTest::mousePress(console->viewport(), pressed, {}, console->rectAt(3).center());
    QVERIFY(console->hasFocus());
    QTest::mouseRelease(console->viewport(), pressed, {}, console->rectAt(5).center());
    QCOMPARE(console->cursorInInput(), 5);
    QVERIFY(!console->textCursor().hasSelection());
    QCOMPARE(console->toPlainText(), QStringLiteral("> first\n> input"));
}

void TestTerminalConsoleForeignText::pressGivesFocusForNoReasonOfItsOwn()
{
    // Handed to the console itself: on the way through the application a click gives the focus already.
    console->clearFocus();
    QMouseEvent press(QEvent::MouseButtonPress, QPoint(5, 5), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    console->mousePressEvent(&press);
    QVERIFY(console->hasFocus());
    QCOMPARE(console->focusReason, Qt::OtherFocusReason);
}

void TestTerminalConsoleForeignText::draggingMarksNothing()
{
    console->enterLine(QStringLiteral("first"));
    console->type(QStringLiteral("input"));
    const auto send = [&](QEvent::Type type, int at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        const QPoint position = console->rectAt(at).center();
        QMouseEvent event(type, position, console->viewport()->mapToGlobal(position), button, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(console->viewport(), &event);
    };
    send(QEvent::MouseButtonPress, 1, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, 3, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseMove, 6, Qt::NoButton, Qt::LeftButton);
    QVERIFY(!console->textCursor().hasSelection());
    QCOMPARE(console->cursorInInput(), 5);
    send(QEvent::MouseButtonRelease, 6, Qt::LeftButton, Qt::NoButton);
    QVERIFY(!console->textCursor().hasSelection());
    QCOMPARE(console->cursorInInput(), 5);
}

void TestTerminalConsoleForeignText::doubleClickMarksNothing()
{
    console->enterLine(QStringLiteral("first"));
    console->type(QStringLiteral("input"));
    QTest::mouseClick(console->viewport(), Qt::LeftButton, {}, console->rectAt(4).center());
    QTest::mouseDClick(console->viewport(), Qt::LeftButton, {}, console->rectAt(4).center());
    QVERIFY(!console->textCursor().hasSelection());
    QCOMPARE(console->cursorInInput(), 5);
}

QTEST_MAIN(TestTerminalConsoleForeignText)

#include "tst_terminal_console_foreign_text.moc"
