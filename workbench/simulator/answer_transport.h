#pragma once

#include "workbench/simulator/answer_notice.h"
#include "workbench/simulator/answer_path.h"
#include "workbench/simulator/connection_table.h"
#include "workbench/simulator/plant_journal.h"
#include "workbench/simulator/plant_layout.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace simulator
{

/// Raw requests on their way to the controllers, their answers on the way back, and what goes wrong between: the faults
/// of the controllers' level, by schedule or by hand. Also what controllers hand to scripts, by schedule. Everything happens at its own time on the plant's clock, in order,
/// whenever somebody lets it come to a time; what the listener has to be told about it is kept until it is taken. Times
/// are in s on the plant's clock. Not locked; the service does that.
class AnswerTransport
{
public:
    using RealTime = AnswerPath::RealTime;

    /// Of the text of a request that is not taken, as it is entered. Characters.
    static constexpr int LongestRefusedText = 1000;

    /// The plant is let come to each moment at which something is carried out, before it is. Table and journal are not
    /// owned and outlive this object. `clockStartedAt` is in seconds since 1970-01-01 UTC.
    AnswerTransport(ConnectionTable &connectionTable, PlantJournal &journalEntries, const PlantLayout &layout,
                    double clockStartedAt, std::function<void(double)> letPlantComeTo);

    /// Puts a request on its way and enters it. The connection is usable.
    void ask(const Connection &connection, const QString &text, const QVector<RequestCommand> &commands,
             double now, std::chrono::milliseconds serviceLatency);
    /// Enters a request that is not taken, and why. `controller` is the connection name of the controller, or the name
    /// that was asked for when there is none of it.
    void refuse(const QString &controller, const QString &text, const QString &reason, double now);
    /// Carries out what is due up to `now`, each at its own time.
    void comeTo(double now);
    /// When to come again at the latest, so that nobody waits who looks at nothing; the latest time of all for never.
    RealTime::time_point nextLook(double now) const;
    std::vector<AnswerNotice> takeNotices();

    /// Writes an item and enters that; `changed` is then what the listener is told of: nothing when it did not succeed,
    /// the structure when the controller went away of it.
    TarnResult write(const Connection &connection, const OrbItemId &id, const QString &value,
                     const QString &unit, quint64 request, double now, AnswerNotice &changed);

    /// False when it is so already.
    bool setAvailable(Controller &controller, bool available, double now);
    /// A connection was closed.
    void dropConnection(const Connection &connection, double now);

    /// Faults of the controllers' level; as SimulatedService has them.
    TarnResult cause(const Fault &fault, double now);
    TarnResult mend(const Fault &fault, double now);
    /// Whether a fault of the controllers' level can be that long and that much: neither is below 0, nothing is slower by
    /// nothing or by more than an hour, and at most 1000000 answers are counted.
    static bool makesSense(const Fault &fault);

private:
    /// A beginning or an end of a fault that comes by itself.
    struct Turn
    {
        double at = 0;
        bool begins = true;
        Fault fault;
    };

    /// Numbers it.
    quint64 enterRequest(const QString &controller, const QString &text, double now);
    AnswerPath &pathOf(const Controller &controller);
    void carryOut(const PendingRequest &request, Controller &controller, AnswerPath &path, double now);
    TarnResult carryOut(const RequestCommand &command, const PendingRequest &request, double now,
                        QStringList &data);
    void send(const ReadyAnswer &answer, Controller &controller, AnswerPath &path, double now);
    void sendAll(const std::vector<ReadyAnswer> &answers, const Controller &controller, double now);
    void loseAll(const std::vector<PendingRequest> &dropped, const Controller &controller, double now);

    void begin(const Fault &fault, Controller &controller, double now);
    bool end(FaultKind kind, Controller &controller, double now);
    void turn(const Turn &what, double now);
    void handOver(const ScheduledMessage &message);
    void forgetEnd(FaultKind kind, const QString &controller);
    void addTurn(const Turn &what);
    void addMessage(const ScheduledMessage &message);
    void enter(JournalEntry::Kind kind, const Controller &controller, const QString &text, double now);
    void notifyStructureChanged();

    ConnectionTable &table;
    PlantJournal &journal;
    const double startedAt;
    const std::function<void(double)> letPlantRun;
    std::vector<AnswerPath> paths; // in the order of the table's controllers
    std::vector<Turn> turns; // by time
    std::vector<ScheduledMessage> messages; // by time
    std::vector<AnswerNotice> notices;
    quint64 lastRequest = 0;
    double time = 0;
};

} // namespace simulator
