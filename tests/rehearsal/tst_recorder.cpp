#include "workbench/rehearsal/recorder.h"

#include "tests/rehearsal/example_recording.h"
#include "workbench/simulator/stepped_clock.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <memory>

using rehearsal::Finding;
using rehearsal::Recorder;
using rehearsal::Recording;

namespace
{

OrbItemId item(const char *name, quint32 module = 2, qint32 channel = 1)
{
    OrbItemId id(channel < 0 ? OrbItemId::Module : OrbItemId::Channel);
    id.connectionName = QStringLiteral("local");
    id.line = 0;
    id.address = module;
    id.channel = channel;
    id.itemName = QString::fromLatin1(name);
    return id;
}

} // namespace

/// Against the simulated service, whose time the test steps.
class TestRecorder : public QObject
{
    Q_OBJECT

private:
    std::shared_ptr<simulator::SteppedClock> clock;
    std::unique_ptr<simulator::SimulatedService> service;
    Recording recording;
    QVector<Finding> found;
    std::unique_ptr<Recorder> recorder;

    void write(const OrbItemId &id, const char *value, TarnResult expected = TarnResult::Success)
    {
        QCOMPARE(service->writeItem(id, QString::fromLatin1(value)), expected);
    }

    void makeRecorder()
    {
        recorder = std::make_unique<Recorder>(*service, clock, recording,
                                              [this](const Finding &finding) { found.append(finding); });
    }

    void cause(simulator::FaultKind kind)
    {
        simulator::Fault fault;
        fault.kind = kind;
        fault.controller = QStringLiteral("local");
        fault.object = channelAddress(0, 2, 1);
        fault.object.level = simulator::faultLevel(kind);
        if (fault.object.level == OrbItemId::Crate)
            fault.object.address = 1000;
        QCOMPARE(service->cause(fault), TarnResult::Success);
    }

    void step(double seconds)
    {
        clock->advance(std::chrono::nanoseconds(static_cast<qint64>(seconds * 1e9)));
    }

    /// As the run does it: a look every interval.
    void pass(double seconds)
    {
        const double end = clock->now() + seconds;
        while (clock->now() < end - Recorder::Interval / 2) {
            step(Recorder::Interval);
            recorder->poll();
        }
    }

    void rampTo(const char *volts, qint32 channel = 1)
    {
        write(item("Control.voltageSet", 2, channel), volts);
        write(item("Control.on", 2, channel), "1");
    }

    /// The texts of the marks of errors and trips.
    QStringList errorsOf(std::size_t channel) const
    {
        QStringList result;
        for (const rehearsal::Mark &mark : recording.channels.at(channel).marks) {
            if (mark.kind == rehearsal::Mark::Error)
                result << mark.text;
        }
        return result;
    }

private Q_SLOTS:
    void init()
    {
        clock = std::make_shared<simulator::SteppedClock>();
        service = std::make_unique<simulator::SimulatedService>(clock);
        recording = {};
        found.clear();
        recording.files.push_back(
            {QStringLiteral("a.py"), true, rehearsal::NoTime, rehearsal::NoTime, QString()});
        recording.files.push_back(
            {QStringLiteral("b.py"), true, rehearsal::NoTime, rehearsal::NoTime, QString()});
        recorder.reset();
    }

    void cleanup() { recorder.reset(); }

