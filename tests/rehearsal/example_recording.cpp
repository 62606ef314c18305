#include "tests/rehearsal/example_recording.h"

#include <QTimeZone>

using namespace rehearsal;

simulator::ObjectAddress channelAddress(quint32 line, quint32 module, qint32 channel)
{
    simulator::ObjectAddress address;
    address.level = OrbItemId::Channel;
    address.line = line;
    address.address = module;
    address.channel = channel;
    return address;
}

Recording exampleRecording()
{
    Recording recording;
    recording.programVersion = QStringLiteral("1.2.3");
    recording.seed = 7;
    recording.startedAt = QDateTime(QDate(2030, 1, 2), QTime(3, 4, 5), QTimeZone::utc());
    recording.duration = 10;
    recording.exitCode = 1;
    Limit limit;
    QString error;
    parseLimit(QStringLiteral("*.voltage<=800 V"), limit, error);
    recording.limits.append(limit);

    recording.files.push_back({QStringLiteral("up & <down>.txt"), false, 0, 6, QStringLiteral("failed")});
    recording.files.push_back({QStringLiteral("iv.py"), true, 6.5, NoTime, QStringLiteral("stopped")});

    ChannelRecord ramped(2000, 2000, 0.004);
    ramped.controller = QStringLiteral("local");
    ramped.controllerText = QStringLiteral("Rehearsal <controller>");
    ramped.address = channelAddress(0, 2, 1);
    ramped.voltageLimit = 2000;
    ramped.currentLimit = 0.004;
    for (const TracePoint &point :
         {TracePoint{0, 0, 0, 0}, TracePoint{1, 0, 0, 1000}, TracePoint{6, 1000, 0.0008, 1000},
          TracePoint{8, 1000, 0.0008, 1000}, TracePoint{8, 0, 0, 0}, TracePoint{10, 0, 0, 0}})
        ramped.trace.add(point);
    ramped.voltage = {1000, 6};
    ramped.current = {0.0008, 6};
    ramped.ramps.push_back({1, 6, 0, 1000});
    ramped.ramps.push_back({9, NoTime, 0, 1});
    ramped.marks.push_back({Mark::Command, 1, 0, QStringLiteral("Control.on 1")});
    ramped.marks.push_back({Mark::LimitCrossed, 5, -1, QStringLiteral("limit *.voltage<=800 V crossed")});
    ramped.marks.push_back({Mark::Error, 8, -1, QStringLiteral("Event.currentTrip")});
    ramped.limits.append(0);
    ramped.tripped = true;
    ramped.crossed = true;
    ramped.crossings.push_back({0, 2, 5, 1000});
    ramped.endState = QStringLiteral("off");
    recording.channels.push_back(ramped);

    ChannelRecord negative(2000, 500, 0.01);
    negative.controller = QStringLiteral("local");
    negative.controllerText = ramped.controllerText;
    negative.address = channelAddress(0, 3, 0);
    negative.voltageLimit = 500;
    negative.currentLimit = 0.01;
    negative.trace.add({0, -400, -1e-9, -400});
    negative.trace.add({10, -400, -1e-9, -400});
    negative.voltage = {-400, 0};
    negative.current = {-1e-9, 0};
    negative.marks.push_back({Mark::Fault, 2, -1, QStringLiteral("fault: leak")});
    negative.marks.push_back({Mark::Event, 3, -1, QStringLiteral("Event.endOfRamp")});
    negative.endState = QStringLiteral("on");
    recording.channels.push_back(negative);

    RequestRecord request;
    request.time = 1;
    request.controller = QStringLiteral("local");
    request.file = recording.files.front().name;
    request.line = 3;
    request.text = QStringLiteral(
        R"({"i":"</code><script>alert('x')</script>","t":"request","c":[{"c":"setItem","p":{"p":{"l":"0","a":"2","c":"1"},"i":"Control.on","v":"1","u":""}}]})");
    request.answers = QStringList{QStringLiteral(R"([{"trigger":"true"}])")};
    request.latency = 0.005;
    request.outcome = QStringLiteral("done");
    recording.requests.push_back(request);
    RequestRecord write;
    write.time = 7;
    write.controller = QStringLiteral("local");
    write.file = QStringLiteral("iv.py");
    write.isWrite = true;
    write.text = QStringLiteral("0.2.1 Control.voltageSet 9999");
    write.outcome = QStringLiteral("refused");
    recording.requests.push_back(write);

    recording.events.push_back({8, QStringLiteral("local/0.2.1"), QStringLiteral("Event.currentTrip")});
    Finding crossed;
    crossed.kind = Finding::LimitCrossed;
    crossed.time = 5;
    crossed.file = recording.files.front().name;
    crossed.channel = ramped.name();
    crossed.text = QStringLiteral("The voltage of channel local/0.2.1 crosses the limit.");
    recording.failures.push_back(crossed);
    Finding raised;
    raised.kind = Finding::Script;
    raised.time = 9;
    raised.file = QStringLiteral("iv.py");
    raised.line = 12;
    raised.text = QStringLiteral("The script raised:\n  File \"<b>\", line 12\nValueError: &");
    recording.failures.push_back(raised);
    Finding warning;
    warning.file = recording.files.front().name;
    warning.line = 4;
    warning.text = QStringLiteral("\"wait 800\" does not wait.");
    recording.warnings.push_back(warning);
    recording.transcript.push_back(
        {1, TranscriptLine::Input, QStringLiteral("> <img src=x onerror=alert(1)>")});
    recording.transcript.push_back({1, TranscriptLine::Output, QStringLiteral("[{\"trigger\":\"true\"}]")});
    recording.transcript.push_back({2, TranscriptLine::Error, QStringLiteral("[{\"trigger\":\"false\"}]")});
    return recording;
}
