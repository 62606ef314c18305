#include "tests/rehearsal/rehearsal_program.h"

#include <QTest>

/// The program with Python files.
class TestRehearseScripts : public QObject
{
    Q_OBJECT

private:
    RehearsalProgram program;

    RehearsalProgram::Outcome rehearse(const QByteArray &script, const char *name = "a.py")
    {
        return RehearsalProgram::run(
            {program.write(QLatin1String(name), script), QStringLiteral("--format"), QStringLiteral("json")});
    }

    /// What the script wrote.
    static QStringList written(const RehearsalProgram::Outcome &outcome)
    {
        QStringList lines;
        const QVector<QJsonObject> transcript = RehearsalProgram::objects(outcome, "transcript");
        for (const QJsonObject &line : transcript) {
            if (line.value(QLatin1String("kind")).toString() == QLatin1String("output"))
                lines << line.value(QLatin1String("text")).toString();
        }
        return lines;
    }

private Q_SLOTS:
    void anExample()
    {
        const auto outcome = RehearsalProgram::run({QStringLiteral(EXAMPLES "/scripts/ramp_channel.py"),
                                                    QStringLiteral("--format"), QStringLiteral("json")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        QCOMPARE(written(outcome).constLast(),
                 QStringLiteral("Channel 0.2.1 has reached 500 V. It stays on."));
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("line"); // 0: none
        QTest::addColumn<QStringList>("named");
        QTest::newRow("does not compile")
            << QByteArray("print('before')\nx = = 1\n") << 2
            << QStringList{QStringLiteral("does not compile"), QStringLiteral("a.py\", line 2"),
                           QStringLiteral("x = = 1"), QStringLiteral("SyntaxError: invalid syntax")};
        QTest::newRow("ends too early")
            << QByteArray("x = (1,\n") << 1 << QStringList{QStringLiteral("unexpected EOF while parsing")};
        QTest::newRow("a bad indentation")
            << QByteArray("if True:\nprint(1)\n") << 2 << QStringList{QStringLiteral("IndentationError")};
        QTest::newRow("a zero byte") << QByteArray("x = 1\0\n", 7) << 0
                                     << QStringList{QStringLiteral("does not compile"),
                                                    QStringLiteral("null bytes")};
        QTest::newRow("raises") << QByteArray("def f(x):\n    return 1 / x\n\nf(0)\n") << 2
                                << QStringList{QStringLiteral("Traceback (most recent call last):"),
                                               QStringLiteral("a.py\", line 4, in <module>"),
                                               QStringLiteral("a.py\", line 2, in f"),
                                               QStringLiteral("return 1 / x"),
                                               QStringLiteral("ZeroDivisionError: division by zero")};
        QTest::newRow("raises in a library") << QByteArray("import json\n\njson.loads('{')\n") << 3
                                             << QStringList{QStringLiteral("JSONDecodeError")};
        QTest::newRow("raises from another")
            << QByteArray(
                   "try:\n    1 / 0\nexcept ZeroDivisionError as e:\n    raise RuntimeError('why') from e\n")
            << 4
            << QStringList{QStringLiteral("ZeroDivisionError"), QStringLiteral("direct cause"),
                           QStringLiteral("RuntimeError: why")};
        QTest::newRow("compiles something that does not compile")
            << QByteArray("compile('x = = 1', 'inner', 'exec')\n") << 1
            << QStringList{QStringLiteral("raised"), QStringLiteral("inner")};
        QTest::newRow("exits with a code")
            << QByteArray("import sys\nsys.exit(3)\n") << 0 << QStringList{QStringLiteral("exited with: 3")};
        QTest::newRow("exits with a text") << QByteArray("import sys\nsys.exit('no supply')\n") << 0
                                           << QStringList{QStringLiteral("exited with: no supply")};
        QTest::newRow("is interrupted by itself") << QByteArray("raise KeyboardInterrupt\n") << 1
                                                  << QStringList{QStringLiteral("KeyboardInterrupt")};
        QTest::newRow("takes names that the rehearsal needs")
            << QByteArray("open = str = len = isinstance = getattr = exec = None\n1 / 0\n") << 2
            << QStringList{QStringLiteral("ZeroDivisionError")};
        QTest::newRow("changes the folder")
            << QByteArray("import os\nos.chdir('/')\n1 / 0\n") << 3 << QStringList{QStringLiteral("1 / 0")};
        QTest::newRow("writes what is refused")
            << QByteArray("import orbClient\n"
                          "channel = orbClient.findConnection('local').modules[0].channels[0]\n"
                          "print(channel.setControlVoltageSet(99999))\n")
            << 0 << QStringList{QStringLiteral("0.0.0 Control.voltageSet 99999"), QStringLiteral("refused")};
    }

    void failures()
    {
        QFETCH(QByteArray, script);
        QFETCH(int, line);
        QFETCH(QStringList, named);
        const auto outcome = rehearse(script);
        QCOMPARE(outcome.exitCode, 1);
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "failure");
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.constFirst().value(QLatin1String("line")).toInt(), line);
        const QString text = found.constFirst().value(QLatin1String("text")).toString();
        for (const QString &part : std::as_const(named))
            QVERIFY2(text.contains(part), qPrintable(text));
        QVERIFY2(!text.contains(QStringLiteral("rehearsal>")), qPrintable(text));
    }

    void whatDoesNotCompileRunsNothing()
    {
        const auto outcome = rehearse("print('before')\nx = = 1\n");
        QCOMPARE(written(outcome), QStringList());
    }

