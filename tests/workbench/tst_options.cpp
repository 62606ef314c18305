#include "workbench/app/options.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using workbench::Options;
using workbench::OptionsResult;
using workbench::parseOptions;

namespace
{

QStringList line(const QString &arguments)
{
    return QStringList(QStringLiteral("terminal-workbench"))
        + arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingAskedFor()
    {
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(QString()), options, message), OptionsResult::Run);
        QVERIFY(!options.hasTask());
        QVERIFY(!options.quitWhenDone);
        QCOMPARE(options.latency, -1);
    }

    void everythingIsTaken()
    {
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(QStringLiteral(
                                  "--plugin p.so --config-dir c --run-command-file r.txt --controller k "
                                  "--screenshot s.png --quit-when-done --latency 250")),
                              options, message),
                 OptionsResult::Run);
        QCOMPARE(options.pluginFile, QStringLiteral("p.so"));
        QCOMPARE(options.configDir, QStringLiteral("c"));
        QCOMPARE(options.commandFile, QStringLiteral("r.txt"));
        QCOMPARE(options.controller, QStringLiteral("k"));
        QCOMPARE(options.screenshotFile, QStringLiteral("s.png"));
        QVERIFY(options.quitWhenDone);
        QCOMPARE(options.latency, 250);
        QVERIFY(options.hasTask());
    }

    void theFileToBegin_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("file");
        QTest::newRow("none") << QStringLiteral("--screenshot s.png") << QString();
        QTest::newRow("command file")
            << QStringLiteral("--run-command-file r.txt") << QStringLiteral("r.txt");
        QTest::newRow("Python file") << QStringLiteral("--run-python-file r.py --quit-when-done")
                                     << QStringLiteral("r.py");
        QTest::newRow("shown") << QStringLiteral("--editor-file e.txt") << QStringLiteral("e.txt");
    }

    void theFileToBegin()
    {
        QFETCH(QString, arguments);
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(arguments), options, message), OptionsResult::Run);
        QTEST(options.file(), "file");
        QVERIFY(options.hasTask());
    }

    void refused_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("named"); // what the text names
        const auto row = [](const char *name, const char *arguments, const char *named) {
            QTest::newRow(name) << QString::fromLatin1(arguments) << QString::fromLatin1(named);
        };
        row("unknown option", "--plugins x", "plugins");
        row("missing value", "--plugin", "plugin");
        row("an option of the library's own", "--help-all", "help-all");
        row("nothing to be done with", "--quit-when-done", "quit-when-done");
        row("empty value", "--plugin=", "plugin");
        row("stray argument", "ramp.txt", "ramp.txt");
        row("latency no number", "--latency fast", "fast");
        row("latency negative", "--latency=-1", "-1");
        row("latency above the limit", "--latency 60001", "60000");
        row("latency empty", "--latency=", "latency");
        row("controller without file", "--controller left", "--run-command-file");
        row("controller for a script", "--run-python-file a.py --controller left", "--run-command-file");
        row("two files for one editor", "--run-command-file a --editor-file b", "--editor-file");
        row("plant that is not there", "--plant no/plant.json", "no/plant.json");
        row("plant empty", "--plant=", "plant");
        row("seed no number", "--seed soon", "soon");
        row("seed negative", "--seed=-1", "4294967295");
        row("seed above the limit", "--seed 4294967296", "4294967296");
        row("two files to execute", "--run-command-file a --run-python-file b", "--run-python-file");
    }

    void refused()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, named);
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(arguments), options, message), OptionsResult::Refuse);
        QVERIFY2(message.contains(named), qUtf8Printable(message));
    }

    void ownPlant()
    {
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(QStringLiteral("--seed 4294967295")), options, message),
                 OptionsResult::Run);
        QCOMPARE(options.plant.controllers.size(), std::size_t(2));
        QCOMPARE(options.plant.seed, 4294967295U);
        QCOMPARE(parseOptions(line(QString()), options, message), OptionsResult::Run);
    }

    void plantOfAFile_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<quint32>("seed");
        QTest::newRow("its own seed") << QString() << 5U;
        QTest::newRow("another seed") << QStringLiteral(" --seed 6") << 6U;
    }

    void plantOfAFile()
    {
        QFETCH(QString, arguments);
        const QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("plant.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"seed": 5, "controllers": [{"name": "hall"}]})");
        file.close();
        Options options;
        QString message;
        QVERIFY2(
            parseOptions(line(QStringLiteral("--plant ") + file.fileName() + arguments), options, message)
                == OptionsResult::Run,
            qUtf8Printable(message));
        QCOMPARE(options.plant.controllers.size(), std::size_t(1));
        QCOMPARE(options.plant.controllers.front().connectionName, QStringLiteral("hall"));
        QTEST(options.plant.seed, "seed");
    }

    void brokenPlantFile()
    {
        const QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("plant.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\n\"seed\": -5, \"controllers\": [{\"name\": \"hall\"}]}");
        file.close();
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(QStringLiteral("--plant ") + file.fileName()), options, message),
                 OptionsResult::Refuse);
        QCOMPARE(message,
                 file.fileName()
                     + QStringLiteral(":2:9: \"seed\" of a plant is -5; allowed is a whole number from 0 to "
                                      "4294967295"));
    }

    void latencyAtItsLimits_data()
    {
        QTest::addColumn<int>("latency");
        QTest::newRow("none") << 0;
        QTest::newRow("longest") << 60000;
    }

    void latencyAtItsLimits()
    {
        QFETCH(int, latency);
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(QStringLiteral("--latency %1").arg(latency)), options, message),
                 OptionsResult::Run);
        QCOMPARE(options.latency, latency);
    }

    void informs_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("text");
        QTest::newRow("help") << QStringLiteral("--help") << QStringLiteral("--run-command-file");
        QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("7.8.9");
    }

    void informs()
    {
        QFETCH(QString, argument);
        QFETCH(QString, text);
        QCoreApplication::setApplicationVersion(QStringLiteral("7.8.9"));
        Options options;
        QString message;
        QCOMPARE(parseOptions(line(argument), options, message), OptionsResult::Inform);
        QVERIFY2(message.contains(text), qUtf8Printable(message));
    }
};

QTEST_GUILESS_MAIN(TestOptions)

#include "tst_options.moc"
