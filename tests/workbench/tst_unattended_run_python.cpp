#include "hostsdk/kd_plugin_interface.h"
#include "tests/workbench/real_workbench.h"
#include "workbench/app/tool_menu.h"

#include <QAction>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>

#include <memory>

using workbench::Options;
using workbench::UnattendedRun;

/// Python files, executed in the real Python terminal of the real window.
class TestUnattendedRunPython : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    Options optionsFor(const QByteArray &script)
    {
        const QString path = dir.filePath(QStringLiteral("script.py"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
            qFatal("cannot write %s", qUtf8Printable(path));
        Options options;
        options.pythonFile = path;
        options.quitWhenDone = true;
        return options;
    }

private Q_SLOTS:
    void executesAFile()
    {
        RealWorkbench bench(optionsFor("import orbClient\n"
                                       "names = [str(one) for one in orbClient.getConnections(1)]\n"
                                       "def show():\n"
                                       "    print('connections:', len(names))\n"
                                       "show()\n"));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY2(bench.outText.startsWith(QStringLiteral("Python 3.7")), qPrintable(bench.outText));
        QVERIFY2(bench.outText.contains(QStringLiteral("\n> executing file\n")), qPrintable(bench.outText));
        QVERIFY2(bench.outText.contains(QStringLiteral("connections:")), qPrintable(bench.outText));
        QVERIFY2(bench.outText.endsWith(QStringLiteral("2\n> \n")), qPrintable(bench.outText));
        QCOMPARE(bench.errText, QString());
    }

    void printsWhatAScriptRaises()
    {
        RealWorkbench bench(optionsFor("raise RuntimeError('the attic is dark')\n"));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0); // the file was executed
        QVERIFY2(bench.outText.contains(QStringLiteral("<class 'RuntimeError'> the attic is dark")),
                 qPrintable(bench.outText));
    }

    void printsAsItHappens()
    {
        RealWorkbench bench(optionsFor("import time\nprint('first')\ntime.sleep(60)\nprint('second')\n"));
        bench.run->start();
        QTRY_VERIFY(bench.outText.contains(QStringLiteral("first\n")));
        QVERIFY(!bench.outText.contains(QStringLiteral("second")));
    }

    void endsWhenNobodyCanAnswer()
    {
        RealWorkbench bench(optionsFor("input('your name')\n"));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(QStringLiteral("script.py")), qPrintable(bench.errText));
        QVERIFY2(bench.outText.contains(QStringLiteral("your name")), qPrintable(bench.outText));
    }

    void waitsForTheUserWhoIsThere()
    {
        Options options = optionsFor("print('hello ' + input('your name'))\n");
        options.quitWhenDone = false;
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(bench.console()->document()->lastBlock().text(), QStringLiteral("? "));
        QVERIFY(finished.isEmpty());
        QTest::keyClicks(bench.console(), QStringLiteral("Ada"));
        QTest::keyClick(bench.console(), Qt::Key_Return);
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY2(bench.outText.contains(QStringLiteral("hello Ada\n")), qPrintable(bench.outText));
    }

    void saysThatPythonDidNotStart()
    {
        RealWorkbench bench(optionsFor("print('never')\n"));
        // Somebody else has the one interpreter.
        const std::unique_ptr<KdPluginWidget> other(
            bench.library.plugin()->createWidget(1, nullptr, bench.mainData, bench.window->toolHost(), 0));
        QTRY_VERIFY(other->findChild<QPlainTextEdit *>(QStringLiteral("console"))
                        ->toPlainText()
                        .contains(QStringLiteral("Python 3.7")));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(QStringLiteral("did not start")), qPrintable(bench.errText));
        QVERIFY(!bench.outText.contains(QStringLiteral("never")));
    }

    void closedInTheMiddle_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("busy") << QByteArray("print('begun')\nwhile True:\n    pass\n");
        QTest::newRow("asleep") << QByteArray("import time\nprint('begun')\ntime.sleep(60)\n");
        QTest::newRow("writes without an end")
            << QByteArray("print('begun')\nwhile True:\n    print('more')\n");
        QTest::newRow("clings to its life")
            << QByteArray("print('begun')\n"
                          "while True:\n    try:\n        while True: pass\n    except: pass\n");
    }

    void closedInTheMiddle()
    {
        QFETCH(QByteArray, script);
        RealWorkbench bench(optionsFor(script));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_VERIFY(bench.outText.contains(QStringLiteral("begun")));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(bench.window->close());
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(QStringLiteral("closed")), qPrintable(bench.errText));
    }

    void theMenuOpensIt()
    {
        RealWorkbench bench(optionsFor(QByteArray()));
        const quint32 python = bench.window->toolHost().toolClasses().at(1);
        QAction *entry = bench.window->toolMenu().entry(python);
        QVERIFY(entry);
        QVERIFY(!bench.tool());
        entry->trigger();
        QVERIFY(bench.tool());
        QVERIFY(entry->isChecked());
        QVERIFY(bench.console()->isVisible());
        QTRY_VERIFY(bench.console()->toPlainText().contains(QStringLiteral("Python 3.7")));
        // It shares the room with the command terminal.
        const QWidget *command =
            bench.window->toolHost().tool(bench.window->toolHost().toolClasses().constFirst());
        QVERIFY(command->isVisible());
        QTRY_VERIFY(qAbs(command->height() - bench.tool()->height()) < bench.tool()->height());
        entry->trigger();
        QVERIFY(!bench.console()->isVisible());
        QVERIFY(!entry->isChecked());
    }
};

QTEST_MAIN(TestUnattendedRunPython)

#include "tst_unattended_run_python.moc"
