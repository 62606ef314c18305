#include "tests/examples/script_bench.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// What holds for every script that comes with the program.
class TestExampleScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { bench->renew(); }
    void cleanupTestCase() { bench.reset(); }

    void isTextForEveryLocale_data();
    void isTextForEveryLocale();
    void saysWhichConnectionIsMissing_data();
    void saysWhichConnectionIsMissing();
    void saysThatNothingIsConnected_data();
    void saysThatNothingIsConnected();
    void benchShowsWhatWentWrong();

private:
    std::unique_ptr<ScriptBench> bench;
};

void TestExampleScripts::initTestCase()
{
    bench = std::make_unique<ScriptBench>();
}

void TestExampleScripts::isTextForEveryLocale_data()
{
    QTest::addColumn<QString>("script");
    const QStringList scripts = QDir(ScriptBench::folder()).entryList({QStringLiteral("*.py")});
    QCOMPARE(scripts,
             (QStringList{QStringLiteral("iv_curve.py"), QStringLiteral("list_everything.py"),
                          QStringLiteral("log_measured_values.py"), QStringLiteral("pass_through_echo.py"),
                          QStringLiteral("ramp_channel.py"), QStringLiteral("safe_shutdown_of_crate.py")}));
    for (const QString &script : scripts)
        QTest::newRow(qPrintable(script)) << script;
}

// The terminal hands a file to Python in the locale's encoding, and says nothing when it does not compile.
void TestExampleScripts::isTextForEveryLocale()
{
    QFETCH(QString, script);
    const QString text = ScriptBench::textOf(script);
    QVERIFY(text.endsWith(QLatin1Char('\n')));
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        constexpr int Widest = 120;
        QVERIFY2(line.size() <= Widest, qPrintable(line));
        for (const QChar character : line)
            QVERIFY2(character.unicode() >= ' ' && character.unicode() < 0x7f, qPrintable(line));
    }
    const ScriptBench::Outcome compiled =
        bench->runText(QStringLiteral("compile(r'''%1''', '%2', 'exec')").arg(text, script));
    QCOMPARE(compiled.error, QString());
}

void TestExampleScripts::saysWhichConnectionIsMissing_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("value");
    const QString name = QStringLiteral("CONNECTION");
    const QString cellar = QStringLiteral("\"cellar\"");
    QTest::newRow("ramp") << QStringLiteral("ramp_channel.py") << name << cellar;
    QTest::newRow("iv curve") << QStringLiteral("iv_curve.py") << name << cellar;
    QTest::newRow("log") << QStringLiteral("log_measured_values.py") << QStringLiteral("CONNECTIONS")
                         << QStringLiteral("[\"local\", \"cellar\"]");
    QTest::newRow("shutdown") << QStringLiteral("safe_shutdown_of_crate.py") << name << cellar;
    QTest::newRow("echo") << QStringLiteral("pass_through_echo.py") << name << cellar;
}

void TestExampleScripts::saysWhichConnectionIsMissing()
{
    QFETCH(QString, script);
    QFETCH(QString, constant);
    QFETCH(QString, value);
    const ScriptBench::Outcome outcome = bench->run(script, {{constant, value}});
    QVERIFY2(outcome.error.startsWith(
                 QStringLiteral("RuntimeError: There is no open connection \"cellar\". Open are: ")),
             qPrintable(outcome.error));
    QVERIFY2(outcome.error.contains(QStringLiteral("local")), qPrintable(outcome.error));
    QVERIFY2(outcome.error.contains(QStringLiteral("bench")), qPrintable(outcome.error));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(bench->faults().writes(), QStringList());
    QCOMPARE(bench->now(), 0.0);
}

void TestExampleScripts::saysThatNothingIsConnected_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("error");
    const QString noneOpen =
        QStringLiteral("RuntimeError: There is no open connection \"local\". Open are: none.");
    QTest::newRow("list") << QStringLiteral("list_everything.py")
                          << QStringLiteral("RuntimeError: There is no open connection.");
    QTest::newRow("ramp") << QStringLiteral("ramp_channel.py") << noneOpen;
    QTest::newRow("iv curve") << QStringLiteral("iv_curve.py") << noneOpen;
    QTest::newRow("log") << QStringLiteral("log_measured_values.py")
                         << QStringLiteral("RuntimeError: There is no channel to log: no connection is open, "
                                           "or none of them has a module.");
    QTest::newRow("shutdown") << QStringLiteral("safe_shutdown_of_crate.py") << noneOpen;
    QTest::newRow("echo") << QStringLiteral("pass_through_echo.py") << noneOpen;
}

void TestExampleScripts::saysThatNothingIsConnected()
{
    QFETCH(QString, script);
    bench->service().closeConnection(QStringLiteral("local"));
    bench->service().closeConnection(QStringLiteral("bench"));
    const ScriptBench::Outcome outcome = bench->run(script);
    QTEST(outcome.error, "error");
    QCOMPARE(outcome.output, QString());
}

// The other tests rely on it.
void TestExampleScripts::benchShowsWhatWentWrong()
{
    QCOMPARE(bench->runText(QStringLiteral("1 / 0")).error,
             QStringLiteral("ZeroDivisionError: division by zero"));
    QVERIFY(bench->runText(QStringLiteral("a = (")).error.startsWith(QStringLiteral("SyntaxError: ")));
    QCOMPARE(bench->run(QStringLiteral("ramp_channel.py"), {{QStringLiteral("VOLT"), QString()}}).error,
             QStringLiteral("ramp_channel.py has not one line for the constant VOLT"));
    const ScriptBench::Outcome outcome = bench->runText(
        QStringLiteral("import time\nprint('a', 1)\ntime.sleep(2.5)\nprint(time.monotonic())"));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("a 1\n2.5\n"));
    QVERIFY(outcome.printed(QStringLiteral("2.5")));
    QVERIFY(!outcome.printed(QStringLiteral("2")));
}

QTEST_GUILESS_MAIN(TestExampleScripts)
#include "tst_example_scripts.moc"
