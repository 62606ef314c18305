#include "workbench/app/terminal_driver.h"

#include "workbench/app/python_terminal_driver.h"

#include <QAction>
#include <QKeyEvent>
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
        widget.addAction(clearTerminal);
    }

    QWidget widget;
    QPlainTextEdit *console = new QPlainTextEdit(&widget);
    QPlainTextEdit *editor = new QPlainTextEdit(&widget);
    QAction *showEditor = new QAction(QStringLiteral("Show Text Editor"), &widget);
    QAction *executeFile = new QAction(QStringLiteral("Execute File"), &widget);
    QAction *clearTerminal = new QAction(QStringLiteral("Clear Terminal"), &widget);
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
        tool.clearTerminal->setText(QStringLiteral("Clear"));
        QCOMPARE(PlainDriver(tool.widget).missingControl(), QStringLiteral("Clear Terminal"));
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

    void tellsLinesByTheirColour()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        const auto insert = [&tool](Qt::GlobalColor colour, const char *text) {
            QTextCharFormat format;
            format.setForeground(QColor(colour));
            tool.console->textCursor().insertText(QLatin1String(text), format);
        };
        insert(Qt::white, "> typed\n");
        insert(Qt::green, "answer\n");
        insert(Qt::red, "refusal\n");
        insert(Qt::white, "\n> ");
        const QVector<workbench::TerminalLine> lines = driver.takeLines();
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines.at(0).kind, workbench::TerminalLine::Plain);
        QCOMPARE(lines.at(0).text, QStringLiteral("> typed"));
        QCOMPARE(lines.at(1).kind, workbench::TerminalLine::Success);
        QCOMPARE(lines.at(2).kind, workbench::TerminalLine::Error);
        QCOMPARE(lines.at(2).text, QStringLiteral("refusal"));
        QCOMPARE(lines.at(3).kind, workbench::TerminalLine::Plain);
        QCOMPARE(driver.takeLines().size(), 0);
    }

    void clears()
    {
        FakeTool tool;
        PlainDriver driver(tool.widget);
        connect(tool.clearTerminal, &QAction::triggered, tool.console,
                [&tool] { tool.console->setPlainText(QStringLiteral("banner\n> ")); });
        tool.console->insertPlainText(QStringLiteral("one\n> "));
        driver.clear();
        QCOMPARE(driver.takeNewLines(), QString());
        tool.console->moveCursor(QTextCursor::End);
        tool.console->insertPlainText(QStringLiteral("two\n> "));
        QCOMPARE(driver.takeNewLines(), QStringLiteral("> two\n"));
    }

    void pressesTheKeysThatStop()
    {
        struct Tool : QWidget
        {
            void keyPressEvent(QKeyEvent *event) override
            {
                keys = QKeySequence(int(event->modifiers()) | event->key());
            }
            QKeySequence keys;
        };
        Tool widget;
        PlainDriver driver(widget);
        driver.stop();
        QCOMPARE(widget.keys, QKeySequence(QStringLiteral("Ctrl+C")));
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
