#include "tests/workbench/listener_log.h"

#include "hostclient/orb_log_message.h"

using Guard = std::lock_guard<std::mutex>;

void ListenerLog::rawMessage(const QString &connectionName, const QString &message)
{
    const Guard lock(mutex);
    received.append({connectionName, message});
    receiver = std::this_thread::get_id();
}

void ListenerLog::structureChanged(const OrbItemId & /*id*/)
{
    const Guard lock(mutex);
    ++structures;
}

void ListenerLog::valuesChanged(const OrbItemId &id)
{
    const Guard lock(mutex);
    values.append(id);
}

void ListenerLog::statusChanged(const OrbItemId &id)
{
    const Guard lock(mutex);
    statuses.append(id);
}

void ListenerLog::messageWasLogged(const OrbLogMessage &message)
{
    const Guard lock(mutex);
    logged.append(message.text);
}

QStringList ListenerLog::messages() const
{
    const Guard lock(mutex);
    QStringList result;
    for (const QPair<QString, QString> &message : received)
        result << message.second;
    return result;
}

QStringList ListenerLog::senders() const
{
    const Guard lock(mutex);
    QStringList result;
    for (const QPair<QString, QString> &message : received)
        result << message.first;
    return result;
}

int ListenerLog::messageCount() const
{
    const Guard lock(mutex);
    return received.size();
}

std::thread::id ListenerLog::messageThread() const
{
    const Guard lock(mutex);
    return receiver;
}

int ListenerLog::structureChanges() const
{
    const Guard lock(mutex);
    return structures;
}

QVector<OrbItemId> ListenerLog::changedValues() const
{
    const Guard lock(mutex);
    return values;
}

QVector<OrbItemId> ListenerLog::changedStatus() const
{
    const Guard lock(mutex);
    return statuses;
}

QStringList ListenerLog::logTexts() const
{
    const Guard lock(mutex);
    return logged;
}
