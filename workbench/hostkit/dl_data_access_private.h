#pragma once

#include "hostclient/dl_message_subscriber.h"
#include "hostclient/orb_client.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_log_message.h"
#include "workbench/hostkit/orb_backend.h"

#include <QObject>
#include <QString>
#include <QVarLengthArray>
#include <QVector>

#include <deque>
#include <limits>
#include <mutex>

/// Carries what the backend says, on any thread, to the subscribers on the thread that this was made on, in order.
///
/// Notifications are numbered as they come in. A subscription begins with the next number, so it gets nothing that
/// was said before it, and one that ended and began anew gets nothing that was said for the old one.
class DlDataAccessPrivate : public QObject, public OrbBackendListener
{
public:
    explicit DlDataAccessPrivate(OrbBackend &service);
    ~DlDataAccessPrivate() override;

    void subscribeRaw(DlMessageSubscriber *subscriber);
    void subscribeStructure(DlMessageSubscriber *subscriber);
    void unsubscribe(DlMessageSubscriber *subscriber);

    void rawMessage(const QString &connectionName, const QString &message) override;
    void structureChanged(const OrbItemId &id) override;
    void valuesChanged(const OrbItemId &id) override;
    void statusChanged(const OrbItemId &id) override;
    void messageWasLogged(const OrbLogMessage &message) override;

    OrbBackend &backend;
    OrbClient client;

private:
    struct Notification
    {
        DlNotificationQuery::Kind kind = DlNotificationQuery::RawMessage;
        OrbItemId id; ///< of a raw message only the connection
        QString rawText;
        OrbLogMessage logMessage;
        DlMessageSubscriber *onlyFor = nullptr; ///< null for everybody
        quint64 number = 0;
    };

    static constexpr quint64 Never = std::numeric_limits<quint64>::max();

    /// Each kind of subscription begins with the notification of that number.
    struct Subscription
    {
        DlMessageSubscriber *subscriber = nullptr;
        quint64 rawBegin = Never;
        quint64 structureBegin = Never;

        bool covers(const Notification &notification) const;
    };

    using Recipients = QVarLengthArray<DlMessageSubscriber *, 16>;

    Subscription &subscriptionOf(DlMessageSubscriber *subscriber);
    void enqueueChange(DlNotificationQuery::Kind kind, const OrbItemId &id);
    void enqueue(Notification notification);
    bool announce();
    void post();
    bool take(Notification &notification);
    void deliverPending();
    void deliver(Notification &notification);
    Recipients recipientsOf(const Notification &notification) const;
    bool isRecipient(DlMessageSubscriber *subscriber, const Notification &notification) const;
    static void hand(DlMessageSubscriber &subscriber, const Notification &notification);

    // Not a QMutex, which the thread sanitizer does not see.
    mutable std::mutex mutex; ///< guards what follows; never held while a subscriber or the backend is called
    std::deque<Notification> pending;
    quint64 nextNumber = 1;
    bool posted = false; ///< a call of deliverPending waits in the thread's event queue
    QVector<Subscription> subscriptions; ///< in the order of subscribing
};
