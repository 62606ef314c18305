#include "tests/examples/script_bench.h"

#include <QtTest>

#include <memory>

namespace
{

const QString Script = QStringLiteral("safe_shutdown_of_crate.py");
const QString Power = QStringLiteral("local:0.1000.Control.power");

QString item(const char *path)
{
    return QStringLiteral("local:") + QLatin1String(path);
}

} // namespace

/// Shutting the simulated crate down from a script.
class TestSafeShutdownScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase() { bench.reset(); }

    void rampsDownBeforeThePowerGoes();
    void namesAChannelThatStaysOn();
    void namesAChannelThatCannotBeRead();
    void namesAChannelWithAVoltageLeft();
    void namesAChannelThatIsOnWithoutAVoltage();
    void looksAtOutputsThatItCannotSee();
    void saysThatThePowerStays_data();
    void saysThatThePowerStays();
    void losesTheConnection();
    void findsTheCrateOffAlready();
    void saysWhichCrateIsMissing();

private:
    std::unique_ptr<ScriptBench> bench;
};

void TestSafeShutdownScript::initTestCase()
{
    bench = std::make_unique<ScriptBench>();
}

// Three channels in different modules are up, the last one of them without a load.
void TestSafeShutdownScript::init()
{
    bench->renew();
    const struct
    {
        const char *channel;
        int voltage;
    } channels[] = {{"0.0.1", 3000}, {"0.2.5", 1500}, {"0.3.15", 400}};
    for (const auto &channel : channels) {
        const QString path = item(channel.channel);
        bench->write(path + QStringLiteral(".Control.voltageRampspeedUp"), QStringLiteral("500"));
        bench->write(path + QStringLiteral(".Control.voltageRampspeedDown"), QStringLiteral("100"));
        bench->write(path + QStringLiteral(".Control.voltageSet"), QString::number(channel.voltage));
        bench->write(path + QStringLiteral(".Control.on"), QStringLiteral("1"));
    }
    bench->letTimePass(10);
    QCOMPARE(bench->readNumber(item("0.0.1.Status.voltageMeasure")), 3000.0);
    QCOMPARE(bench->readNumber(item("0.3.15.Status.voltageMeasure")), 400.0);
}

void TestSafeShutdownScript::rampsDownBeforeThePowerGoes()
{
    double highest = -1;
    bench->faults().setWriteListener([this, &highest](const QString &written) {
        if (written != Power)
            return;
        for (const char *path : {"0.0.1", "0.2.5", "0.3.15"})
            highest = qMax(highest, bench->readNumber(item(path) + QStringLiteral(".Status.voltageMeasure")));
    });
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error, QString());
    QVERIFY2(outcome.output.startsWith(QStringLiteral("Crate 0.1000: switching 52 channels off.\n"
                                                      "3 channels are not at a safe voltage yet.\n")),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.endsWith(
                 QStringLiteral("1 channels are not at a safe voltage yet.\n"
                                "Crate 0.1000 is off. All channels were below 60 V before.\n")),
             qPrintable(outcome.output));
    QVERIFY(highest >= 0);
    QVERIFY2(highest <= 60, qPrintable(QString::number(highest)));
    QVERIFY(bench->now() >= 10 + 29.4); // 3000 V to 60 V at 100 V/s
    QCOMPARE(bench->faults().writes().last(), Power + QStringLiteral("=0"));
    QCOMPARE(bench->read(Power), QStringLiteral("false"));
    // The other controller is none of its business.
    QCOMPARE(bench->faults().writes().filter(QStringLiteral("bench:")), QStringList());
}

