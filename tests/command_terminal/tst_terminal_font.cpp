#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_font.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QtTest>

class TestTerminalFont : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isOfFixedPitch();
    void isTheConsolesAndTheEditors();
};

void TestTerminalFont::isOfFixedPitch()
{
    const QFont font = command_terminal::terminalFont();
    QVERIFY2(QFontInfo(font).fixedPitch(), qPrintable(QFontInfo(font).family()));
    const QFontMetrics metrics(font);
    QCOMPARE(metrics.horizontalAdvance(QStringLiteral("iiii")),
             metrics.horizontalAdvance(QStringLiteral("WWWW")));
}

void TestTerminalFont::isTheConsolesAndTheEditors()
{
    TerminalFixture fixture;
    const TerminalConsole console(nullptr, fixture.mainData, fixture.observer);
    const TerminalFileEditor editor(nullptr, nullptr, fixture.mainData, fixture.observer);
    QVERIFY(QFontInfo(console.font()).fixedPitch());
    QVERIFY(QFontInfo(editor.font()).fixedPitch());
}

QTEST_MAIN(TestTerminalFont)
#include "tst_terminal_font.moc"
