#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace
{

struct Outcome
{
    int exitCode = -1;
    QString out;
    QString err;
};

const QString ExampleDir = QStringLiteral(EXAMPLES "/command_files");

} // namespace

/// The program as a user starts it.
class TestTerminalWorkbench : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    Outcome start(const QStringList &arguments,
                  const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(QStringLiteral(WORKBENCH),
                      QStringList(QStringLiteral("--config-dir")) + QStringList(dir.path()) + arguments);
        Outcome outcome;
        // An example waits for ramps; how long is the file's own business.
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

private Q_SLOTS:
    void plantFile()
    {
        QFile commands(dir.filePath(QStringLiteral("commands.txt")));
        QVERIFY(commands.open(QIODevice::WriteOnly));
        commands.write(R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"24","a":"24",)"
                       R"("c":"15"},"i":"Status.voltageNominal","v":"","u":""}}],"r":"websocket"})"
                       "\n");
        commands.close();
        const Outcome outcome = start(
            {QStringLiteral("--plant"), QStringLiteral(EXAMPLES "/plants/large.json"),
             QStringLiteral("--run-command-file"), commands.fileName(), QStringLiteral("--quit-when-done")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QVERIFY2(outcome.out.contains(QLatin1String("\"value\":3000,\"unit\":\"V\"")),
                 qPrintable(outcome.out));
    }

    void brokenPlantFile()
    {
        QFile plant(dir.filePath(QStringLiteral("plant.json")));
        QVERIFY(plant.open(QIODevice::WriteOnly));
        plant.write("{\n \"controller\": []}");
        plant.close();
        const Outcome outcome =
            start({QStringLiteral("--plant"), plant.fileName(), QStringLiteral("--screenshot"),
                   dir.filePath(QStringLiteral("none.png")), QStringLiteral("--quit-when-done")});
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY2(
            outcome.err.contains(plant.fileName()
                                 + QStringLiteral(":2:2: a plant has no field \"controller\"; it has: seed, "
                                                  "controllers, faults, messages\n")),
            qPrintable(outcome.err));
        QVERIFY(outcome.out.isEmpty());
    }

    void examples_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = QDir(ExampleDir).entryList({QStringLiteral("*.txt")}, QDir::Files);
        QVERIFY(files.contains(QStringLiteral("ramp_up.txt")));
        for (const QString &file : files)
            QTest::newRow(qPrintable(file)) << QDir(ExampleDir).filePath(file);
    }

    void examples()
    {
        QFETCH(QString, file);
        QFile example(file);
        QVERIFY(example.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(example.readAll()).split(QLatin1Char('\n'));
        QCOMPARE(lines.constLast(), QString()); // without a last line feed the last line is not executed
        const Outcome outcome =
            start({QStringLiteral("--run-command-file"), file, QStringLiteral("--quit-when-done")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));

        // Every request succeeded, and every line was executed, in this order.
        const int requests = lines.filter(QRegularExpression(QStringLiteral("^\\{"))).size();
        QCOMPARE(outcome.out.count(QStringLiteral("[{\"trigger\":\"true\"}]")), requests);
        QCOMPARE(outcome.out.count(QStringLiteral("\"trigger\"")), requests);
        int place = 0;
        for (int i = 0; i + 1 < lines.size(); ++i) {
            place = outcome.out.indexOf(QStringLiteral("> ") + lines.at(i) + QLatin1Char('\n'), place);
            QVERIFY2(place >= 0, qPrintable(lines.at(i)));
        }
    }

    void rampUpShowsARamp()
    {
        const Outcome outcome =
            start({QStringLiteral("--run-command-file"), ExampleDir + QStringLiteral("/ramp_up.txt"),
                   QStringLiteral("--quit-when-done")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QVector<double> volts;
        QRegularExpressionMatchIterator matches =
            QRegularExpression(QStringLiteral("\"item\":\"Status\\.voltageMeasure\",\"value\":([-0-9.e]+)"))
                .globalMatch(outcome.out);
        while (matches.hasNext())
            volts.append(matches.next().captured(1).toDouble());
        QCOMPARE(volts.size(), 5);
        QCOMPARE(volts.at(0), 0.0);
        QVERIFY2(volts.at(1) > 200 && volts.at(1) < 1000, qPrintable(QString::number(volts.at(1))));
        QVERIFY2(volts.at(2) > volts.at(1) && volts.at(2) <= 1000, qPrintable(QString::number(volts.at(2))));
        QCOMPARE(volts.at(3), 1000.0);
        QCOMPARE(volts.at(4), 0.0);
    }

    void savesAPicture()
    {
        const QString picture = dir.filePath(QStringLiteral("window.png"));
        const Outcome outcome =
            start({QStringLiteral("--screenshot"), picture, QStringLiteral("--quit-when-done")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
        QCOMPARE(QImage(picture).size(), QSize(1280, 800));
        QVERIFY2(outcome.out.contains(picture), qPrintable(outcome.out));
    }

    void keepsSettingsOnlyInTheNamedFolder()
    {
        const Outcome outcome = start({QStringLiteral("--screenshot"), dir.filePath(QStringLiteral("x.png")),
                                       QStringLiteral("--quit-when-done")});
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("layout.json"))).size() > 0);
    }

    void needsNoDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("said");
        QTest::newRow("help") << QStringList(QStringLiteral("--help")) << 0 << QStringLiteral("--screenshot");
        QTest::newRow("nonsense") << QStringList(QStringLiteral("nonsense")) << 2
                                  << QStringLiteral("Unexpected argument \"nonsense\"");
        QTest::newRow("nothing to do")
            << QStringList() << 2 << QStringLiteral("There is no screen to show a window on.");
        QTest::newRow("a picture") << QStringList{QStringLiteral("--screenshot"),
                                                  dir.filePath(QStringLiteral("no_display.png"))}
                                   << 0 << QStringLiteral("no_display.png");
    }

    void needsNoDisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, said);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QLatin1String(variable));
        const Outcome outcome = start(arguments, environment);
        QVERIFY2(outcome.exitCode == exitCode, qPrintable(outcome.err));
        QVERIFY2((outcome.out + outcome.err).contains(said), qPrintable(outcome.out + outcome.err));
    }

    void refuses_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("named");
        const auto row = [](const char *name, const char *arguments, int exitCode, const char *named) {
            QTest::newRow(name) << QString::fromLatin1(arguments).split(QLatin1Char(' ')) << exitCode
                                << QString::fromLatin1(named);
        };
        row("unknown option", "--no-such-option", 2, "no-such-option");
        row("bad latency", "--latency soon", 2, "soon");
        row("no such plug-in", "--plugin /no/such.so", 1, "/no/such.so");
        row("no plug-in at all", "--plugin " EXAMPLES "/command_files/ramp_up.txt", 1, "not a plug-in");
        row("no such command file", "--run-command-file /no/such.txt", 1, "/no/such.txt");
        row("no such controller",
            "--controller attic --run-command-file " EXAMPLES "/command_files/ramp_up.txt", 1, "attic");
    }

    void refuses()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, named);
        const Outcome outcome = start(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        QVERIFY2(outcome.err.contains(named), qPrintable(outcome.err));
        QCOMPARE(outcome.out, QString());
    }
};

QTEST_GUILESS_MAIN(TestTerminalWorkbench)

#include "tst_terminal_workbench.moc"
