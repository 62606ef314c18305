#include "workbench/app/unattended_run.h"

#include "tests/workbench/fake_plugin.h"
#include "tests/workbench/real_workbench.h"
#include "tests/workbench/small_system.h"

#include <QComboBox>
#include <QImage>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>
#include <QTextStream>

#include <chrono>

using workbench::MainWindow;
using workbench::Options;
using workbench::SettingsStore;
using workbench::UnattendedRun;

namespace
{

const char *const ReadVoltage =
    R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"0",)"
    R"("c":"0"},"i":"Status.voltageNominal","v":"","u":""}}],"r":"websocket"})";

} // namespace

class TestUnattendedRun : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    QString file(const QByteArray &content)
    {
        const QString path = dir.filePath(QStringLiteral("commands.txt"));
        QFile commands(path);
        if (!commands.open(QIODevice::WriteOnly) || commands.write(content) != content.size())
            qFatal("cannot write %s", qUtf8Printable(path));
        return path;
    }

private Q_SLOTS:
    void executesAFile()
    {
        Options options;
        options.commandFile = file(QByteArray("# read\n") + ReadVoltage + "\nwait 0010\n# end\n");
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY2(bench.outText.contains(QStringLiteral("[{\"trigger\":\"true\"}]")),
                 qPrintable(bench.outText));
        QVERIFY2(bench.outText.contains(QStringLiteral("\"value\":6000")), qPrintable(bench.outText));
        QVERIFY(bench.outText.indexOf(QStringLiteral("\"value\":6000"))
                < bench.outText.indexOf(QStringLiteral("# end")));
        QCOMPARE(bench.errText, QString());
    }

    void choosesTheController_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("voltage"); // nominal, of its first channel
        QTest::newRow("the first") << QString() << QStringLiteral("Rehearsal controller")
                                   << QStringLiteral("6000");
        QTest::newRow("by connection name")
            << QStringLiteral("bench") << QStringLiteral("Bench supply") << QStringLiteral("1000");
        QTest::newRow("by display text")
            << QStringLiteral("Bench supply") << QStringLiteral("Bench supply") << QStringLiteral("1000");
    }

    void choosesTheController()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        QFETCH(QString, voltage);
        Options options;
        options.commandFile = file(QByteArray(ReadVoltage) + '\n');
        options.controller = name;
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QCOMPARE(bench.tool()->findChild<QComboBox *>(QStringLiteral("controllerBox"))->currentText(), shown);
        QVERIFY2(bench.outText.contains(QStringLiteral("\"value\":") + voltage), qPrintable(bench.outText));
    }

    void refusesAnUnknownController()
    {
        Options options;
        options.commandFile = file("# nothing\n");
        options.controller = QStringLiteral("attic");
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        for (const char *named : {"attic", "Rehearsal controller", "Bench supply"})
            QVERIFY2(bench.errText.contains(QLatin1String(named)), qPrintable(bench.errText));
    }

    void readsEveryCharacter_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("zero") << QByteArray("# a\0b\n# end\n", 12);
        QTest::newRow("UTF-16") << QTextCodec::codecForName("UTF-16")->fromUnicode(QStringLiteral("# end\n"));
        QTest::newRow("carriage returns") << QByteArray("# a\r# end\r");
    }

    void readsEveryCharacter()
    {
        QFETCH(QByteArray, content);
        Options options;
        options.commandFile = file(content);
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QVERIFY2(bench.outText.contains(QStringLiteral("> # end\n")), qPrintable(bench.outText));
        QCOMPARE(bench.errText, QString());
    }

    void printsAsItHappens()
    {
        Options options;
        options.commandFile = file("# first\nwait 60000\n# end\n");
        RealWorkbench bench(options);
        bench.run->start();
        QTRY_VERIFY(bench.outText.contains(QStringLiteral("waiting for 60000 ms")));
        QVERIFY(!bench.outText.contains(QStringLiteral("# end")));
    }

    void refusesAFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << QStringLiteral("/no/such/file.txt");
        QTest::newRow("a folder") << QDir::tempPath();
        QTest::newRow("no file") << QStringLiteral("/dev/zero");
    }

    void refusesAFile()
    {
        QFETCH(QString, path);
        Options options;
        options.commandFile = path;
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(path), qPrintable(bench.errText));
    }

    void warnsOfALineThatNeverRuns()
    {
        Options options;
        options.commandFile = file("# one\n# two");
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY2(bench.errText.contains(QStringLiteral("no line feed")), qPrintable(bench.errText));
        QVERIFY(bench.outText.contains(QStringLiteral("# one")));
        QVERIFY(!bench.outText.contains(QStringLiteral("# two")));
    }

    void takesAPictureOfTheEditor()
    {
        Options options;
        options.editorFile = file("# in the editor\n");
        options.screenshotFile = dir.filePath(QStringLiteral("new folder/editor.png"));
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY(bench.editor()->isVisible());
        QCOMPARE(bench.editor()->toPlainText(), QStringLiteral("# in the editor\n"));
        const QImage picture(options.screenshotFile);
        QCOMPARE(picture.size(), bench.window->size());
        QVERIFY2(bench.outText.contains(options.screenshotFile), qPrintable(bench.outText));
        QVERIFY(!bench.outText.contains(QStringLiteral("# in the editor")));
    }

    void saysThatAPictureCannotBeSaved()
    {
        Options options;
        options.screenshotFile = QStringLiteral("/no/such/folder\n/x.unknown");
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(QStringLiteral("x.unknown")), qPrintable(bench.errText));
    }

    void saysThatTheToolIsAnother()
    {
        SmallSystem system;
        FakePlugin plugin;
        MainWindow window(plugin, system.mainData, SettingsStore(QString()));
        window.show();
        Options options;
        options.screenshotFile = QStringLiteral("never.png");
        QString text;
        QTextStream stream(&text);
        UnattendedRun run(options, window, stream, stream);
        QSignalSpy finished(&run, &UnattendedRun::finished);
        run.start();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(text.contains(QStringLiteral("Alpha")), qPrintable(text));
    }

    void closedInTheMiddle_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("latency");
        QTest::newRow("during a wait") << QByteArray("wait 30000") << 0;
        QTest::newRow("before an answer") << QByteArray(ReadVoltage) << 1500;
    }

    void closedInTheMiddle()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, latency);
        Options options;
        options.commandFile = file(line + '\n' + line + "\n# never\n");
        RealWorkbench bench(options);
        bench.service.setLatency(std::chrono::milliseconds(latency));
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_VERIFY(bench.console()->property("fileRunning").toBool());
        QVERIFY(finished.isEmpty());
        QVERIFY(bench.window->close());
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QVERIFY2(bench.errText.contains(QStringLiteral("closed")), qPrintable(bench.errText));
        QVERIFY(!bench.outText.contains(QStringLiteral("# never")));
    }

    void controllersVanishInTheMiddle()
    {
        Options options;
        options.commandFile = file(QByteArray("wait 0300\n") + ReadVoltage + "\n# after\n");
        RealWorkbench bench(options);
        QSignalSpy finished(bench.run.get(), &UnattendedRun::finished);
        bench.run->start();
        QTRY_VERIFY(bench.console()->property("fileRunning").toBool());
        const auto controllers = bench.service.allControllers();
        for (const auto &controller : controllers)
            QVERIFY(bench.service.setControllerAvailable(controller.first, false));
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY2(!bench.outText.contains(QStringLiteral("\"trigger\":\"true\"")), qPrintable(bench.outText));
        QVERIFY2(bench.outText.contains(QStringLiteral("# after")), qPrintable(bench.outText));
    }
};

QTEST_MAIN(TestUnattendedRun)

#include "tst_unattended_run.moc"
