#include "workbench/hostkit/dl_data_access_private.h"

#include <QMetaObject>
#include <QPointer>

#include <algorithm>
#include <utility>

bool DlDataAccessPrivate::Subscription::covers(const Notification &notification) const
{
    if (notification.onlyFor != nullptr && notification.onlyFor != subscriber)
        return false;
    switch (notification.kind) {
    case DlNotificationQuery::RawMessage:
        return rawBegin <= notification.number;
    case DlNotificationQuery::LogMessage:
        return std::min(rawBegin, structureBegin) <= notification.number;
    case DlNotificationQuery::StructureChanged:
    case DlNotificationQuery::StatusChanged:
    case DlNotificationQuery::ValuesChanged:
        break;
    }
    return structureBegin <= notification.number;
}

DlDataAccessPrivate::DlDataAccessPrivate(OrbBackend &service) : backend(service), client(service)
{
    backend.setListener(this);
}

DlDataAccessPrivate::~DlDataAccessPrivate()
{
    backend.setListener(nullptr);
}

void DlDataAccessPrivate::subscribeRaw(DlMessageSubscriber *subscriber)
{
    if (subscriber == nullptr)
        return;
    const std::lock_guard<std::mutex> lock(mutex);
    Subscription &subscription = subscriptionOf(subscriber);
    if (subscription.rawBegin == Never)
        subscription.rawBegin = nextNumber;
}

void DlDataAccessPrivate::subscribeStructure(DlMessageSubscriber *subscriber)
{
    if (subscriber == nullptr)
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        Subscription &subscription = subscriptionOf(subscriber);
        if (subscription.structureBegin != Never)
            return;
        subscription.structureBegin = nextNumber;
    }
    Notification welcome;
    welcome.kind = DlNotificationQuery::StructureChanged;
    welcome.onlyFor = subscriber;
    enqueue(std::move(welcome));
}

void DlDataAccessPrivate::unsubscribe(DlMessageSubscriber *subscriber)
{
    const std::lock_guard<std::mutex> lock(mutex);
    const auto end = std::remove_if(subscriptions.begin(), subscriptions.end(),
                                    [&](const Subscription &s) { return s.subscriber == subscriber; });
    subscriptions.erase(end, subscriptions.end());
}

void DlDataAccessPrivate::rawMessage(const QString &connectionName, const QString &message)
{
    Notification notification;
    notification.id.connectionName = connectionName;
    notification.rawText = message;
    enqueue(std::move(notification));
}

void DlDataAccessPrivate::structureChanged(const OrbItemId &id)
{
    enqueueChange(DlNotificationQuery::StructureChanged, id);
}

void DlDataAccessPrivate::valuesChanged(const OrbItemId &id)
{
    enqueueChange(DlNotificationQuery::ValuesChanged, id);
}

void DlDataAccessPrivate::statusChanged(const OrbItemId &id)
{
    enqueueChange(DlNotificationQuery::StatusChanged, id);
}

void DlDataAccessPrivate::messageWasLogged(const OrbLogMessage &message)
{
    Notification notification;
    notification.kind = DlNotificationQuery::LogMessage;
    notification.logMessage = message;
    enqueue(std::move(notification));
}

/// The subscriber's entry, made when it is missing. The mutex is held.
DlDataAccessPrivate::Subscription &DlDataAccessPrivate::subscriptionOf(DlMessageSubscriber *subscriber)
{
    const auto found = std::find_if(subscriptions.begin(), subscriptions.end(),
                                    [&](const Subscription &s) { return s.subscriber == subscriber; });
    if (found != subscriptions.end())
        return *found;
    subscriptions.append({subscriber, Never, Never});
    return subscriptions.last();
}

void DlDataAccessPrivate::enqueueChange(DlNotificationQuery::Kind kind, const OrbItemId &id)
{
    Notification notification;
    notification.kind = kind;
    notification.id = id;
    enqueue(std::move(notification));
}

