#pragma once

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_log_message.h"
#include "hostclient/orb_request_item.h"
#include "workbench/hostkit/orb_backend.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>
#include <mutex>
#include <shared_mutex>

/// One call that reached the backend: the operation's name and its arguments as texts. An identifier is one argument,
/// as RecordingBackend::textOf writes it.
struct RecordedCall
{
    QString operation;
    QStringList arguments;
};

/// A backend that keeps every call and gives the answers it was told to give. Every operation is for any thread.
class RecordingBackend : public OrbBackend
{
public:
    /// What a raw request gets.
    struct RawAnswer
    {
        bool accepted = true;
        QString reply; ///< the immediate reply, or why it was refused
        QStringList
            messages; ///< raw messages that follow, after the request returned, from this object's thread
    };
    using RawHandler = std::function<RawAnswer(const QString &controller, const QString &request)>;

    RecordingBackend();
    ~RecordingBackend() override;

    // What was asked

    QVector<RecordedCall> calls() const;
    /// How many there are, for whoever watches another thread at work: nothing is copied, and nothing shared with it.
    int callCount() const;
    QVector<RecordedCall> callsOf(const QString &operation) const;
    /// The request texts of all raw requests, oldest first.
    QStringList requests() const;
    /// All values that were sent by pass-through, oldest first.
    QVector<OrbItemValue> sentValues() const;
    void clearCalls();

    // What to answer

    /// Pairs of connection name and display text; all are open, with their position as their index.
    void setControllers(const QVector<QPair<QString, QString>> &list);
    void setLocalConnection(const QString &connectionName);
    /// For operations on connections, writing, pass-through and the debug level.
    void setResult(TarnResult value);
    void setCrates(const QVector<OrbItemId> &ids);
    void setModules(const QVector<OrbItemId> &ids);
    void setCrateModules(const QVector<OrbItemId> &ids);
    void setItemNames(OrbItemId::Type level, const QVector<QString> &names);
    /// `path` as OrbClient takes it. Read items that were not set give NoData; a written one takes the value.
    void setItem(const QString &connectionName, const QString &path, const OrbItemReading &reading);
    void setPassThroughMessages(const QVector<OrbRequestItem> &requests);
    /// The answer to every raw request, unless there is a handler, which is called with no lock held.
    void setRawAnswer(const RawAnswer &answer);
    void setRawHandler(RawHandler handler);

    // What to say of its own accord, from the thread that calls

    void sendRawMessage(const QString &connectionName, const QString &message);
    void sendStructureChanged(const OrbItemId &id);
    void sendValuesChanged(const OrbItemId &id);
    void sendStatusChanged(const OrbItemId &id);
    void sendLogMessage(const OrbLogMessage &message);
    bool hasListener() const;

    /// "connection:path" with the path as OrbClient takes it.
    static QString textOf(const OrbItemId &id);

    void setListener(OrbBackendListener *newListener) override;
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
    TarnResult setDebugLevel(int level) override;

private:
    struct Connection
    {
        QString name;
        QString displayText;
        bool open = true;
    };

    void record(const char *operation, const QStringList &arguments) const;
    int openIndex(const QString &connectionName) const;
    QString itemKey(const OrbItemId &id) const;
    TarnResult open(const QString &connectionName);
    void tellListener(const std::function<void(OrbBackendListener &)> &call);

    // Not Qt's locks, which the thread sanitizer does not see.
    mutable std::mutex
        mutex; ///< guards everything below but the listener; never held while anybody is called
    mutable QVector<RecordedCall> recorded;
    QVector<OrbItemValue> sent;
    QVector<Connection> connections;
    QString localConnection;
    TarnResult result = TarnResult::Success;
    QVector<OrbItemId> crateIds;
    QVector<OrbItemId> moduleIds;
    QVector<OrbItemId> crateModuleIds;
    QHash<int, QVector<QString>> namesOfLevel;
    QHash<QString, OrbItemReading> items;
    QVector<OrbRequestItem> passThroughMessages;
    RawAnswer rawAnswer;
    RawHandler rawHandler;

    mutable std::shared_mutex
        listenerLock; ///< held for reading during a call, so that setListener waits for its end
    OrbBackendListener *listener = nullptr;
    QObject later; ///< takes what follows a raw request to this object's thread
};
