#pragma once

#include "workbench/rehearsal/command_file_review.h"
#include "workbench/rehearsal/recording.h"
#include "workbench/simulator/plant_journal.h"

#include <QHash>

#include <functional>

namespace rehearsal
{

/// Ties requests, what they wrote, their answers and the lines that they came from together, and tells which failed.
class RequestLedger
{
public:
    static constexpr int MostRequests =
        10000; ///< that are listed; later ones are counted and judged all the same
    static constexpr double AnswerTime = 2; ///< s for which the command terminal waits

    /// `recording` is kept and outlives the ledger. `fail` gets what fails, without a file.
    RequestLedger(Recording &recording, std::function<void(const Finding &)> fail);

    /// From here on requests are of this file; `executed` are the lines of a command file.
    void beginFile(const QString &name, const QVector<CommandLine> &executed);

    /// The index of the listed request that the write belongs to; -1 when it is not listed.
    int addWrite(const simulator::JournalEntry &entry);
    void addRequest(const simulator::JournalEntry &entry);
    /// Counts nothing as failed: what a terminal shows of it is judged where the terminal is read.
    void addRefusal(const simulator::JournalEntry &entry);
    void addAnswer(const simulator::JournalEntry &entry);
    void addLostAnswer(const simulator::JournalEntry &entry);

    /// Judges what is open at that time, in s.
    void judge(double now);
    bool hasOpenRequests() const { return !open.isEmpty(); }

private:
    struct Open
    {
        int index = -1; ///< among the listed ones
        double time = 0; ///< s
        int line = 0;
        bool wantsData = false;
        QString text;
        QString refusal; ///< what could not be written; empty when nothing
    };

    int lineOf(const QString &request);
    int list(RequestRecord record);
    void close(quint64 number, const QString &outcome);
    void fail(Finding::Kind kind, double time, int line, const QString &text);

    Recording &recording;
    const std::function<void(const Finding &)> report;
    QString file;
    QVector<CommandLine> lines; ///< of the running command file that are still to come
    QHash<quint64, Open> open;
    QHash<quint64, int> listed; ///< closed ones too, for answers that come late or twice
};

} // namespace rehearsal
