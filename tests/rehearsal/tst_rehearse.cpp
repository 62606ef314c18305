#include "tests/rehearsal/rehearsal_program.h"
#include "workbench/rehearsal/command_file_review.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QTest>

#include <csignal>

namespace
{

QByteArray request(const char *command, const char *place, const char *item, const char *value)
{
    return QByteArray(R"({"i":"<session_id>","t":"request","c":[{"c":")") + command + R"(","p":{"p":{)"
        + place + R"(},"i":")" + item + R"(","v":")" + value + R"(","u":""}}],"r":"websocket"})" + '\n';
}

const char *const Channel = R"("l":"0","a":"2","c":"1")";
const char *const Module = R"("l":"0","a":"2","c":"")";

} // namespace

/// The program with command files.
class TestRehearse : public QObject
{
    Q_OBJECT

private:
    RehearsalProgram program;

    QString value(const QVector<QJsonObject> &objects, int index, const char *name)
    {
        return objects.value(index).value(QLatin1String(name)).toVariant().toString();
    }

private Q_SLOTS:
    void examples_data()
    {
        QTest::addColumn<QString>("file");
        const QDir dir(QStringLiteral(EXAMPLES "/command_files"));
        const QStringList files = dir.entryList({QStringLiteral("*.txt")}, QDir::Files);
        QVERIFY(!files.isEmpty());
        for (const QString &file : files)
            QTest::newRow(qPrintable(file)) << dir.filePath(file);
    }

