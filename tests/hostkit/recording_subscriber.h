#pragma once

#include "hostclient/dl_message_subscriber.h"
#include "hostclient/orb_log_message.h"

#include <QStringList>
#include <QVector>

#include <functional>

/// A subscriber that keeps what it is told and does what it is told to do.
class RecordingSubscriber final : public DlMessageSubscriber
{
public:
    bool wantsNotification(DlNotificationQuery &query) override
    {
        queries.append(query);
        if (onQuery)
            onQuery();
        return wants;
    }

    void messageWasLogged(const OrbLogMessage &message) override
    {
        note(QStringLiteral("log:") + message.text);
    }
    void statusChanged(const OrbItemId &id) override { note(QStringLiteral("status:%1").arg(id.line)); }
    void valuesChanged(const OrbItemId &id) override { note(QStringLiteral("values:%1").arg(id.line)); }
    void structureChanged(const OrbItemId &id) override
    {
        note(id.type == OrbItemId::Undefined ? QStringLiteral("structure")
                                             : QStringLiteral("structure:%1").arg(id.line));
    }
    void rawMessageReceived(const QString &message) override { note(message); }

    bool wants = true;
    std::function<void()> onQuery;
    std::function<void(const QString &)> onTold;
    QVector<DlNotificationQuery> queries;
    QStringList told;

private:
    void note(const QString &text)
    {
        told.append(text);
        if (onTold)
            onTold(text);
    }
};
