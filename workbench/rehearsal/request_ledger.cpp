#include "workbench/rehearsal/request_ledger.h"

#include "workbench/rehearsal/request_summary.h"
#include "workbench/simulator/answer_transport.h"

#include <QCoreApplication>

#include <algorithm>

namespace rehearsal
{

namespace
{

constexpr int ShownLength = 160; // of a request in a finding

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::RequestLedger", text);
}

QString outcomeOf(TarnResult result)
{
    switch (result) {
    case TarnResult::Success:
        return QStringLiteral("done");
    case TarnResult::Denied:
        return QStringLiteral("denied");
    case TarnResult::NoData:
        return QStringLiteral("no such item");
    case TarnResult::NotConnected:
        return QStringLiteral("not connected");
    case TarnResult::Failed:
        break;
    }
    return QStringLiteral("refused");
}

/// Empty for what is no trigger.
QString outcomeOf(const QString &message)
{
    if (message == QLatin1String("[{\"trigger\":\"true\"}]"))
        return QStringLiteral("done");
    if (message == QLatin1String("[{\"trigger\":\"denied\"}]"))
        return QStringLiteral("denied");
    if (message == QLatin1String("[{\"trigger\":\"noData\"}]"))
        return QStringLiteral("no such item");
    if (message == QLatin1String("[{\"trigger\":\"false\"}]"))
        return QStringLiteral("refused");
    return {};
}

QString writeText(const simulator::JournalEntry &entry)
{
    QString place = simulator::addressText(entry.object);
    if (!place.isEmpty())
        place += QLatin1Char(' ');
    return place + entry.item + QLatin1Char(' ') + entry.text;
}

QString shortened(const QString &text)
{
    return text.size() <= ShownLength ? text : text.left(ShownLength) + QStringLiteral("...");
}

/// What is refused is entered without its end when it is long.
bool isOfLine(const QString &request, const QString &line)
{
    const bool mayBeCut = request.size() == simulator::AnswerTransport::LongestRefusedText;
    return mayBeCut ? line.startsWith(request) : line == request;
}

} // namespace

RequestLedger::RequestLedger(Recording &recording_, std::function<void(const Finding &)> fail_)
    : recording(recording_), report(std::move(fail_))
{ }

void RequestLedger::beginFile(const QString &name, const QVector<CommandLine> &executed)
{
    file = name;
    lines = executed;
}

int RequestLedger::addWrite(const simulator::JournalEntry &entry)
{
    const bool isDone = entry.result == TarnResult::Success;
    if (entry.request != 0) {
        const auto asked = open.find(entry.request);
        if (asked != open.end() && !isDone)
            asked->refusal = writeText(entry);
        return listed.value(entry.request, -1);
    }
    RequestRecord record;
    record.time = entry.time;
    record.controller = entry.controller;
    record.isWrite = true;
    record.text = writeText(entry);
    record.outcome = outcomeOf(entry.result);
    record.file = file;
    if (!isDone)
        fail(Finding::Request, entry.time, 0,
             tr("The write \"%1\" to %2 ended with \"%3\".")
                 .arg(shortened(record.text), entry.controller, record.outcome));
    return list(std::move(record));
}

void RequestLedger::addRequest(const simulator::JournalEntry &entry)
{
    Open asked;
    asked.time = entry.time;
    asked.text = entry.text;
    asked.line = lineOf(entry.text);
    asked.wantsData = entry.text.contains(QLatin1String("\"getItem\""));
    RequestRecord record;
    record.time = entry.time;
    record.controller = entry.controller;
    record.text = entry.text;
    record.file = file;
    record.line = asked.line;
    asked.index = list(std::move(record));
    if (asked.index >= 0)
        listed.insert(entry.request, asked.index);
    open.insert(entry.request, asked);
}

void RequestLedger::addRefusal(const simulator::JournalEntry &entry)
{
    const int index = listed.value(entry.request, -1);
    if (index >= 0) {
        RequestRecord &record = recording.requests[static_cast<std::size_t>(index)];
        record.isTaken = false;
        record.answers.append(entry.text);
    }
    close(entry.request, outcomeOf(TarnResult::Failed));
}

void RequestLedger::addAnswer(const simulator::JournalEntry &entry)
{
    const int index = listed.value(entry.request, -1);
    if (index >= 0) {
        RequestRecord &record = recording.requests[static_cast<std::size_t>(index)];
        record.answers.append(entry.text);
        record.latency = entry.delay;
    }
    const auto asked = open.constFind(entry.request);
    if (asked == open.constEnd())
        return;
    const QString outcome = outcomeOf(entry.text);
    const bool isDone = outcome.isEmpty() || outcome == QLatin1String("done");
    if (isDone && entry.time - asked->time > AnswerTime) {
        judge(entry.time);
        return;
    }
    if (!isDone) {
        const QString what = asked->refusal.isEmpty() ? requestSummary(asked->text) : asked->refusal;
        fail(Finding::Request, asked->time, asked->line,
             tr("The request \"%1\" to %2 was answered with \"%3\".")
                 .arg(shortened(what), entry.controller, outcome));
        close(entry.request, outcome);
    } else if (outcome.isEmpty() || !asked->wantsData) {
        close(entry.request, QStringLiteral("done"));
    }
}

void RequestLedger::addLostAnswer(const simulator::JournalEntry &entry)
{
    const int index = listed.value(entry.request, -1);
    if (index >= 0)
        recording.requests[static_cast<std::size_t>(index)].answers.append(
            tr("(lost on the way: %1)").arg(entry.text));
}

void RequestLedger::judge(double now)
{
    QVector<quint64> late;
    for (auto asked = open.constBegin(); asked != open.constEnd(); ++asked) {
        if (now - asked->time > AnswerTime)
            late.append(asked.key());
    }
    std::sort(late.begin(), late.end());
    for (const quint64 number : std::as_const(late)) {
        const Open asked = open.value(number);
        fail(Finding::TimeOut, asked.time, asked.line,
             tr("The request \"%1\" was not answered within %2 s.")
                 .arg(shortened(requestSummary(asked.text)), QString::number(AnswerTime)));
        close(number, QStringLiteral("not answered"));
    }
}

int RequestLedger::lineOf(const QString &request)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (!isOfLine(request, lines.at(i).text))
            continue;
        const int number = lines.at(i).number;
        lines.remove(0, i + 1);
        return number;
    }
    return 0;
}

int RequestLedger::list(RequestRecord record)
{
    if (recording.requests.size() >= MostRequests) {
        ++recording.requestsLeftOut;
        return -1;
    }
    recording.requests.push_back(std::move(record));
    return static_cast<int>(recording.requests.size()) - 1;
}

void RequestLedger::close(quint64 number, const QString &outcome)
{
    const Open asked = open.take(number);
    if (asked.index >= 0)
        recording.requests[static_cast<std::size_t>(asked.index)].outcome = outcome;
}

void RequestLedger::fail(Finding::Kind kind, double time, int ofLine, const QString &text)
{
    Finding finding;
    finding.kind = kind;
    finding.time = time;
    finding.file = file;
    finding.line = ofLine;
    finding.text = text;
    report(finding);
}

} // namespace rehearsal
