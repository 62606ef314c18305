#include "workbench/rehearsal/recorder.h"

#include "workbench/simulator/item_text.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>

namespace rehearsal
{

namespace
{

using simulator::JournalEntry;

constexpr int EntriesAtOnce = 10000;

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::Recorder", text);
}

QHash<QString, QString> displayTexts(const simulator::SimulatedService &service)
{
    QHash<QString, QString> texts;
    const QVector<QPair<QString, QString>> controllers = service.allControllers();
    for (const QPair<QString, QString> &controller : controllers)
        texts.insert(controller.first, controller.second);
    return texts;
}

QString placeText(const JournalEntry &entry)
{
    const QString place = simulator::addressText(entry.object);
    return place.isEmpty() ? entry.controller : entry.controller + QLatin1Char('/') + place;
}

/// Whether it was not a protection but somebody who switched a crate or a controller off.
bool isWish(const JournalEntry &switchOff)
{
    return switchOff.item.startsWith(QLatin1String("Control."));
}

/// What switched a channel off.
QString causeText(const JournalEntry &switchOff)
{
    if (isWish(switchOff))
        return tr("\"%1\" of the %2").arg(switchOff.item, switchOff.text);
    const QString what = simulator::itemWords(switchOff.item);
    return switchOff.text.isEmpty() ? tr("its protection: %1").arg(what)
                                    : tr("protection: %1, %2").arg(switchOff.text, what);
}

} // namespace

Recorder::Recorder(simulator::SimulatedService &service_,
                   std::shared_ptr<const simulator::SimulationClock> clock_, Recording &recording_,
                   FindingReceiver receiver_)
    : service(service_),
      clock(std::move(clock_)),
      recording(recording_),
      receiver(std::move(receiver_)),
      ledger(recording_, [this](const Finding &finding) { add(finding); }),
      watch(
          recording_, displayTexts(service_),
          [this](const QString &controller, const simulator::ObjectAddress &channel,
                 simulator::ChannelSnapshot &snapshot) {
              return service.channelSnapshot(controller, channel, snapshot);
          },
          [this](const Finding &finding) { add(finding); }),
      nextEntry(service_.nextJournalNumber())
{ }

void Recorder::beginFile(std::size_t index, const QVector<CommandLine> &executed)
{
    poll();
    file = &recording.files.at(index);
    file->begin = now();
    hasFailed = false;
    fileName = file->name;
    ledger.beginFile(fileName, executed);
}

void Recorder::endFile(const QString &outcome)
{
    poll();
    if (!file)
        return;
    file->end = now();
    file->outcome = hasFailed && outcome == QLatin1String("done") ? QStringLiteral("failed") : outcome;
    file = nullptr;
}

void Recorder::poll()
{
    poll(false);
}

void Recorder::poll(bool atAllChannels)
{
    watch.look(atAllChannels);
    QVector<JournalEntry> entries;
    do {
        entries = service.journal(nextEntry, EntriesAtOnce);
        for (const JournalEntry &entry : std::as_const(entries)) {
            if (entry.number != nextEntry) {
                Finding finding;
                finding.kind = Finding::Run;
                finding.text =
                    tr("The plant did more than could be followed: %1 entries of its journal are missing.")
                        .arg(entry.number - nextEntry);
                add(finding);
            }
            nextEntry = entry.number + 1;
            tellErrors(entry.time);
            take(entry);
        }
    } while (entries.size() == EntriesAtOnce);
    tellErrors(std::numeric_limits<double>::infinity());
    ledger.judge(now());
    watch.takeIn();
}

bool Recorder::isSettled() const
{
    return !ledger.hasOpenRequests() && !watch.isRamping();
}

void Recorder::finish()
{
    endFile(QStringLiteral("stopped"));
    // Twice: what is touched now is looked at only then.
    poll();
    poll(true);
    watch.finish();
    recording.duration = now();
}

void Recorder::add(Finding finding)
{
    if (finding.kind != Finding::Warning) {
        if (std::isnan(finding.time))
            finding.time = now();
        if (finding.file.isEmpty())
            finding.file = fileName;
    }
    const bool isWarning = finding.kind == Finding::Warning;
    hasFailed = hasFailed || !isWarning;
    std::vector<Finding> &list = isWarning ? recording.warnings : recording.failures;
    if (list.size() < static_cast<std::size_t>(isWarning ? MostWarnings : MostFailures))
        list.push_back(finding);
    else if (!isWarning)
        ++recording.failuresLeftOut;
    if (receiver)
        receiver(finding);
}

