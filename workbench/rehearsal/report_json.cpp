#include "workbench/rehearsal/report_json.h"

#include "workbench/rehearsal/quantity_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace rehearsal
{

namespace
{

constexpr int Schema = 1;

QJsonValue number(double value)
{
    return std::isfinite(value) ? QJsonValue(reported(value)) : QJsonValue();
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue lineOrNull(int line)
{
    return line > 0 ? QJsonValue(line) : QJsonValue();
}

template <class List, class Function>
QJsonArray arrayOf(const List &list, Function function)
{
    QJsonArray array;
    for (const auto &element : list)
        array.append(function(element));
    return array;
}

QJsonObject findingObject(const Finding &finding)
{
    return {{QStringLiteral("kind"), findingName(finding.kind)},
            {QStringLiteral("time"), number(finding.time)},
            {QStringLiteral("file"), textOrNull(finding.file)},
            {QStringLiteral("line"), lineOrNull(finding.line)},
            {QStringLiteral("channel"), textOrNull(finding.channel)},
            {QStringLiteral("text"), finding.text}};
}

QJsonObject limitObject(const Limit &limit)
{
    return {{QStringLiteral("text"), limit.text},
            {QStringLiteral("quantity"), quantityName(limit.quantity)},
            {QStringLiteral("value"), number(limit.value)}};
}

QJsonObject crossingsObject(const Crossings &crossings, const Limit &limit)
{
    return {{QStringLiteral("limit"), limit.text},
            {QStringLiteral("count"), crossings.count},
            {QStringLiteral("first"), number(crossings.first)},
            {QStringLiteral("highest"), number(crossings.highest)}};
}

QJsonObject fileObject(const FileRecord &file)
{
    return {{QStringLiteral("name"), file.name},
            {QStringLiteral("kind"), file.isScript ? QStringLiteral("script") : QStringLiteral("commands")},
            {QStringLiteral("begin"), number(file.begin)},
            {QStringLiteral("end"), number(file.end)},
            {QStringLiteral("outcome"), file.outcome}};
}

QJsonObject peakObject(const Peak &peak)
{
    return {{QStringLiteral("value"), number(peak.value)}, {QStringLiteral("time"), number(peak.time)}};
}

QJsonObject rampObject(const Ramp &ramp)
{
    return {{QStringLiteral("begin"), number(ramp.begin)},
            {QStringLiteral("end"), number(ramp.end)},
            {QStringLiteral("seconds"), number(ramp.end - ramp.begin)},
            {QStringLiteral("from"), number(ramp.from)},
            {QStringLiteral("to"), number(ramp.to)}};
}

QString markName(Mark::Kind kind)
{
    switch (kind) {
    case Mark::Command:
        return QStringLiteral("command");
    case Mark::Event:
        return QStringLiteral("event");
    case Mark::Error:
        return QStringLiteral("error");
    case Mark::Fault:
        return QStringLiteral("fault");
    case Mark::LimitCrossed:
        break;
    }
    return QStringLiteral("limit");
}

QJsonObject markObject(const Mark &mark)
{
    return {{QStringLiteral("kind"), markName(mark.kind)},
            {QStringLiteral("time"), number(mark.time)},
            {QStringLiteral("request"), mark.request < 0 ? QJsonValue() : QJsonValue(mark.request)},
            {QStringLiteral("text"), mark.text}};
}

QJsonObject traceObject(const Trace &trace)
{
    QJsonArray times;
    QJsonArray voltages;
    QJsonArray currents;
    QJsonArray setValues;
    for (const TracePoint &point : trace.points()) {
        times.append(number(point.time));
        voltages.append(number(point.voltage));
        currents.append(number(point.current));
        setValues.append(number(point.voltageSet));
    }
    return {{QStringLiteral("time"), times},
            {QStringLiteral("voltage"), voltages},
            {QStringLiteral("current"), currents},
            {QStringLiteral("voltageSet"), setValues}};
}

QJsonObject channelObject(const ChannelRecord &channel, const QVector<Limit> &limits)
{
    return {{QStringLiteral("name"), channel.name()},
            {QStringLiteral("controller"), channel.controller},
            {QStringLiteral("controllerText"), channel.controllerText},
            {QStringLiteral("address"), simulator::addressText(channel.address)},
            {QStringLiteral("voltageNominal"), number(channel.voltageNominal)},
            {QStringLiteral("currentNominal"), number(channel.currentNominal)},
            {QStringLiteral("voltageLimit"), number(channel.voltageLimit)},
            {QStringLiteral("currentLimit"), number(channel.currentLimit)},
            {QStringLiteral("limits"),
             arrayOf(channel.limits, [&](int index) { return limitObject(limits.at(index)); })},
            {QStringLiteral("voltagePeak"), peakObject(channel.voltage)},
            {QStringLiteral("currentPeak"), peakObject(channel.current)},
            {QStringLiteral("crossedLimit"), channel.crossed},
            {QStringLiteral("crossings"),
             arrayOf(channel.crossings,
                     [&](const Crossings &crossings) {
                         return crossingsObject(crossings, limits.at(crossings.limit));
                     })},
            {QStringLiteral("tripped"), channel.tripped},
            {QStringLiteral("reportedError"), channel.reportedError},
            {QStringLiteral("endState"), channel.endState},
            {QStringLiteral("ramps"), arrayOf(channel.ramps, rampObject)},
            {QStringLiteral("rampsLeftOut"), channel.rampsLeftOut},
            {QStringLiteral("marks"), arrayOf(channel.marks, markObject)},
            {QStringLiteral("marksLeftOut"), channel.marksLeftOut},
            {QStringLiteral("trace"), traceObject(channel.trace)}};
}

QJsonObject requestObject(const RequestRecord &request)
{
    return {{QStringLiteral("time"), number(request.time)},
            {QStringLiteral("controller"), request.controller},
            {QStringLiteral("file"), textOrNull(request.file)},
            {QStringLiteral("line"), lineOrNull(request.line)},
            {QStringLiteral("kind"), request.isWrite ? QStringLiteral("write") : QStringLiteral("request")},
            {QStringLiteral("text"), request.text},
            {QStringLiteral("answers"), QJsonArray::fromStringList(request.answers)},
            {QStringLiteral("latency"), number(request.latency)},
            {QStringLiteral("outcome"), textOrNull(request.outcome)}};
}

QJsonObject eventObject(const EventRecord &event)
{
    return {{QStringLiteral("time"), number(event.time)},
            {QStringLiteral("place"), event.place},
            {QStringLiteral("text"), event.text}};
}

QJsonObject transcriptObject(const TranscriptLine &line)
{
    const QString kind = line.kind == TranscriptLine::Error ? QStringLiteral("error")
        : line.kind == TranscriptLine::Output               ? QStringLiteral("output")
                                                            : QStringLiteral("input");
    return {{QStringLiteral("time"), number(line.time)},
            {QStringLiteral("kind"), kind},
            {QStringLiteral("text"), line.text}};
}

} // namespace

QByteArray reportJson(const Recording &recording)
{
    const auto channel = [&](const ChannelRecord &record) { return channelObject(record, recording.limits); };
    const QJsonObject report{
        {QStringLiteral("schema"), Schema},
        {QStringLiteral("program"), QStringLiteral("terminal-workbench")},
        {QStringLiteral("version"), recording.programVersion},
        {QStringLiteral("startedAt"), recording.startedAt.toUTC().toString(Qt::ISODateWithMs)},
        {QStringLiteral("duration"), number(recording.duration)},
        {QStringLiteral("plant"), textOrNull(recording.plant)},
        {QStringLiteral("seed"), static_cast<qint64>(recording.seed)},
        {QStringLiteral("exitCode"), recording.exitCode},
        {QStringLiteral("interruption"), textOrNull(recording.interruption)},
        {QStringLiteral("limits"), arrayOf(recording.limits, limitObject)},
        {QStringLiteral("files"), arrayOf(recording.files, fileObject)},
        {QStringLiteral("failures"), arrayOf(recording.failures, findingObject)},
        {QStringLiteral("failuresLeftOut"), recording.failuresLeftOut},
        {QStringLiteral("warnings"), arrayOf(recording.warnings, findingObject)},
        {QStringLiteral("channels"), arrayOf(recording.channels, channel)},
        {QStringLiteral("requests"), arrayOf(recording.requests, requestObject)},
        {QStringLiteral("requestsLeftOut"), recording.requestsLeftOut},
        {QStringLiteral("events"), arrayOf(recording.events, eventObject)},
        {QStringLiteral("eventsLeftOut"), recording.eventsLeftOut},
        {QStringLiteral("transcript"), arrayOf(recording.transcript, transcriptObject)},
        {QStringLiteral("transcriptLeftOut"), recording.transcriptLeftOut},
    };
    return QJsonDocument(report).toJson(QJsonDocument::Compact) + "\n";
}

QByteArray findingLine(const Finding &finding)
{
    QJsonObject object = findingObject(finding);
    object.insert(QStringLiteral("type"),
                  finding.kind == Finding::Warning ? QStringLiteral("warning") : QStringLiteral("failure"));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace rehearsal
