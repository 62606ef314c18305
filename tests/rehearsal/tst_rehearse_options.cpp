#include "workbench/app/rehearse_options.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using workbench::OptionsResult;
using workbench::parseRehearseOptions;
using workbench::RehearseOptions;

class TestRehearseOptions : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    QString write(const char *name, const QByteArray &content)
    {
        const QString path = dir.filePath(QLatin1String(name));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    /// The arguments with "@" for the folder of the test's files.
    QStringList arguments(const char *text) const
    {
        QStringList list = QString::fromLatin1(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
        for (QString &argument : list)
            argument.replace(QLatin1Char('@'), dir.path());
        return list;
    }

private Q_SLOTS:
    void initTestCase()
    {
        write("a.txt", "# a\n");
        write("b.py", "print(1)\n");
        write("C.PY", "print(2)\n");
        write("not_a_plant.json", "{");
        write("faults.json",
              R"({"faults":[{"at":2,"fault":"short","controller":"local","channel":"0.2.1"}]})");
        write("blocked", "");
    }

    void reads()
    {
        RehearseOptions options;
        QString message;
        const OptionsResult result = parseRehearseOptions(
            arguments("@/a.txt|@/b.py|@/C.PY|--controller|bench|--seed|42|--limit|*.voltage<=1 kV|--limit|"
                      "0.0.1.current<=2 mA|--report|@/new/report|--format|json|--settle|2.5|--plugin|p.so"),
            options, message);
        QVERIFY2(result == OptionsResult::Run, qPrintable(message));
        QCOMPARE(options.files.size(), std::size_t{3});
        QCOMPARE(options.files.at(0).text, QStringLiteral("# a\n"));
        QVERIFY(!options.files.at(0).isScript);
        QVERIFY(options.files.at(1).isScript);
        QVERIFY(options.files.at(2).isScript);
        QCOMPARE(options.controller, QStringLiteral("bench"));
        QCOMPARE(options.plant.seed, 42U);
        QCOMPARE(options.limits.size(), 2);
        QCOMPARE(options.limits.at(0).value, 1000.0);
        QVERIFY(QDir(dir.filePath(QStringLiteral("new/report"))).exists());
        QVERIFY(QDir(options.reportDir).isEmpty());
        QVERIFY(options.format == RehearseOptions::Format::Json);
        QCOMPARE(options.settleTime, 2.5);
        QCOMPARE(options.pluginFile, QStringLiteral("p.so"));
    }

    void defaults()
    {
        RehearseOptions options;
        QString message;
        QVERIFY(parseRehearseOptions(arguments("@/a.txt"), options, message) == OptionsResult::Run);
        QVERIFY(options.format == RehearseOptions::Format::Text);
        QCOMPARE(options.plant.controllers.size(), simulator::PlantLayout::rehearsal().controllers.size());
        QCOMPARE(options.plant.seed, simulator::PlantLayout::rehearsal().seed);
        QVERIFY(options.plant.faults.empty());
        QVERIFY(options.reportDir.isEmpty());
        QVERIFY(options.limits.isEmpty());
    }

    void readsFaults()
    {
        RehearseOptions options;
        QString message;
        const OptionsResult result =
            parseRehearseOptions(arguments("@/a.txt|--faults|@/faults.json"), options, message);
        QVERIFY2(result == OptionsResult::Run, qPrintable(message));
        QCOMPARE(options.plant.faults.size(), std::size_t{1});
        QCOMPARE(options.plant.faults.at(0).at, 2.0);
        QVERIFY(options.plant.faults.at(0).fault.kind == simulator::FaultKind::Short);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("named");
        QTest::addColumn<QString>("allowed");
        const auto row = [](const char *name, const char *given, const char *named,
                            const char *allowed = "") {
            QTest::newRow(name) << QString::fromLatin1(given) << QString::fromLatin1(named)
                                << QString::fromLatin1(allowed);
        };
        row("no file", "", "nothing to rehearse", "command files or Python files");
        row("an option that there is not", "@/a.txt|--speed|2", "speed");
        row("no such file", "@/none.txt", "none.txt");
        row("a folder", "@", "it is a folder");
        row("one of two files is missing", "@/a.txt|@/none.py", "none.py");
        row("no value", "@/a.txt|--seed", "seed");
        row("an empty value", "@/a.txt|--report=", "--report", "needs a value");
        row("twice", "@/a.txt|--seed|1|--seed|2", "--seed", "once is allowed");
        row("no such format", "@/a.txt|--format|xml", "\"xml\"", "\"text\" nor \"json\"");
        row("a seed that is no number", "@/a.txt|--seed|dice", "\"dice\"", "0 to 4294967295");
        row("a negative seed", "@/a.txt|--seed=-1", "\"-1\"", "0 to 4294967295");
        row("a seed that is too large", "@/a.txt|--seed|4294967296", "\"4294967296\"", "0 to 4294967295");
        row("a negative time", "@/a.txt|--settle=-1", "\"-1\"", "0 to 3600");
        row("a time that is none", "@/a.txt|--settle|nan", "\"nan\"", "0 to 3600");
        row("no such controller", "@/a.txt|--controller|attic", "\"attic\"",
            "Rehearsal controller, Bench supply");
        row("a limit without a unit", "@/a.txt|--limit|*.voltage<=5", "\"*.voltage<=5\"",
            "line.module.channel.voltage<=1500 V");
        row("a limit for nothing", "@/a.txt|--limit|0.9.0.voltage<=5 V", "0.9.0", "no channel of the plant");
        row("no such plant", "@/a.txt|--plant|@/none.json", "none.json");
        row("a broken plant", "@/a.txt|--plant|@/not_a_plant.json", "not_a_plant.json:1");
        row("no such faults", "@/a.txt|--faults|@/none.json", "none.json");
        row("broken faults", "@/a.txt|--faults|@/not_a_plant.json", "not_a_plant.json:1");
        row("a report in a file", "@/a.txt|--report|@/blocked", "blocked");
        row("a report below a file", "@/a.txt|--report|@/blocked/report", "cannot be made");
    }

    void refuses()
    {
        QFETCH(QString, given);
        QFETCH(QString, named);
        QFETCH(QString, allowed);
        RehearseOptions options;
        QString message;
        QVERIFY(parseRehearseOptions(arguments(qPrintable(given)), options, message)
                == OptionsResult::Refuse);
        QVERIFY2(message.contains(named), qPrintable(message));
        QVERIFY2(message.contains(allowed), qPrintable(message));
    }

    void helps()
    {
        RehearseOptions options;
        QString message;
        QVERIFY(parseRehearseOptions({QStringLiteral("--help")}, options, message) == OptionsResult::Inform);
        for (const char *name : {"--controller", "--plant", "--seed", "--faults", "--limit", "--report",
                                 "--format", "--settle", "FILE...", "exit code"})
            QVERIFY2(message.contains(QLatin1String(name)), name);
    }
};

QTEST_GUILESS_MAIN(TestRehearseOptions)
#include "tst_rehearse_options.moc"