void DlDataAccessPrivate::enqueue(Notification notification)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        // Nobody to tell: a backend may talk for hours before the first tool is opened.
        if (subscriptions.isEmpty())
            return;
        notification.number = nextNumber++;
        pending.push_back(std::move(notification));
        if (!announce())
            return;
    }
    post();
}

/// True when the caller has to post a delivery, since none waits. The mutex is held.
bool DlDataAccessPrivate::announce()
{
    return !std::exchange(posted, true);
}

void DlDataAccessPrivate::post()
{
    QMetaObject::invokeMethod(
        this, [this] { deliverPending(); }, Qt::QueuedConnection);
}

/// Takes the oldest notification; false when there is none.
bool DlDataAccessPrivate::take(Notification &notification)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (pending.empty())
            return false;
        notification = std::move(pending.front());
        pending.pop_front();
        // A subscriber may run an event loop of its own (a dialog); the rest must reach the others meanwhile.
        if (pending.empty() || !announce())
            return true;
    }
    post();
    return true;
}

void DlDataAccessPrivate::deliverPending()
{
    std::size_t count = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        posted = false;
        count = pending.size();
    }
    // Only what is there now: answers that subscribers provoke must not keep other events from their turn.
    const QPointer<DlDataAccessPrivate> self(this);
    Notification notification;
    while (count-- > 0 && take(notification)) {
        deliver(notification);
        // A subscriber may be the end of the host.
        if (self.isNull())
            return;
    }
}

void DlDataAccessPrivate::deliver(Notification &notification)
{
    Recipients recipients = recipientsOf(notification);
    if (recipients.isEmpty())
        return;
    if (notification.kind == DlNotificationQuery::RawMessage)
        notification.id.connection = backend.connectionIndex(notification.id.connectionName);

    const QPointer<DlDataAccessPrivate> self(this);
    Recipients willing;
    for (DlMessageSubscriber *subscriber : std::as_const(recipients)) {
        // Any call may end any subscription, and with it the subscriber's life.
        if (!isRecipient(subscriber, notification))
            continue;
        DlNotificationQuery query;
        query.connection = static_cast<quint32>(notification.id.connection);
        query.sequence = static_cast<quint32>(notification.number);
        query.kind = notification.kind;
        const bool wanted = subscriber->wantsNotification(query);
        if (self.isNull())
            return;
        if (wanted)
            willing.append(subscriber);
    }

    const bool everybody = willing.isEmpty() && notification.kind == DlNotificationQuery::RawMessage;
    for (DlMessageSubscriber *subscriber : std::as_const(everybody ? recipients : willing)) {
        if (!isRecipient(subscriber, notification))
            continue;
        hand(*subscriber, notification);
        if (self.isNull())
            return;
    }
}

DlDataAccessPrivate::Recipients DlDataAccessPrivate::recipientsOf(const Notification &notification) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    Recipients recipients;
    for (const Subscription &subscription : subscriptions) {
        if (subscription.covers(notification))
            recipients.append(subscription.subscriber);
    }
    return recipients;
}

bool DlDataAccessPrivate::isRecipient(DlMessageSubscriber *subscriber, const Notification &notification) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::any_of(subscriptions.cbegin(), subscriptions.cend(), [&](const Subscription &subscription) {
        return subscription.subscriber == subscriber && subscription.covers(notification);
    });
}

void DlDataAccessPrivate::hand(DlMessageSubscriber &subscriber, const Notification &notification)
{
    switch (notification.kind) {
    case DlNotificationQuery::StructureChanged:
        subscriber.structureChanged(notification.id);
        break;
    case DlNotificationQuery::RawMessage:
        subscriber.rawMessageReceived(notification.rawText);
        break;
    case DlNotificationQuery::LogMessage:
        subscriber.messageWasLogged(notification.logMessage);
        break;
    case DlNotificationQuery::StatusChanged:
        subscriber.statusChanged(notification.id);
        break;
    case DlNotificationQuery::ValuesChanged:
        subscriber.valuesChanged(notification.id);
        break;
    }
}
