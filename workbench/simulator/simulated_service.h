#pragma once

#include "workbench/hostkit/orb_backend.h"
#include "workbench/simulator/answer_queue.h"
#include "workbench/simulator/answer_transport.h"
#include "workbench/simulator/channel_snapshot.h"
#include "workbench/simulator/connection_table.h"
#include "workbench/simulator/fault.h"
#include "workbench/simulator/fault_book.h"
#include "workbench/simulator/listener_gate.h"
#include "workbench/simulator/plant_journal.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/plant_run.h"
#include "workbench/simulator/simulation_clock.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

namespace simulator
{

/// A simulated high-voltage system behind the seam that the client speaks to. Every operation may be called from any
/// thread. The listener is called on the thread that caused it, raw messages always on a thread of the service's own.
///
/// Chosen for the simulation, beyond what OrbBackend says:
/// - Wherever a connection or controller is named, its display text will do as well.
/// - The items of an object are those of its level, whether or not the object exists, and a line has the system's. So
///   itemNames() also answers an identifier that says no more than a level, as a form that is being filled in does.
/// - An item that can only be written is Denied to a reader. A value that does not fit is Failed.
/// - A connection opened to an address that no controller has gets the first controller, so that a script written for
///   the real system can be rehearsed as it stands. Any login will do. A name that is already open is Failed.
/// - A connection that a script opens is in the session that the script names, which "Status.sessionId" then reads; a
///   script that names none gets a session of its own, as every other connection has.
/// - A raw request is carried out when its latency is over (see AnswerPath for which latency passes on which clock); that is also when its values are taken. Its commands are
///   carried out in order up to the first that does not succeed; the one trigger message of a request says how that
///   one went, and values read before it are not sent. See answer_text.h for the data.
/// - A controller that goes away, or a connection that is closed, takes its outstanding requests with it: they are
///   neither carried out nor answered.
/// - A reading of "Status.connectedClients" counts the open connections to the controller.
class SimulatedService final : public OrbBackend
{
public:
    static constexpr std::chrono::milliseconds DefaultLatency{5};

    /// In real time, with the plant that PlantLayout::rehearsal() describes.
    SimulatedService();
    /// `plantClock` is never null; it is shared, so that a test can step it.
    explicit SimulatedService(std::shared_ptr<const SimulationClock> plantClock,
                              const PlantLayout &layout = PlantLayout::rehearsal());
    /// Drops what is outstanding. Never called from inside a call to the listener.
    ~SimulatedService() override;
    SimulatedService(const SimulatedService &) = delete;
    SimulatedService &operator=(const SimulatedService &) = delete;

    /// Between a raw request and its answer, for controllers without a latency of their own; 0 or more. Holds for
    /// requests from now on. The answers of a controller keep the order of its requests all the same.
    void setLatency(std::chrono::milliseconds latency);
    std::chrono::milliseconds latency() const;

    /// Takes a controller away or brings it back; the listener hears of it. False when there is no such controller.
    bool setControllerAvailable(const QString &name, bool available);
    bool isControllerAvailable(const QString &name) const;
    /// All controllers, also those that are away: name and display text.
    QVector<QPair<QString, QString>> allControllers() const;
    /// The connection name of the controller that a connection leads to, or that is named itself: a script may have
    /// opened the connection under a name of its own. Empty when there is neither.
    QString controllerOf(const QString &connectionName) const;

    /// Lets the plant come up to the clock's time, then gives what happened from that entry on, at most `most` entries.
    QVector<JournalEntry> journal(quint64 from, int most = 10000);
    quint64 nextJournalNumber();
    /// A channel as it is now. False when there is no such channel, whether or not its controller is away.
    bool channelSnapshot(const QString &controller, const ObjectAddress &channel, ChannelSnapshot &snapshot);

    /// Lets something go wrong from now on, until its duration is over or it is mended. NoData when there is no such
    /// object, Failed when the kind is not for one of that level or its amount makes no sense.
    TarnResult cause(const Fault &fault);
    /// Ends what was caused there of that kind. NoData when nothing was.
    TarnResult mend(const Fault &fault);

    /// The script that opened the connection; empty when no script did.
    QString connectionScript(const QString &connectionName) const;

    /// Hands a request to the script that activated the pass-through. Failed when none did, or too many wait.
    TarnResult injectPassThroughMessage(const QString &connectionName, const OrbRequestItem &request);
    /// What the script sent since the last call, in order.
    QVector<OrbItemValue> takeSentPassThroughMessages(const QString &connectionName);
    /// The script that activated the pass-through; empty when none did.
    QString passThroughScript(const QString &connectionName) const;

    void setListener(OrbBackendListener *listener) override;

    TarnResult openConnection(const QString &connectionName, const QString &address, const QString &login,
                              const QString &password) override;
    TarnResult openScriptConnection(const QString &connectionName, const QString &address,
                                    const QString &scriptName, const QString &sessionId, const QString &login,
                                    const QString &password) override;
    TarnResult closeConnection(const QString &connectionName) override;
    QVector<QPair<QString, QString>> controllers() const override;
    int connectionIndex(const QString &connectionName) const override;
    bool isLocal(const QString &connectionName) const override;

    bool crates(const QString &connectionName, QVector<OrbItemId> &ids) const override;
    bool modules(const QString &connectionName, QVector<OrbItemId> &ids) const override;
    bool crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const override;
    bool itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const override;

    TarnResult readItem(const OrbItemId &id, OrbItemReading &reading) override;
    TarnResult writeItem(const OrbItemId &id, const QString &value) override;
    bool rawRequest(const QString &controller, const QString &request, QString &reply) override;

    TarnResult activatePassThrough(const QString &connectionName, const QString &scriptName) override;
    TarnResult takePassThroughMessage(const QString &connectionName, OrbRequestItem &request) override;
    TarnResult takePassThroughMessages(const QString &connectionName,
                                       QVector<OrbRequestItem> &requests) override;
    TarnResult sendPassThroughMessages(const QString &connectionName,
                                       const QVector<OrbItemValue> &values) override;

    /// 0 to 2; any other level is Failed. From 1 on the listener's log gets refused requests, from 2 on every request.
    TarnResult setDebugLevel(int level) override;

private:
    using Guard = std::lock_guard<std::mutex>;
    class Visit;

    TarnResult open(const QString &connectionName, const QString &address, const ScriptOrigin &script);
    /// Calls the function with the connection and the time in s, in a visit to the plant; or says why there is none to
    /// be used.
    template <class Name, class Function>
    TarnResult onConnection(const Name &nameOrId, Function function) const;
    void enterPassThrough(JournalEntry::Kind kind, const Connection &connection, const QString &text,
                          double now);
    /// Sees to it that what happens by itself happens, also if nobody looks.
    void setAlarm();
    void tell(const AnswerNotice &notice) const;
    void log(int debugLevelNeeded, const QString &text);
    void notifyStructureChanged();

    const std::shared_ptr<const SimulationClock> clock;
    // Time passes in the plant whoever looks at it, and those who only ask do as well.
    mutable std::mutex plantMutex;
    PlantRun run; // guarded by plantMutex, as the next three
    ConnectionTable connections;
    FaultBook faults;
    mutable AnswerTransport transport; // guarded by plantMutex
    std::atomic<qint64> latencyMilliseconds{DefaultLatency.count()};
    std::atomic<int> debugLevel{0};
    mutable ListenerGate listeners;
    mutable AnswerQueue answers; // the last member: its thread uses the others
};

} // namespace simulator
