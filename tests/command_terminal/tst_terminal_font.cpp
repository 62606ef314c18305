#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_font.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QFontMetrics>
#include <QtTest>

namespace
{

bool isFixed(const QFont &font)
{
    const QFontMetrics metrics(font);
    return metrics.horizontalAdvance(QStringLiteral("iiii"))
        == metrics.horizontalAdvance(QStringLiteral("WWWW"));
}

} // namespace

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
    QVERIFY2(isFixed(font), qPrintable(font.family()));
}

void TestTerminalFont::isTheConsolesAndTheEditors()
{
    TerminalFixture fixture;
    const TerminalConsole console(nullptr, fixture.mainData, fixture.observer);
    const TerminalFileEditor editor(nullptr, nullptr, fixture.mainData, fixture.observer);
    QVERIFY(isFixed(console.font()));
    QVERIFY(isFixed(editor.font()));
}

QTEST_MAIN(TestTerminalFont)
#include "tst_terminal_font.moc"
