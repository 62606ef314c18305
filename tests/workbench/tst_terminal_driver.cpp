#include "workbench/app/terminal_driver.h"

#include "workbench/app/python_terminal_driver.h"

#include <QAction>
#include <QPlainTextEdit>
#include <QTest>

namespace
{

class PlainDriver : public workbench::TerminalDriver
{
public:
    using TerminalDriver::TerminalDriver;

    bool isReady() const override { return true; }
    bool prepare(const QString &, QString &) override { return true; }
    bool isBusy() const override { return false; }
    bool waitsForUser() const override { return false; }
    QString obstacle() const override { return {}; }
};

/// A tool with the controls that every terminal has.
struct FakeTool
{
    FakeTool()
    {
        console->setObjectName(QStringLiteral("console"));
        editor->setObjectName(QStringLiteral("editor"));
        widget.addAction(showEditor);
        widget.addAction(executeFile);
    }

    QWidget widget;
    QPlainTextEdit *console = new QPlainTextEdit(&widget);
    QPlainTextEdit *editor = new QPlainTextEdit(&widget);
    QAction *showEditor = new QAction(QStringLiteral("Show Text Editor"), &widget);
    QAction *executeFile = new QAction(QStringLiteral("Execute File"), &widget);
};

} // namespace

/// What the drivers of both terminals share.
class TestTerminalDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void missingControls()
    {
        FakeTool tool;
        QCOMPARE(PlainDriver(tool.widget).missingControl(), QString());
        tool.executeFile->setText(QStringLiteral("Execute"));
        QCOMPARE(PlainDriver(tool.widget).missingControl(), QStringLiteral("Execute File"));
        tool.editor->setObjectName(QString());
        QCOMPARE(PlainDriver(tool.widget).missingControl(), QStringLiteral("editor"));
        tool.console->setObjectName(QString());
        QCOMPARE(PlainDriver(tool.widget).missingControl(), QStringLiteral("console"));
    }

    void aConsoleThatIsNoPythonConsole()
    {
        FakeTool tool;
        QCOMPARE(workbench::PythonTerminalDriver(tool.widget).missingControl(), QStringLiteral("console"));
    }

    void editsEveryCharacter()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        driver.edit(QString::fromLatin1("a\0b\n", 4));
        QCOMPARE(tool.editor->document()->toRawText().size(), 4);
        QVERIFY(!tool.editor->document()->isModified());
    }

    void takesLinesOnce()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        QCOMPARE(driver.takeNewLines(), QString());
        tool.console->insertPlainText(QStringLiteral("one\ntwo\n> "));
        QCOMPARE(driver.takeNewLines(), QStringLiteral("one\ntwo\n"));
        QCOMPARE(driver.takeNewLines(), QString());
        tool.console->insertPlainText(QStringLiteral("three\n> "));
        QCOMPARE(driver.takeNewLines(), QStringLiteral("> three\n"));
        QCOMPARE(driver.lastLine(), QStringLiteral("> "));
    }

    void takesLinesWhileTheOldestAreDropped_data()
    {
        QTest::addColumn<int>("dropped"); // lines
        QTest::addColumn<QString>("taken");
        QTest::newRow("none") << 0 << QStringLiteral("three\nfour\n");
        QTest::newRow("a line that was taken") << 1 << QStringLiteral("three\nfour\n");
        QTest::newRow("all that were taken") << 2 << QStringLiteral("three\nfour\n");
        QTest::newRow("one that was not taken") << 3 << QStringLiteral("four\n");
    }

    void takesLinesWhileTheOldestAreDropped()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        tool.console->insertPlainText(QStringLiteral("one\ntwo\n"));
        QCOMPARE(driver.takeNewLines(), QStringLiteral("one\ntwo\n"));
        tool.console->insertPlainText(QStringLiteral("three\nfour\n"));
        QFETCH(int, dropped);
        QTextCursor cursor(tool.console->document());
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, dropped);
        cursor.removeSelectedText();
        QTEST(driver.takeNewLines(), "taken");
    }

    void takesLinesAfterTheConsoleWasCleared()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        tool.console->insertPlainText(QStringLiteral("one\ntwo\n> "));
        driver.takeNewLines();
        tool.console->clear();
        tool.console->insertPlainText(QStringLiteral("three\n> "));
        QCOMPARE(driver.takeNewLines(), QStringLiteral("three\n"));
    }
};

QTEST_MAIN(TestTerminalDriver)

#include "tst_terminal_driver.moc"
