#include "command_terminal/console_text.h"

#include <QTest>

class TestConsoleText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsTrailingWhiteSpace_data();
    void cutsTrailingWhiteSpace();
    void findsTheWordBeforeTheCursor_data();
    void findsTheWordBeforeTheCursor();
};

void TestConsoleText::cutsTrailingWhiteSpace_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("line");

    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("line feed of an empty line") << QStringLiteral("\n") << QString();
    QTest::newRow("one character") << QStringLiteral("a\n") << QStringLiteral("a");
    QTest::newRow("without a line feed") << QStringLiteral("get") << QStringLiteral("get");
    QTest::newRow("line feed") << QStringLiteral("get\n") << QStringLiteral("get");
    QTest::newRow("blanks") << QStringLiteral("get   \n") << QStringLiteral("get");
    QTest::newRow("tabs") << QStringLiteral("get\t\t\n") << QStringLiteral("get");
    QTest::newRow("carriage return") << QStringLiteral("get\r\n") << QStringLiteral("get");
    QTest::newRow("every kind mixed") << QStringLiteral("get \t\r\n \n") << QStringLiteral("get");
    QTest::newRow("line feeds from the keypad") << QStringLiteral("get\n\n\n") << QStringLiteral("get");
    QTest::newRow("white space inside stays") << QStringLiteral("a \t\n b \n") << QStringLiteral("a \t\n b");
    QTest::newRow("leading white space stays") << QStringLiteral("  get\n") << QStringLiteral("  get");
    QTest::newRow("other white space is not cut")
        << QStringLiteral("get\u00a0\n") << QStringLiteral("get\u00a0");
    QTest::newRow("vertical tab is not cut") << QStringLiteral("get\v\n") << QStringLiteral("get\v");
    QTest::newRow("first blank is never examined") << QStringLiteral(" \n") << QStringLiteral(" ");
    QTest::newRow("first of many blanks stays") << QStringLiteral("    \n") << QStringLiteral(" ");
    QTest::newRow("first tab is never examined") << QStringLiteral("\t \n") << QStringLiteral("\t");
    QTest::newRow("first line feed is never examined") << QStringLiteral("\n\n") << QStringLiteral("\n");
}

void TestConsoleText::cutsTrailingWhiteSpace()
{
    QFETCH(QString, input);
    QTEST(command_terminal::handedOverLine(input), "line");
}

void TestConsoleText::findsTheWordBeforeTheCursor_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("word");

    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("one word") << QStringLiteral("get") << QStringLiteral("get");
    QTest::newRow("last of two words") << QStringLiteral("get item") << QStringLiteral("item");
    QTest::newRow("digits, dots and underscores")
        << QStringLiteral("(orb_Client.item2") << QStringLiteral("(orb_Client.item2");
    QTest::newRow("starts with a dot") << QStringLiteral("a .b") << QStringLiteral(".b");
    QTest::newRow("starts with an underscore") << QStringLiteral("a+_b") << QStringLiteral("_b");
    QTest::newRow("letters of any script")
        << QStringLiteral("print(gr\u00f6\u00dfe") << QStringLiteral("gr\u00f6\u00dfe");
    QTest::newRow("digits of any script") << QStringLiteral("a \u0663") << QStringLiteral("\u0663");
    QTest::newRow("behind a separator") << QStringLiteral("get ") << QString();
    QTest::newRow("behind a line feed") << QStringLiteral("get\nit") << QStringLiteral("it");
    QTest::newRow("behind a tab") << QStringLiteral("get\t") << QString();
    QTest::newRow("hyphen separates") << QStringLiteral("a-b") << QStringLiteral("b");
    QTest::newRow("first character is never examined") << QStringLiteral("(ab") << QStringLiteral("(ab");
    QTest::newRow("only separator is the first character") << QStringLiteral(" ab") << QStringLiteral(" ab");
    QTest::newRow("one separator alone") << QStringLiteral("(") << QStringLiteral("(");
    QTest::newRow("second character is examined") << QStringLiteral("a(b") << QStringLiteral("b");
    QTest::newRow("two separators at the start") << QStringLiteral("((b") << QStringLiteral("b");
}

void TestConsoleText::findsTheWordBeforeTheCursor()
{
    QFETCH(QString, input);
    QTEST(input.mid(command_terminal::wordStart(input)), "word");
}

QTEST_APPLESS_MAIN(TestConsoleText)

#include "tst_console_text.moc"