    void recordsARamp()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Control.voltageSet"), "1000");
        write(item("Control.on"), "1"); // 200 V/s
        pass(2.5);
        QVERIFY(!recorder->isSettled());
        pass(3.5);
        QVERIFY(recorder->isSettled());
        recorder->endFile(QStringLiteral("done"));
        recorder->finish();
        QCOMPARE(recording.failures.size(), std::size_t{0});
        QCOMPARE(recording.files.at(0).begin, 0.0);
        QCOMPARE(recording.files.at(0).end, recording.duration);
        QCOMPARE(recording.files.at(0).outcome, QStringLiteral("done"));
        QCOMPARE(recording.requests.size(), std::size_t{2});
        QCOMPARE(recording.channels.size(), std::size_t{1});
        const rehearsal::ChannelRecord &channel = recording.channels.at(0);
        QCOMPARE(channel.name(), QStringLiteral("local/0.2.1"));
        QVERIFY2(std::abs(channel.voltage.value - 1000) < 0.1,
                 qPrintable(QString::number(channel.voltage.value)));
        QCOMPARE(channel.ramps.size(), std::size_t{1});
        QVERIFY(std::abs(channel.ramps.at(0).end - channel.ramps.at(0).begin - 5) < 0.06);
        QCOMPARE(channel.endState, QStringLiteral("on"));
        // Every write is marked with its place in the list.
        QCOMPARE(channel.marks.at(0).request, 0);
        QCOMPARE(channel.marks.at(1).request, 1);
        // Two straight lines and little else.
        QVERIFY2(channel.trace.points().size() < 20,
                 qPrintable(QString::number(channel.trace.points().size())));
    }

    void aTripFails()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Setup.delayedTripTime"), "100");
        write(item("Setup.delayedTripAction"), "2");
        write(item("Control.voltageSet"), "400");
        write(item("Control.on"), "1");
        pass(3);
        cause(simulator::FaultKind::Short);
        pass(1);
        recorder->finish();
        QCOMPARE(recording.failures.size(), std::size_t{1});
        QCOMPARE(recording.failures.at(0).kind, Finding::Trip);
        QVERIFY2(std::abs(recording.failures.at(0).time - 3.1) < 0.01,
                 qPrintable(QString::number(recording.failures.at(0).time)));
        const rehearsal::ChannelRecord &channel = recording.channels.at(0);
        QVERIFY(channel.tripped);
        QCOMPARE(channel.endState, QStringLiteral("off"));
        QCOMPARE(channel.ramps.size(), std::size_t{1});
        QVERIFY2(std::abs(channel.ramps.at(0).end - channel.ramps.at(0).begin - 2) < 0.001,
                 qPrintable(QString::number(channel.ramps.at(0).end)));
        const auto isFault = [](const rehearsal::Mark &mark) { return mark.kind == rehearsal::Mark::Fault; };
        QCOMPARE(std::count_if(channel.marks.begin(), channel.marks.end(), isFault), 1);
        QVERIFY(!recording.events.empty());
    }

    // Its own channel says why, and so does each that fell with it.
    void aTripTakesTheModuleDown()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Setup.delayedTripAction"), "3");
        rampTo("400");
        rampTo("600", 4);
        pass(4);
        cause(simulator::FaultKind::Short);
        pass(1);
        recorder->finish();
        QCOMPARE(recording.failures.size(), std::size_t{2});
        QCOMPARE(recording.failures.at(0).kind, Finding::Trip);
        QCOMPARE(recording.failures.at(0).text,
                 QStringLiteral("Channel local/0.2.1 was switched off by its protection: current trip."));
        QCOMPARE(recording.failures.at(1).kind, Finding::Trip);
        QCOMPARE(recording.failures.at(1).channel, QStringLiteral("local/0.2.4"));
        QCOMPARE(recording.failures.at(1).text,
                 QStringLiteral("Channel local/0.2.4 was switched off by protection: channel 0.2.1, "
                                "current trip."));
        QVERIFY(recording.channels.at(0).tripped && recording.channels.at(1).tripped);
        QVERIFY(!recording.channels.at(0).reportedError && !recording.channels.at(1).reportedError);
        QCOMPARE(errorsOf(0),
                 (QStringList{QStringLiteral("Error.currentTrip"),
                              QStringLiteral("switched off by its protection: current trip")}));
        QCOMPARE(errorsOf(1),
                 QStringList(QStringLiteral("switched off by protection: channel 0.2.1, current trip")));
    }

    void aFaultTakesChannelsDown_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("why");
        QTest::newRow("safety loop") << int(simulator::FaultKind::SafetyLoopOpen)
                                     << QStringLiteral(
                                            "switched off by protection: module 0.2, safety loop was opened");
        QTest::newRow("mains") << int(simulator::FaultKind::MainsFailure)
                               << QStringLiteral("switched off by protection: crate 0.1000, mains not good");
    }

    void aFaultTakesChannelsDown()
    {
        QFETCH(int, kind);
        QFETCH(QString, why);
        makeRecorder();
        recorder->beginFile(0, {});
        rampTo("400");
        write(item("Control.voltageSet", 2, 4), "100"); // and never on
        pass(4);
        cause(static_cast<simulator::FaultKind>(kind));
        pass(1);
        recorder->finish();
        QCOMPARE(recording.failures.size(), std::size_t{1});
        QCOMPARE(recording.failures.at(0).kind, Finding::Trip);
        QCOMPARE(recording.failures.at(0).channel, QStringLiteral("local/0.2.1"));
        QCOMPARE(errorsOf(0), QStringList(why));
        QVERIFY(errorsOf(1).isEmpty());
        QVERIFY(!recording.channels.at(1).tripped);
    }

    // Nothing was switched off, so that nothing tripped.
    void anErrorWithoutActionIsNoTrip()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        rampTo("400");
        pass(3);
        cause(simulator::FaultKind::ExternalInhibit);
        pass(1);
        QCOMPARE(recording.failures.size(), std::size_t{1}); // not only at the end
        recorder->finish();
        QCOMPARE(recording.failures.size(), std::size_t{1});
        QCOMPARE(recording.failures.at(0).kind, Finding::Error);
        QCOMPARE(recording.failures.at(0).time, 3.0);
        QVERIFY(!recording.channels.at(0).tripped);
        QVERIFY(recording.channels.at(0).reportedError);
        QCOMPARE(recording.channels.at(0).endState, QStringLiteral("on"));
    }

    // Somebody wanted it, and the picture tells.
    void whoSwitchesACrateOffFailsNothing()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        rampTo("400");
        pass(3);
        OrbItemId power(OrbItemId::Crate);
        power.connectionName = QStringLiteral("local");
        power.address = 1000;
        power.itemName = QStringLiteral("Control.power");
        write(power, "0");
        pass(1);
        recorder->finish();
        QVERIFY(recording.failures.empty());
        QVERIFY(!recording.channels.at(0).tripped);
        const rehearsal::Mark &last = recording.channels.at(0).marks.back();
        QCOMPARE(last.kind, rehearsal::Mark::Event);
        QCOMPARE(last.text, QStringLiteral("switched off by \"Control.power\" of the crate 0.1000"));
    }

    void marksEveryEndOfARamp()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        for (const char *const volts : {"100", "200", "300"}) {
            rampTo(volts);
            pass(2);
        }
        recorder->finish();
        const auto isEnd = [](const rehearsal::Mark &mark) {
            return mark.text == QLatin1String("Event.endOfRamp");
        };
        const std::vector<rehearsal::Mark> &marks = recording.channels.at(0).marks;
        QCOMPARE(std::count_if(marks.begin(), marks.end(), isEnd), 3);
        QCOMPARE(recording.channels.at(0).ramps.size(), std::size_t{3});
    }

    void drawsTheSetVoltageToTheMoment()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        pass(1);
        step(0.02); // between two looks
        rampTo("100");
        pass(2);
        write(item("Control.on"), "0");
        pass(2);
        recorder->finish();
        QStringList changes;
        double set = 0;
        for (const rehearsal::TracePoint &point : recording.channels.at(0).trace.points()) {
            if (point.voltageSet != set)
                changes << QStringLiteral("%1: %2").arg(point.time).arg(point.voltageSet);
            set = point.voltageSet;
        }
        QCOMPARE(changes, (QStringList{QStringLiteral("1.02: 100"), QStringLiteral("3.02: 0")}));
    }

    void aFaultTouchesItsChannel()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        cause(simulator::FaultKind::OpenLoad);
        pass(0.2);
        QCOMPARE(recording.channels.size(), std::size_t{1});
        QCOMPARE(recording.channels.at(0).name(), QStringLiteral("local/0.2.1"));
        QVERIFY(recording.failures.empty());
    }

    // Somebody wanted it.
    void anEmergencyOffIsNoTrip()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Control.voltageSet"), "400");
        write(item("Control.on"), "1");
        pass(1);
        write(item("Control.emergency"), "1");
        pass(1);
        recorder->finish();
        QVERIFY2(recording.failures.empty(),
                 qPrintable(recording.failures.empty() ? QString() : recording.failures.at(0).text));
        QCOMPARE(recording.channels.at(0).endState, QStringLiteral("off"));
    }

    void recordsNothingFromBefore()
    {
        write(item("Control.voltageSet"), "1000");
        makeRecorder();
        recorder->beginFile(0, {});
        recorder->finish();
        QVERIFY(recording.requests.empty());
        QVERIFY(recording.channels.empty());
    }

    void aFailureMakesTheFileFail()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Control.voltageSet"), "99999", TarnResult::Failed);
        recorder->endFile(QStringLiteral("done"));
        recorder->beginFile(1, {});
        recorder->endFile(QStringLiteral("done"));
        QCOMPARE(recording.files.at(0).outcome, QStringLiteral("failed"));
        QCOMPARE(recording.files.at(1).outcome, QStringLiteral("done"));
        QCOMPARE(recording.failures.size(), std::size_t{1});
        QCOMPARE(recording.failures.at(0).file, QStringLiteral("a.py"));
        QCOMPARE(found.size(), 1);
    }

    void aWriteToAModuleTouchesNoChannel()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        write(item("Control.voltageRampspeed", 2, -1), "20");
        recorder->finish();
        QVERIFY(recording.channels.empty());
        QCOMPARE(recording.requests.size(), std::size_t{1});
    }

    void findingsAreListedApart()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        Finding warning;
        warning.text = QStringLiteral("w");
        recorder->add(warning);
        Finding failure;
        failure.kind = Finding::Script;
        step(1);
        recorder->add(failure);
        QCOMPARE(recording.warnings.size(), std::size_t{1});
        QVERIFY(std::isnan(recording.warnings.at(0).time));
        QCOMPARE(recording.failures.size(), std::size_t{1});
        QCOMPARE(recording.failures.at(0).time, 1.0);
        QCOMPARE(recording.failures.at(0).file, QStringLiteral("a.py"));
        for (int i = 0; i < Recorder::MostFailures + 4; ++i)
            recorder->add(failure);
        QCOMPARE(recording.failures.size(), static_cast<std::size_t>(Recorder::MostFailures));
        QCOMPARE(recording.failuresLeftOut, 5);
    }

    void theTranscriptIsBounded()
    {
        makeRecorder();
        for (int i = 0; i < Recorder::MostTranscriptLines + 2; ++i)
            recorder->addTranscript(rehearsal::TranscriptLine::Output, QStringLiteral("x"));
        QCOMPARE(recording.transcript.size(), static_cast<std::size_t>(Recorder::MostTranscriptLines));
        QCOMPARE(recording.transcriptLeftOut, 2);
    }

    void aControllerComesAndGoes()
    {
        makeRecorder();
        recorder->beginFile(0, {});
        service->setControllerAvailable(QStringLiteral("local"), false);
        service->setControllerAvailable(QStringLiteral("local"), true);
        recorder->finish();
        QCOMPARE(recording.events.size(), std::size_t{2});
        QCOMPARE(recording.events.at(0).place, QStringLiteral("local"));
        QVERIFY(recording.events.at(0).text.contains(QStringLiteral("away")));
        QVERIFY(recording.events.at(1).text.contains(QStringLiteral("back")));
    }
};

QTEST_GUILESS_MAIN(TestRecorder)
#include "tst_recorder.moc"
