#include "tests/docs/guide_example.h"
#include "tests/workbench/real_workbench.h"
#include "workbench/app/command_terminal_driver.h"
#include "workbench/app/python_terminal_driver.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

Q_DECLARE_METATYPE(GuideExample)

/// What the guides show is what the terminals do: each example in a workbench of its own, in the real tools.
class TestGuides : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void examples_data();
    void examples();
    void faultyPages_data();
    void faultyPages();
    void transcripts_data();
    void transcripts();

private:
    static QString textOf(const QString &page);
};

namespace
{

constexpr int Patience = 20000; // ms

/// What run_page.sh is given: by docs, by the tests of the rehearsal and by those of the package.
ShellBlocks shellBlocksOf(const QString &page)
{
    static const QStringList run{QStringLiteral("README.md"), QStringLiteral("docs/workbench.md"),
                                 QStringLiteral("docs/rehearsing.md"), QStringLiteral("docs/installing.md")};
    return run.contains(page) ? ShellBlocks::Executed : ShellBlocks::Refused;
}

/// Operates the tool as the example has it, and collects what it shows.
class GuideReader
{
public:
    explicit GuideReader(const GuideExample &example)
        : isPython(example.kind == GuideExample::PythonFile || example.kind == GuideExample::PythonSession),
          bench(options(isPython))
    { }

    /// Empty, or why the tool cannot be operated.
    QString begin()
    {
        const int index = isPython ? 1 : 0;
        if (!bench.window->toolDocks().open(bench.window->toolHost().toolClasses().at(index)))
            return QStringLiteral("the tool does not open");
        if (isPython)
            driver = std::make_unique<workbench::PythonTerminalDriver>(*bench.tool());
        else
            driver = std::make_unique<workbench::CommandTerminalDriver>(*bench.tool());
        QString error = driver->missingControl();
        if (!error.isEmpty())
            return error;
        if (!QTest::qWaitFor([this] { return driver->isReady(); }, Patience))
            return QStringLiteral("the tool is not ready");
        driver->prepare(QString(), error);
        driver->takeNewLines(); // what it shows of its own accord
        return error;
    }

    QStringList executeFile(const QString &text)
    {
        driver->edit(text);
        driver->execute();
        if (!QTest::qWaitFor([this] { return !driver->isBusy(); }, Patience))
            return {QStringLiteral("is still busy")};
        return shownLines();
    }

    /// Types what stands behind the prompts, each when its prompt is there.
    QStringList type(const QStringList &session)
    {
        for (const QString &line : session) {
            const QString prompt = line.left(2);
            if (prompt != QLatin1String("> ") && prompt != QLatin1String(". ")
                && prompt != QLatin1String("? "))
                continue;
            if (!QTest::qWaitFor([&] { return driver->lastLine() == prompt; }, Patience))
                return shownLines() << QStringLiteral("no prompt for: ") + line;
            QTest::keyClicks(bench.console(), line.mid(2));
            QTest::keyClick(bench.console(), Qt::Key_Return);
        }
        if (!QTest::qWaitFor([this] { return driver->lastLine() == QLatin1String("> "); }, Patience))
            return {QStringLiteral("is still busy")};
        return shownLines();
    }

private:
    static workbench::Options options(bool isPython)
    {
        workbench::Options result;
        if (isPython)
            result.pythonFile = QStringLiteral("example.py");
        return result;
    }

    // Without the prompt that the next line waits for.
    QStringList shownLines()
    {
        QStringList lines = driver->takeNewLines().split(QLatin1Char('\n'));
        lines.removeLast();
        return lines;
    }

    const bool isPython;
    RealWorkbench bench;
    std::unique_ptr<workbench::TerminalDriver> driver;
};

} // namespace

