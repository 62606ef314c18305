#pragma once

#include "workbench/rehearsal/channel_watch.h"
#include "workbench/rehearsal/recording.h"
#include "workbench/rehearsal/request_ledger.h"
#include "workbench/simulator/simulated_service.h"

#include <functional>
#include <memory>
#include <vector>

namespace rehearsal
{

/// Records what happens in a plant: pulls its journal and looks at the channels that are touched. The plant's time is
/// the recording's. One thread only.
class Recorder
{
public:
    /// s between two looks; the journal tells what was between them.
    static constexpr double Interval = 0.05;

    static constexpr int MostEvents = 10000;
    static constexpr int MostFailures = 1000;
    static constexpr int MostWarnings = 1000;
    static constexpr int MostTranscriptLines = 20000;

    using FindingReceiver = std::function<void(const Finding &)>;

    /// Service, recording and clock are kept; service and recording outlive the recorder. The recording has its limits
    /// and its files by now; what fails or is odd is added to it and handed to `receiver`.
    Recorder(simulator::SimulatedService &service, std::shared_ptr<const simulator::SimulationClock> clock,
             Recording &recording, FindingReceiver receiver);

    /// From here on the file at that index runs; `executed` are the lines of a command file.
    void beginFile(std::size_t index, const QVector<CommandLine> &executed);
    /// With "done" as its outcome, which becomes "failed" when something failed meanwhile.
    void endFile(const QString &outcome);

    /// Takes in what has happened since the last call.
    void poll();

    /// Whether nothing is outstanding: no request, no ramp.
    bool isSettled() const;

    /// Polls for the last time, and closes what is open.
    void finish();

    /// In s on the plant's clock.
    double now() const { return clock->now(); }

    /// A failure or a warning from outside; time and file are those of the moment when they are not set.
    void add(Finding finding);
    void addTranscript(TranscriptLine::Kind kind, const QString &text);

private:
    struct ChannelError
    {
        int channel = 0; ///< index in the recording
        double time = 0; ///< s
        QString item;
    };

    void poll(bool atAllChannels);
    void take(const simulator::JournalEntry &entry);
    void takeEvent(const simulator::JournalEntry &entry);
    void takeSwitchOff(const simulator::JournalEntry &entry);
    /// Tells of errors from before `time` that have switched nothing off.
    void tellErrors(double time);
    void takeFault(const simulator::JournalEntry &entry);
    void listEvent(const simulator::JournalEntry &entry, const QString &text);

    simulator::SimulatedService &service;
    const std::shared_ptr<const simulator::SimulationClock> clock;
    Recording &recording;
    const FindingReceiver receiver;
    RequestLedger ledger;
    ChannelWatch watch;
    quint64 nextEntry = 0;
    std::vector<ChannelError> errors; ///< of which it is not known yet whether they switch their channels off
    FileRecord *file = nullptr; ///< that runs
    QString fileName; ///< that ran last
    bool hasFailed = false; ///< something, since the file began
};

} // namespace rehearsal