    void examples()
    {
        QFETCH(QString, file);
        const auto outcome = RehearsalProgram::run({file});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out + outcome.err));
        QVERIFY2(outcome.out.contains(QStringLiteral("1 file, nothing failed")), qPrintable(outcome.out));
        QVERIFY2(!outcome.out.contains(QStringLiteral("WARNING")), qPrintable(outcome.out));
    }

    void aRampAndItsReport()
    {
        const QString report = program.path(QStringLiteral("ramp"));
        const auto outcome = RehearsalProgram::run(
            {QStringLiteral(EXAMPLES "/command_files/ramp_up.txt"), QStringLiteral("--limit"),
             QStringLiteral("*.voltage<=800 V"), QStringLiteral("--limit"),
             QStringLiteral("0.2.1.current<=1 mA"), QStringLiteral("--report"), report});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.out.contains(QStringLiteral("crosses the limit \"*.voltage<=800 V\"")),
                 qPrintable(outcome.out));
        QVERIFY(!outcome.out.contains(QStringLiteral("the limit \"0.2.1.current")));
        QVERIFY(outcome.out.contains(QStringLiteral("at the end off; crossed a limit\n")));
        QVERIFY(QFile::exists(report + QStringLiteral("/report.html")));

        const QJsonObject json = RehearsalProgram::readReport(report);
        QCOMPARE(json.value(QLatin1String("exitCode")).toInt(), 1);
        QCOMPARE(json.value(QLatin1String("failures")).toArray().size(), 1);
        QCOMPARE(json.value(QLatin1String("channels")).toArray().size(), 1);
        const QJsonValue channel = json.value(QLatin1String("channels")).toArray().at(0);
        QCOMPARE(channel[QLatin1String("name")].toString(), QStringLiteral("local/0.2.1"));
        const double peak = channel[QLatin1String("voltagePeak")][QLatin1String("value")].toDouble();
        QVERIFY2(std::abs(peak - 1000) < 0.5, qPrintable(QString::number(peak)));
        // 400 V/s up and down, as the module's ramp speed says.
        const QJsonArray ramps = channel[QLatin1String("ramps")].toArray();
        QCOMPARE(ramps.size(), 2);
        for (const QJsonValue &ramp : ramps) {
            const double seconds = ramp[QLatin1String("seconds")].toDouble();
            QVERIFY2(std::abs(seconds - 2.5) < 0.15, qPrintable(QString::number(seconds)));
        }
        const QJsonArray requests = json.value(QLatin1String("requests")).toArray();
        QCOMPARE(requests.size(), 12);
        for (const QJsonValue &made : requests) {
            QCOMPARE(made[QLatin1String("outcome")].toString(), QStringLiteral("done"));
            QVERIFY(made[QLatin1String("line")].toInt() > 0);
        }
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("named");
        QTest::newRow("refused") << "# a\n" + request("setItem", Channel, "Control.voltageSet", "99999")
                                 << QStringLiteral("request") << 2 << QStringLiteral("refused");
        QTest::newRow("denied") << request("getItem", Channel, "Control.clearAll", "")
                                << QStringLiteral("request") << 1 << QStringLiteral("denied");
        QTest::newRow("no such item") << request("getItem", Module, "Status.nope", "")
                                      << QStringLiteral("request") << 1 << QStringLiteral("no such item");
        QTest::newRow("no request at all") << QByteArray("# a\n\nhello\n") << QStringLiteral("request") << 3
                                           << QStringLiteral("was not taken");
    }

    void failures()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, kind);
        QFETCH(int, line);
        QFETCH(QString, named);
        const QString path = program.write(QStringLiteral("fails.txt"), file);
        const auto outcome =
            RehearsalProgram::run({path, QStringLiteral("--format"), QStringLiteral("json")});
        QCOMPARE(outcome.exitCode, 1);
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "failure");
        QCOMPARE(found.size(), 1);
        QCOMPARE(value(found, 0, "kind"), kind);
        QCOMPARE(value(found, 0, "file"), path);
        QCOMPARE(value(found, 0, "line"), QString::number(line));
        QVERIFY2(value(found, 0, "text").contains(named), qPrintable(value(found, 0, "text")));
        QCOMPARE(value(RehearsalProgram::objects(outcome, "result"), 0, "failures"), QStringLiteral("1"));
    }

    void aRequestThatIsNotAnswered()
    {
        const QString faults =
            program.write(QStringLiteral("faults.json"),
                          R"({"faults":[{"at":0,"fault":"slowAnswers","controller":"local","amount":30}]})");
        const QString path = program.write(
            QStringLiteral("slow.txt"), "wait 0100\n" + request("getItem", Module, "Status.temperature", ""));
        const auto outcome = RehearsalProgram::run(
            {path, QStringLiteral("--faults"), faults, QStringLiteral("--format"), QStringLiteral("json")});
        QVERIFY2(outcome.exitCode == 1, qPrintable(outcome.err));
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "failure");
        QCOMPARE(found.size(), 1);
        QCOMPARE(value(found, 0, "kind"), QStringLiteral("timeout"));
        QCOMPARE(value(found, 0, "line"), QStringLiteral("2"));
    }

    // A warning is no failure.
    void warnings()
    {
        const QString path = program.write(QStringLiteral("odd.txt"), "# a\nwait 800\n# b\n\n\n# c\n");
        const auto outcome =
            RehearsalProgram::run({path, QStringLiteral("--format"), QStringLiteral("json")});
        QCOMPARE(outcome.exitCode, 0);
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "warning");
        QCOMPARE(found.size(), 2);
        QCOMPARE(value(found, 0, "line"), QStringLiteral("2"));
        QCOMPARE(value(found, 1, "line"), QStringLiteral("5"));
    }

    void warnsOfTheFileItself_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("named");
        const auto row = [](const char *title, const char *name, const QByteArray &content, const char *line,
                            const char *named) {
            QTest::newRow(title) << QString::fromLatin1(name) << content << QString::fromLatin1(line)
                                 << QString::fromLatin1(named);
        };
        row("empty", "empty.txt", {}, "", "is empty");
        row("an empty script", "empty.py", "\n", "", "is empty");
        row("not UTF-8", "latin.txt", "# a\n# caf\xe9\n", "2", "ISO 8859-1");
        row("no text", "binary.txt", QByteArray("# a\n# \0\n", 8), "2", "NUL");
        row("a script that is not UTF-8", "latin.py", "a = 1\n\nprint('caf\xe9')\n", "3",
            "Python itself might");
    }

    void warnsOfTheFileItself()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QString, line);
        QFETCH(QString, named);
        const auto outcome = RehearsalProgram::run(
            {program.write(name, content), QStringLiteral("--format"), QStringLiteral("json")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        const QVector<QJsonObject> found = RehearsalProgram::objects(outcome, "warning");
        QCOMPARE(found.size(), 1);
        QCOMPARE(value(found, 0, "line"), line);
        QVERIFY2(value(found, 0, "text").contains(named), qPrintable(value(found, 0, "text")));
        if (content.contains("caf"))
            QVERIFY2(outcome.out.contains(QStringLiteral("caf\u00e9")), qPrintable(outcome.out));
    }

    // Nobody who rehearses wants to know what the desktop is like.
    void tellsNothingOfTheDesktop()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        const auto outcome = RehearsalProgram::run({program.write(QStringLiteral("quiet.txt"), "# quiet\n")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.err, QString());
    }

    // What the review says is executed is what the terminal executes.
    void theReviewIsTheTerminals_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("plain") << QByteArray("# a\n# b\n");
        QTest::newRow("no line feed") << QByteArray("# a\n# b");
        QTest::newRow("one empty line") << QByteArray("# a\n\n# b\n");
        QTest::newRow("two empty lines") << QByteArray("# a\n\n\n# b\n");
        QTest::newRow("three empty lines") << QByteArray("# a\n\n\n\n# b\n");
        QTest::newRow("four empty lines") << QByteArray("# a\n\n\n\n\n# b\n");
        QTest::newRow("a first empty line") << QByteArray("\n# a\n");
        QTest::newRow("two first empty lines") << QByteArray("\n\n# a\n");
        QTest::newRow("blanks") << QByteArray("# a\n  \n\t\n# b\n");
        QTest::newRow("blanks between empty lines") << QByteArray("# a\n\n  \n\n# b\n");
        QTest::newRow("carriage returns") << QByteArray("# a\r# b\r\r# c\r\r\r# d\r");
        QTest::newRow("both") << QByteArray("# a\r\n\r\n# b\r\n\r\n\r\n# c\r\n");
        QTest::newRow("mixed") << QByteArray("# a\n\r# b\r\n\n# c\n");
        QTest::newRow("waits") << QByteArray(
            "wait 0001\nwait  001\nwait 5\nwait 100001\n  wait 0002  \nwait 1.5\n");
        QTest::newRow("nothing") << QByteArray();
    }

    void theReviewIsTheTerminals()
    {
        QFETCH(QByteArray, file);
        const QString path = program.write(QStringLiteral("review.txt"), file);
        const auto outcome =
            RehearsalProgram::run({path, QStringLiteral("--format"), QStringLiteral("json")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out));
        QStringList echoed;
        const QVector<QJsonObject> lines = RehearsalProgram::objects(outcome, "transcript");
        for (int i = 0; i < lines.size(); ++i) {
            const QString text = value(lines, i, "text");
            if (value(lines, i, "kind") == QLatin1String("input") && text.startsWith(QLatin1String("> ")))
                echoed << text.mid(2);
        }
        QStringList reviewed;
        const auto review = rehearsal::reviewCommandFile(QString::fromUtf8(file));
        for (const rehearsal::CommandLine &line : review.executed)
            reviewed << line.text;
        QCOMPARE(echoed, reviewed);
    }

    void severalFilesAfterEachOther()
    {
        const QString first = program.write(QStringLiteral("1.txt"), "# one\nwait 0100\n");
        const QString second = program.write(QStringLiteral("2.py"), "print('two')\n");
        const QString third = program.write(QStringLiteral("3.txt"), "# three\n");
        const auto outcome =
            RehearsalProgram::run({first, second, third, QStringLiteral("--format"), QStringLiteral("json")});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.out + outcome.err));
        QStringList order;
        const QVector<QJsonObject> all = RehearsalProgram::objects(outcome);
        for (int i = 0; i < all.size(); ++i) {
            const QString type = value(all, i, "type");
            order << (type == QLatin1String("transcript") ? value(all, i, "text") : type);
        }
        QCOMPARE(
            order,
            (QStringList{QStringLiteral("begin"), QStringLiteral("> # one"), QStringLiteral("> wait 0100"),
                         QStringLiteral("waiting for 100 ms"), QStringLiteral("begin"),
                         QStringLiteral("> executing file"), QStringLiteral("two"), QStringLiteral("begin"),
                         QStringLiteral("> # three"), QStringLiteral("result")}));
    }

    void theChosenController()
    {
        const QString path =
            program.write(QStringLiteral("bench.txt"),
                          request("getItem", R"("l":"0","a":"0","c":"0")", "Status.voltageNominal", ""));
        const auto outcome =
            RehearsalProgram::run({path, QStringLiteral("--controller"), QStringLiteral("bench")});
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY2(outcome.out.contains(QStringLiteral("\"value\":1000")), qPrintable(outcome.out));
    }

    // A ramp that a file leaves behind is watched to its end, or warned of.
    void settles_data()
    {
        QTest::addColumn<QString>("settle");
        QTest::addColumn<QString>("endState");
        QTest::addColumn<int>("warnings");
        QTest::newRow("long enough") << QStringLiteral("5") << QStringLiteral("on") << 0;
        QTest::newRow("too short") << QStringLiteral("0.2") << QStringLiteral("ramping") << 1;
    }

    void settles()
    {
        QFETCH(QString, settle);
        const QString report = program.path(QStringLiteral("settles"));
        const QString path = program.write(QStringLiteral("on.txt"),
                                           request("setItem", Channel, "Control.voltageSet", "200")
                                               + request("setItem", Channel, "Control.on", "1"));
        const auto outcome = RehearsalProgram::run(
            {path, QStringLiteral("--settle"), settle, QStringLiteral("--report"), report});
        QCOMPARE(outcome.exitCode, 0);
        const QJsonObject json = RehearsalProgram::readReport(report);
        QTEST(json.value(QLatin1String("channels")).toArray().at(0)[QLatin1String("endState")].toString(),
              "endState");
        QTEST(json.value(QLatin1String("warnings")).toArray().size(), "warnings");
    }

    void unusableArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("named");
        QTest::newRow("no file") << QStringList() << QStringLiteral("nothing to rehearse");
        QTest::newRow("no such file")
            << QStringList{QStringLiteral("none.txt")} << QStringLiteral("none.txt");
        QTest::newRow("no such option")
            << QStringList{QStringLiteral(EXAMPLES "/command_files/ramp_up.txt"), QStringLiteral("--fast")}
            << QStringLiteral("fast");
        QTest::newRow("no such plug-in")
            << QStringList{QStringLiteral(EXAMPLES "/command_files/ramp_up.txt"), QStringLiteral("--plugin"),
                           QStringLiteral("/no/such.so")}
            << QStringLiteral("/no/such.so");
    }

    void unusableArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, named);
        const auto outcome = RehearsalProgram::run(arguments);
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY2(outcome.err.contains(named), qPrintable(outcome.err));
        QCOMPARE(outcome.out, QString());
    }

    void helps()
    {
        const auto outcome = RehearsalProgram::run({QStringLiteral("--help")});
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(outcome.out.contains(QStringLiteral("--limit")));
    }

    // Also where there is a display, which is never touched.
    void needsNoDisplay()
    {
        const QString path = program.write(QStringLiteral("nothing.txt"), "# nothing\n");
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("DISPLAY", ":987");
        const auto outcome = RehearsalProgram::run({path});
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("DISPLAY");
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.err));
    }

    // "rehearse ... | head": the reader goes, the rehearsal does not.
    void goesOnWithoutAReader()
    {
        const QString report = program.path(QStringLiteral("unread"));
        const QString path = program.write(QStringLiteral("unread.txt"), "# a\nwait 0100\n# b\n");
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(QStringLiteral("bash"),
                      {QStringLiteral("-c"),
                       QStringLiteral("exec 3> >(:); wait $!; "
                                      "exec \"$0\" rehearse \"$1\" --report \"$2\" >&3"),
                       QStringLiteral(WORKBENCH), path, report});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("The transcript could not be written"));
        QCOMPARE(RehearsalProgram::readReport(report).value(QLatin1String("transcript")).toArray().size(), 4);
    }

    void interrupts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("signal");
        QTest::addColumn<int>("exitCode");
        const QByteArray commands =
            "# begun\n" + request("setItem", Channel, "Control.on", "1") + "wait 60000\n";
        QTest::newRow("a command file") << QStringLiteral("long.txt") << commands << SIGINT << 130;
        // It is not answered within the time that it takes to stop it.
        QTest::newRow("a request") << QStringLiteral("unanswered.txt")
                                   << "# begun\n" + request("setItem", Channel, "Control.on", "1") << SIGINT
                                   << 130;
        QTest::newRow("a script") << QStringLiteral("long.py")
                                  << QByteArray("import time\nprint('begun')\ntime.sleep(60)\n") << SIGINT
                                  << 130;
        QTest::newRow("a script that is busy")
            << QStringLiteral("busy.py") << QByteArray("print('begun')\nwhile True: pass\n") << SIGINT << 130;
        QTest::newRow("from outside") << QStringLiteral("long.txt") << commands << SIGTERM << 143;
    }

    void interrupts()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, signal);
        QFETCH(int, exitCode);
        const QString report = program.path(QStringLiteral("interrupted"));
        const QString faults =
            program.write(QStringLiteral("slow.json"),
                          R"({"faults":[{"at":0,"fault":"slowAnswers","controller":"local","amount":1.9}]})");
        QProcess process;
        process.start(QStringLiteral(WORKBENCH),
                      {QStringLiteral("rehearse"), program.write(name, content),
                       program.write(QStringLiteral("next.txt"), "# next\n"), QStringLiteral("--report"),
                       report, QStringLiteral("--faults"), faults});
        QByteArray out;
        QTRY_VERIFY_WITH_TIMEOUT((out += process.readAllStandardOutput()).contains("begun"), 30000);
        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signal), 0);
        QVERIFY(process.waitForFinished(30000));
        out += process.readAllStandardOutput();
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), exitCode);
        QVERIFY2(!out.contains("# next"), out.constData());
        QVERIFY2(out.contains("\n2 files, 1 stopped, 1 not run, nothing failed ("), out.constData());
        const QJsonObject json = RehearsalProgram::readReport(report);
        QCOMPARE(json.value(QLatin1String("exitCode")).toInt(), exitCode);
        QVERIFY(!json.value(QLatin1String("interruption")).toString().isEmpty());
        QCOMPARE(json.value(QLatin1String("failures")).toArray(), QJsonArray());
        QCOMPARE(json.value(QLatin1String("files")).toArray().at(0)[QLatin1String("outcome")].toString(),
                 QStringLiteral("stopped"));
        QCOMPARE(json.value(QLatin1String("files")).toArray().at(1)[QLatin1String("outcome")].toString(),
                 QStringLiteral("not run"));
    }
};

QTEST_GUILESS_MAIN(TestRehearse)
#include "tst_rehearse.moc"