    void goodEnds_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("the last line") << QByteArray("x = 1");
        QTest::newRow("exit") << QByteArray("import sys\nsys.exit()\n");
        QTest::newRow("exit with zero") << QByteArray("import sys\nsys.exit(0)\n");
        QTest::newRow("errors that are caught")
            << QByteArray("try:\n    1 / 0\nexcept ZeroDivisionError:\n    pass\n");
        QTest::newRow("standard error") << QByteArray("import sys\nprint('x', file=sys.stderr)\n");
        // Nothing that a script writes is taken for its end.
        QTest::newRow("words of the rehearsal")
            << QByteArray("print('{\"kind\": \"raised\"}')\nprint('Traceback (most recent call last):')\n");
    }

    void goodEnds()
    {
        QFETCH(QByteArray, script);
        const auto outcome = rehearse(script);
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        QVERIFY(RehearsalProgram::objects(outcome, "failure").isEmpty());
    }

    // How a copy of the process ends is not how the script does; "outcome" is where that is told.
    void aCopyOfTheProcessTellsNothing()
    {
        const auto outcome = rehearse("import os, sys\n"
                                      "place = sys._getframe(1).f_locals['outcome']\n"
                                      "child = os.fork()\n"
                                      "if child == 0:\n"
                                      "    1 / 0\n"
                                      "os.waitpid(child, 0)\n"
                                      "print(os.path.isabs(place), os.path.exists(place))\n");
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        QCOMPARE(written(outcome).join(QLatin1Char(' ')), QStringLiteral("True False"));
    }

    // As in the terminal.
    void whatAScriptSees_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("expected");
        QTest::newRow("its name") << QByteArray("print(__name__)\n") << QStringLiteral("__main__");
        QTest::newRow("no file") << QByteArray("print('__file__' in globals())\n") << QStringLiteral("False");
        QTest::newRow("no argument") << QByteArray("import sys\nprint(sys.argv)\n") << QStringLiteral("['']");
        QTest::newRow("nobody else's names")
            << QByteArray("x = 1\nprint(sorted(localdict))\n")
            << QStringLiteral("['ConsoleRedirection', 'completer', 'orbClient', 'rlcompleter', 'sys', 'x']");
        QTest::newRow("its own names, from a function")
            << QByteArray("x = 5\ndef f():\n    return x\nprint(f())\n") << QStringLiteral("5");
        QTest::newRow("in a class, from a function")
            << QByteArray("class A:\n    pass\ndef f():\n    return A.__module__\nprint(f())\n")
            << QStringLiteral("__main__");
        QTest::newRow("a comment that names its encoding")
            << QByteArray("# -*- coding: utf-8 -*-\nprint('\xc2\xb5')\n") << QString::fromUtf8("\xc2\xb5");
        QTest::newRow("no future of ours")
            << QByteArray("print((lambda x: x).__annotations__, 1 / 2)\n") << QStringLiteral("{} 0.5");
    }

    void whatAScriptSees()
    {
        QFETCH(QByteArray, script);
        const auto outcome = rehearse(script);
        QCOMPARE(outcome.exitCode, 0);
        // print() writes each value on its own, and the console shows each on a line.
        QTEST(written(outcome).join(QLatin1Char(' ')), "expected");
    }

    void eachScriptBeginsAfresh()
    {
        const QString first = program.write(QStringLiteral("1.py"), "left = 1\n");
        const QString second = program.write(QStringLiteral("2.py"), "print('left' in localdict)\n");
        const auto outcome =
            RehearsalProgram::run({first, second, QStringLiteral("--format"), QStringLiteral("json")});
        QCOMPARE(written(outcome), QStringList{QStringLiteral("False")});
    }

    void aLaterScriptRunsAfterOneThatFails()
    {
        const QString first = program.write(QStringLiteral("1.py"), "1 / 0\n");
        const QString second = program.write(QStringLiteral("2.py"), "print('here')\n");
        const auto outcome =
            RehearsalProgram::run({first, second, QStringLiteral("--format"), QStringLiteral("json")});
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(written(outcome), QStringList{QStringLiteral("here")});
    }

    void aScriptThatWaitsForSomebody()
    {
        const QString first =
            program.write(QStringLiteral("1.py"), "name = input('Who? ')\nprint('never')\n");
        const QString second = program.write(QStringLiteral("2.py"), "print('here')\n");
        const auto outcome =
            RehearsalProgram::run({first, second, QStringLiteral("--format"), QStringLiteral("json")});
        QCOMPARE(outcome.exitCode, 1);
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "failure");
        QCOMPARE(found.size(), 1);
        QVERIFY(found.constFirst()
                    .value(QLatin1String("text"))
                    .toString()
                    .contains(QStringLiteral("nobody is there")));
        QVERIFY(written(outcome).contains(QStringLiteral("here")));
        QVERIFY(!written(outcome).contains(QStringLiteral("never")));
    }

    // Lines for a machine hold nothing but ours, whatever the interpreter and scripts write past the console.
    void standardOutputIsOurs()
    {
        const auto outcome = rehearse("import os, sys\nos.write(1, b'past the console\\n')\n"
                                      "sys.__stdout__ and sys.__stdout__.write('x')\n");
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        QVERIFY(!RehearsalProgram::objects(outcome).isEmpty()); // each line is an object
        QVERIFY2(outcome.err.contains(QStringLiteral("past the console")), qPrintable(outcome.err));
    }
};

QTEST_GUILESS_MAIN(TestRehearseScripts)
#include "tst_rehearse_scripts.moc"