void TestSafeShutdownScript::namesAChannelThatStaysOn()
{
    bench->faults().refuseToWrite(item("0.2.5.Control.on"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error,
             QStringLiteral(
                 "RuntimeError: 1 channels are not down after 300 s. The power of crate 0.1000 stays on."));
    QVERIFY2(outcome.printed(QStringLiteral("CHANNEL 0.2.5 IS NOT DOWN. Measured voltage: 1500.0 (V).")),
             qPrintable(outcome.output));
    QCOMPARE(bench->read(Power), QStringLiteral("true"));
    QVERIFY(!bench->faults().writes().contains(Power + QStringLiteral("=0")));
    QCOMPARE(bench->read(item("0.0.1.Control.on")), QStringLiteral("false"));
    QCOMPARE(bench->read(item("0.3.15.Control.on")), QStringLiteral("false"));
    QCOMPARE(bench->now(), 310.0);
}

void TestSafeShutdownScript::namesAChannelThatCannotBeRead()
{
    bench->faults().makeUnreadable(item("0.1.3.Status.voltageMeasure"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.printed(QStringLiteral("CHANNEL 0.1.3 IS NOT DOWN. Measured voltage: error (V).")),
             qPrintable(outcome.output));
    QVERIFY(outcome.error.startsWith(QStringLiteral("RuntimeError: 1 channels are not down")));
    QCOMPARE(bench->read(Power), QStringLiteral("true"));
}

// A capacitor behind a negative output, say.
void TestSafeShutdownScript::namesAChannelWithAVoltageLeft()
{
    bench->faults().answer(item("0.1.3.Status.voltageMeasure"), QStringLiteral("-60.5"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.printed(QStringLiteral("CHANNEL 0.1.3 IS NOT DOWN. Measured voltage: -60.5 (V).")),
             qPrintable(outcome.output));
    QVERIFY(outcome.error.startsWith(QStringLiteral("RuntimeError: 1 channels are not down")));
    QCOMPARE(bench->read(Power), QStringLiteral("true"));
}

void TestSafeShutdownScript::namesAChannelThatIsOnWithoutAVoltage()
{
    bench->faults().answer(item("0.1.3.Status.on"), QStringLiteral("true"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.printed(QStringLiteral("CHANNEL 0.1.3 IS NOT DOWN. Measured voltage: 0.0 (V).")),
             qPrintable(outcome.output));
    QCOMPARE(bench->read(Power), QStringLiteral("true"));
}

void TestSafeShutdownScript::looksAtOutputsThatItCannotSee()
{
    // A module that does not say how many channels it has: its channel stays up.
    bench->faults().makeUnreadable(item("0.2.Status.numberOfChannels"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.output.startsWith(QStringLiteral("Crate 0.1000: switching 36 channels off.\n")),
             qPrintable(outcome.output));
    QCOMPARE(outcome.error,
             QStringLiteral(
                 "RuntimeError: All channels are down, but crate 0.1000 reports that an output is still "
                 "on, or does not answer. Its power stays on."));
    QCOMPARE(bench->read(Power), QStringLiteral("true"));
    QCOMPARE(bench->readNumber(item("0.2.5.Status.voltageMeasure")), 1500.0);
}

void TestSafeShutdownScript::saysThatThePowerStays_data()
{
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("refused") << true;
    QTest::newRow("without effect") << false;
}

void TestSafeShutdownScript::saysThatThePowerStays()
{
    QFETCH(bool, isRefused);
    if (isRefused)
        bench->faults().refuseToWrite(Power);
    else
        bench->faults().answer(Power, QStringLiteral("true"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error,
             QStringLiteral(
                 "RuntimeError: All channels are down, but the power of crate 0.1000 cannot be switched "
                 "off."));
    QVERIFY2(!outcome.output.contains(QStringLiteral("is off")), qPrintable(outcome.output));
}

void TestSafeShutdownScript::losesTheConnection()
{
    bench->at(12, [this] { bench->service().closeConnection(QStringLiteral("local")); });
    const ScriptBench::Outcome outcome = bench->run(Script);
    QVERIFY2(outcome.printed(QStringLiteral("CHANNEL 0.0.1 IS NOT DOWN. Measured voltage: error (V).")),
             qPrintable(outcome.output));
    QVERIFY(outcome.error.endsWith(QStringLiteral("The power of crate 0.1000 stays on.")));
}

void TestSafeShutdownScript::findsTheCrateOffAlready()
{
    bench->write(Power, QStringLiteral("0"));
    const ScriptBench::Outcome outcome = bench->run(Script);
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("Crate 0.1000 is off already.\n"));
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestSafeShutdownScript::saysWhichCrateIsMissing()
{
    const ScriptBench::Outcome outcome =
        bench->run(Script, {{QStringLiteral("CONNECTION"), QStringLiteral("\"bench\"")}});
    QCOMPARE(outcome.error, QStringLiteral("RuntimeError: Connection \"bench\" has no crate 0.1000."));
    QCOMPARE(bench->faults().writes(), QStringList());
}

QTEST_GUILESS_MAIN(TestSafeShutdownScript)
#include "tst_safe_shutdown_script.moc"
