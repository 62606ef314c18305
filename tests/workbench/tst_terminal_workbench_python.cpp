#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace
{

struct Outcome
{
    int exitCode = -1;
    QString out;
    QString err;
};

/// What the program writes when its interpreter starts: once a process.
const QString StartLine = QStringLiteral("python home == ");

} // namespace

/// The program as a user starts it to execute a Python file.
class TestTerminalWorkbenchPython : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    Outcome execute(const QString &file)
    {
        QProcess process;
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(QStringLiteral(WORKBENCH),
                      {QStringLiteral("--config-dir"), dir.path(), QStringLiteral("--run-python-file"), file,
                       QStringLiteral("--quit-when-done")});
        Outcome outcome;
        // An example waits for a ramp; how long is the file's own business.
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
        } else {
            outcome.exitCode = process.exitCode();
        }
        outcome.out = QString::fromUtf8(process.readAllStandardOutput());
        outcome.err = QString::fromUtf8(process.readAllStandardError());
        return outcome;
    }

    Outcome executeText(const QByteArray &script)
    {
        const QString path = dir.filePath(QStringLiteral("script.py"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
            qFatal("cannot write %s", qUtf8Printable(path));
        file.close();
        return execute(path);
    }

    /// The lines that the script wrote.
    static QStringList shown(const Outcome &outcome)
    {
        QStringList lines = outcome.out.split(QLatin1Char('\n'));
        const int begin = lines.indexOf(QStringLiteral("> executing file"));
        const int end = lines.indexOf(QStringLiteral("> "), begin);
        return begin < 0 || end < 0 ? QStringList() : lines.mid(begin + 1, end - begin - 1);
    }

private Q_SLOTS:
    void rampsAChannel()
    {
        const Outcome outcome = execute(QStringLiteral(EXAMPLES "/scripts/ramp_channel.py"));
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        const QStringList lines = shown(outcome);
        QVERIFY2(lines.size() > 3, qPrintable(outcome.out));
        QCOMPARE(lines.constLast(), QStringLiteral("Channel 0.2.1 has reached 500 V. It stays on."));
        QVector<double> volts;
        for (const QString &line : lines.mid(0, lines.size() - 1)) {
            const auto match =
                QRegularExpression(QStringLiteral("^Channel 0\\.2\\.1: ([0-9.]+) V,")).match(line);
            QVERIFY2(match.hasMatch(), qPrintable(line));
            volts.append(match.captured(1).toDouble());
        }
        QVERIFY2(volts.constFirst() < 100, qPrintable(lines.constFirst()));
        QVERIFY2(volts.constLast() >= 498, qPrintable(lines.at(lines.size() - 2)));
        QVERIFY(std::is_sorted(volts.cbegin(), volts.cend()));
    }

    void refuses()
    {
        const Outcome outcome = execute(QStringLiteral("/no/such.py"));
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.err.contains(QStringLiteral("/no/such.py")), qPrintable(outcome.err));
        QVERIFY(!outcome.out.contains(QStringLiteral("executing")));
    }

    // A script's own program is the host, which must not start once more.

    void childProcesses_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("itself") << QByteArray(
            "import subprocess, sys\n"
            "done = subprocess.run([sys.executable, '-c',\n"
            "    'import math, sys; print(sys.version_info[:2], math.pi)'],\n"
            "    stdout=subprocess.PIPE)\n"
            "print(done.stdout.decode())\n")
                                << QStringList{QStringLiteral("(3, 7) 3.141592653589793")};
        QTest::newRow("fork") << QByteArray("import multiprocessing, os\n"
                                            "here = multiprocessing.get_context('fork')\n"
                                            "def work(end):\n"
                                            "    end.send(os.getpid())\n"
                                            "mine, theirs = here.Pipe()\n"
                                            "child = here.Process(target=work, args=(theirs,))\n"
                                            "child.start()\n"
                                            "print(mine.recv() == child.pid)\n"
                                            "child.join()\n"
                                            "print(child.exitcode)\n")
                              << QStringList{QStringLiteral("True"), QStringLiteral("0")};
        QTest::newRow("pool of forks")
            << QByteArray("import multiprocessing\n"
                          "def twice(number):\n"
                          "    return 2 * number\n"
                          "with multiprocessing.get_context('fork').Pool(2) as pool:\n"
                          "    print(pool.map(twice, range(4)))\n")
            << QStringList{QStringLiteral("[0, 2, 4, 6]")};
        QTest::newRow("spawn") << QByteArray(
            "import multiprocessing\n"
            "if __name__ == '__main__':\n"
            "    with multiprocessing.get_context('spawn').Pool(2) as pool:\n"
            "        print(pool.map(abs, [-1, 2]))\n")
                               << QStringList{QStringLiteral("[1, 2]")};
        QTest::newRow("copy that exits") << QByteArray("import os, sys\n"
                                                       "child = os.fork()\n"
                                                       "if child == 0:\n"
                                                       "    sys.exit(7)\n"
                                                       "print(os.waitpid(child, 0)[1] >> 8)\n")
                                         << QStringList{QStringLiteral("7")};
        QTest::newRow("copy that comes to its end") << QByteArray("import os\n"
                                                                  "child = os.fork()\n"
                                                                  "if child:\n"
                                                                  "    print(os.waitpid(child, 0)[1])\n")
                                                    << QStringList{QStringLiteral("0")};
        QTest::newRow("copy that fails") << QByteArray("import os\n"
                                                       "child = os.fork()\n"
                                                       "if child == 0:\n"
                                                       "    1 / 0\n"
                                                       "print(os.waitpid(child, 0)[1] >> 8)\n")
                                         << QStringList{QStringLiteral("1")};
        QTest::newRow("copy without a client") << QByteArray(
            "import os, orbClient\n"
            "child = os.fork()\n"
            "if child == 0:\n"
            "    os._exit(5 if orbClient.findConnection('local') == 'error' else 6)\n"
            "print(os.waitpid(child, 0)[1] >> 8, orbClient.findConnection('local') == 'error')\n")
                                               << QStringList{QStringLiteral("5 False")};
    }

    void childProcesses()
    {
        QFETCH(QByteArray, script);
        const Outcome outcome = executeText(script);
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QStringList lines = shown(outcome);
        // print() writes each value on its own, and the console shows each on a line.
        lines = QStringList{lines.join(QLatin1Char(' '))};
        QFETCH(QStringList, expected);
        QCOMPARE(lines, QStringList{expected.join(QLatin1Char(' '))});
        QCOMPARE(outcome.out.count(StartLine), 1);
    }

    // Nobody shows what such a copy writes, or answers it. It goes to standard error here, where nothing comes between.
    void copyThatReadsAndWrites()
    {
        const Outcome outcome = executeText("import os, sys\n"
                                            "child = os.fork()\n"
                                            "if child == 0:\n"
                                            "    for i in range(5000): print('copy', file=sys.stderr)\n"
                                            "    try: input()\n"
                                            "    except EOFError: os._exit(3)\n"
                                            "print(os.waitpid(child, 0)[1] >> 8)\n");
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QCOMPARE(shown(outcome), QStringList{QStringLiteral("3")});
        QCOMPARE(outcome.err.count(QStringLiteral("copy\n")), 5000);
    }

    // The end of the program

    void endsWithAScriptThatWaits()
    {
        const Outcome outcome = executeText("input()\n");
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.err.contains(QStringLiteral("nobody is there")), qPrintable(outcome.err));
    }

    void quitsInTheMiddle_data()
    {
        QTest::addColumn<QByteArray>("rest");
        QTest::newRow("busy") << QByteArray("while True: pass\n");
        QTest::newRow("asleep") << QByteArray("import time; time.sleep(1000)\n");
        QTest::newRow("waits for a line") << QByteArray("input()\n");
        QTest::newRow("writes without an end") << QByteArray("while True: print(1)\n");
        QTest::newRow("waits for a process")
            << QByteArray("import subprocess; subprocess.run(['sleep', '3'])\n");
        // Nothing stops it before it is over, and nobody waits for that.
        QTest::newRow("one long call") << QByteArray("sum(range(10 ** 12))\n");
    }

    void quitsInTheMiddle()
    {
        QFETCH(QByteArray, rest);
        QElapsedTimer timer;
        timer.start();
        // As if the user quit just then.
        const Outcome outcome =
            executeText("import ctypes\n"
                        "quit = ctypes.CDLL('libQt5Core.so.5')._ZN16QCoreApplication4quitEv\n"
                        "quit()\n"
                        + rest);
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        // Start-up and end take a tenth of that here; what was not stopped would take far longer.
        QVERIFY2(timer.elapsed() < 30000, qPrintable(QString::number(timer.elapsed())));
    }

    void endsWithThreadsOfAScript()
    {
        const Outcome outcome = executeText("import threading, time\n"
                                            "def work():\n"
                                            "    while True: time.sleep(0.01)\n"
                                            "threading.Thread(target=work).start()\n"
                                            "threading.Thread(target=work, daemon=True).start()\n"
                                            "print('begun')\n");
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QCOMPARE(shown(outcome), QStringList{QStringLiteral("begun")});
    }
};

QTEST_GUILESS_MAIN(TestTerminalWorkbenchPython)

#include "tst_terminal_workbench_python.moc"