QString TestGuides::textOf(const QString &page)
{
    QFile file(QStringLiteral(PROJECT_FOLDER "/") + page);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(file.fileName()), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

void TestGuides::initTestCase()
{
    // Pages that promise that their examples are executed have some.
    for (const char *page : {"docs/operators_guide.md", "docs/scripting_guide.md"}) {
        QString error;
        QVERIFY2(readGuide(textOf(QLatin1String(page)), ShellBlocks::Refused, error).size() >= 4, page);
    }
}

void TestGuides::examples_data()
{
    QTest::addColumn<GuideExample>("example");
    QStringList pages{QStringLiteral("README.md"), QStringLiteral("examples/README.md"),
                      QStringLiteral("docs/python_reference/README.md")};
    const QStringList guides =
        QDir(QStringLiteral(PROJECT_FOLDER "/docs")).entryList({QStringLiteral("*.md")}, QDir::Files);
    for (const QString &guide : guides)
        pages.append(QStringLiteral("docs/") + guide);
    for (const QString &page : qAsConst(pages)) {
        QString error;
        const QVector<GuideExample> examples = readGuide(textOf(page), shellBlocksOf(page), error);
        QVERIFY2(error.isEmpty(), qUtf8Printable(page + QLatin1String(": ") + error));
        for (const GuideExample &example : examples)
            QTest::addRow("%s:%d", qUtf8Printable(page), example.line) << example;
    }
}

void TestGuides::examples()
{
    QFETCH(GuideExample, example);
    GuideReader reader(example);
    const QString problem = reader.begin();
    QVERIFY2(problem.isEmpty(), qUtf8Printable(problem));
    const QStringList lines =
        example.text.isEmpty() ? reader.type(example.transcript) : reader.executeFile(example.text);
    QVERIFY2(matches(lines, example.transcript), qUtf8Printable(lines.join(QLatin1Char('\n'))));
}

void TestGuides::faultyPages_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("open block") << QStringLiteral("a\n```text\nls\n")
                                << QStringLiteral("the block of line 2 does not end");
    QTest::newRow("unknown language") << QStringLiteral("a\n```ruby\n1\n```\n")
                                      << QStringLiteral("line 2: nobody executes a block \"ruby\"");
    QTest::newRow("no language") << QStringLiteral("```\n1\n```\n")
                                 << QStringLiteral("line 1: nobody executes a block \"\"");
    QTest::newRow("indented") << QStringLiteral("a\n\n    ls\n")
                              << QStringLiteral("line 3: nobody executes a block without a language");
    QTest::newRow("a blank before the language")
        << QStringLiteral("``` sh\nls\n```\n") << QStringLiteral("line 1: nobody executes a block \" sh\"");
    QTest::newRow("commands of a page that is not run")
        << QStringLiteral("a\n```sh\nls\n```\n") << QStringLiteral("line 2: nobody executes a block \"sh\"");
    QTest::newRow("output of a page that is not run")
        << QStringLiteral("```output\na\n```\n")
        << QStringLiteral("line 1: nobody executes a block \"output\"");
    QTest::newRow("part of a list") << QStringLiteral("- a\n    b\n\n  c\n") << QString();
    QTest::newRow("no transcript at the end")
        << QStringLiteral("```python\n1\n```\n") << QStringLiteral("line 1: a file without a transcript");
    QTest::newRow("no transcript before the next")
        << QStringLiteral("```python\n1\n```\n```python\n2\n```\n")
        << QStringLiteral("line 4: a file and its transcript go together");
    QTest::newRow("no file") << QStringLiteral("\n```transcript\n1\n```\n")
                             << QStringLiteral("line 2: a file and its transcript go together");
}

void TestGuides::faultyPages()
{
    QFETCH(QString, page);
    QFETCH(QString, complaint);
    QString error;
    readGuide(page, ShellBlocks::Refused, error);
    QCOMPARE(error, complaint);
}

void TestGuides::transcripts_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("areEqual");
    const QString anything(QChar(0x2026));
    const QStringList two{QStringLiteral("a 1"), QStringLiteral("b")};
    const QStringList one{QStringLiteral("a 1")};
    QTest::newRow("equal") << two << two << true;
    QTest::newRow("shorter") << one << two << false;
    QTest::newRow("longer") << two << one << false;
    QTest::newRow("other text") << two << QStringList{QStringLiteral("a 2"), QStringLiteral("b")} << false;
    QTest::newRow("anything in a line")
        << two << QStringList{QStringLiteral("a ") + anything, QStringLiteral("b")} << true;
    QTest::newRow("a line's end is not anything")
        << two << QStringList{QStringLiteral("a"), QStringLiteral("b")} << false;
    QTest::newRow("any lines first") << two << QStringList{anything, QStringLiteral("b")} << true;
    QTest::newRow("any lines are none") << two << (QStringList{anything} + two) << true;
    QTest::newRow("any lines, then another") << two << QStringList{anything, QStringLiteral("c")} << false;
    QTest::newRow("a point is a point")
        << two << QStringList{QStringLiteral("a.1"), QStringLiteral("b")} << false;
}

void TestGuides::transcripts()
{
    QFETCH(QStringList, lines);
    QFETCH(QStringList, expected);
    QFETCH(bool, areEqual);
    QCOMPARE(matches(lines, expected), areEqual);
}

QTEST_MAIN(TestGuides)
#include "tst_guides.moc"