void Recorder::addTranscript(TranscriptLine::Kind kind, const QString &text)
{
    if (recording.transcript.size() < MostTranscriptLines)
        recording.transcript.push_back({now(), kind, text});
    else
        ++recording.transcriptLeftOut;
}

void Recorder::take(const JournalEntry &entry)
{
    switch (entry.kind) {
    case JournalEntry::Write: {
        const int request = ledger.addWrite(entry);
        const int channel = watch.touch(entry.controller, entry.object);
        if (channel >= 0)
            watch.mark(channel,
                       {Mark::Command, entry.time, request, entry.item + QLatin1Char(' ') + entry.text});
        break;
    }
    case JournalEntry::Request:
        ledger.addRequest(entry);
        break;
    case JournalEntry::RequestRefused:
        ledger.addRefusal(entry);
        break;
    case JournalEntry::Answer:
        ledger.addAnswer(entry);
        break;
    case JournalEntry::AnswerLost:
        ledger.addLostAnswer(entry);
        listEvent(entry, tr("an answer was lost: %1").arg(entry.text));
        break;
    case JournalEntry::Event:
    case JournalEntry::Error:
        takeEvent(entry);
        break;
    case JournalEntry::SwitchedOff:
        takeSwitchOff(entry);
        break;
    case JournalEntry::FaultBegins:
    case JournalEntry::FaultEnds:
        takeFault(entry);
        break;
    case JournalEntry::Waypoint:
        watch.addWaypoint(entry);
        break;
    case JournalEntry::PassThroughIn:
        listEvent(entry, tr("to the script: %1").arg(entry.text));
        break;
    case JournalEntry::PassThroughOut:
        listEvent(entry, tr("from the script: %1").arg(entry.text));
        break;
    case JournalEntry::ControllerLeft:
        listEvent(entry, tr("the controller went away"));
        break;
    case JournalEntry::ControllerCame:
        listEvent(entry, tr("the controller came back"));
        break;
    }
}

void Recorder::takeEvent(const JournalEntry &entry)
{
    listEvent(entry, entry.item);
    const int channel = watch.touch(entry.controller, entry.object);
    if (channel < 0)
        return;
    const Mark::Kind kind = entry.kind == JournalEntry::Event ? Mark::Event : Mark::Error;
    watch.mark(channel, {kind, entry.time, -1, entry.item});
    // An emergency off is somebody's own wish.
    if (kind == Mark::Error && entry.item != QLatin1String("Error.emergency"))
        errors.push_back({channel, entry.time, entry.item});
}

void Recorder::takeSwitchOff(const JournalEntry &entry)
{
    const QString cause = causeText(entry);
    const QString text = tr("switched off by %1").arg(cause);
    listEvent(entry, text);
    const int channel = watch.touch(entry.controller, entry.object);
    if (channel < 0)
        return;
    watch.mark(channel, {isWish(entry) ? Mark::Event : Mark::Error, entry.time, -1, text});
    if (isWish(entry))
        return;
    // The errors of that moment are why.
    const auto isOfChannel = [channel](const ChannelError &error) { return error.channel == channel; };
    errors.erase(std::remove_if(errors.begin(), errors.end(), isOfChannel), errors.end());
    watch.trip(channel, entry.time, cause);
}

void Recorder::tellErrors(double time)
{
    if (errors.empty() || !(errors.front().time < time))
        return;
    for (const ChannelError &error : errors)
        watch.error(error.channel, error.time, error.item);
    errors.clear();
}

void Recorder::takeFault(const JournalEntry &entry)
{
    const QString text = entry.kind == JournalEntry::FaultBegins ? tr("fault: %1").arg(entry.text)
                                                                 : tr("fault over: %1").arg(entry.text);
    listEvent(entry, text);
    const int channel = watch.touch(entry.controller, entry.object);
    if (channel >= 0)
        watch.mark(channel, {Mark::Fault, entry.time, -1, text});
}

void Recorder::listEvent(const JournalEntry &entry, const QString &text)
{
    if (recording.events.size() < MostEvents)
        recording.events.push_back({entry.time, placeText(entry), text});
    else
        ++recording.eventsLeftOut;
}

} // namespace rehearsal
