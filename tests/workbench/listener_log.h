#pragma once

#include "workbench/hostkit/orb_backend.h"

#include <QPair>
#include <QStringList>
#include <QVector>

#include <mutex>
#include <thread>

/// Keeps what a backend says. The backend may call it on any thread, and a test may look at any time.
class ListenerLog final : public OrbBackendListener
{
public:
    void rawMessage(const QString &connectionName, const QString &message) override;
    void structureChanged(const OrbItemId &id) override;
    void valuesChanged(const OrbItemId &id) override;
    void statusChanged(const OrbItemId &id) override;
    void messageWasLogged(const OrbLogMessage &message) override;

    QStringList messages() const;
    /// The connection each message came from.
    QStringList senders() const;
    int messageCount() const;
    std::thread::id messageThread() const;
    int structureChanges() const;
    QVector<OrbItemId> changedValues() const;
    QVector<OrbItemId> changedStatus() const;
    QStringList logTexts() const;

private:
    mutable std::mutex mutex;
    QVector<QPair<QString, QString>> received;
    std::thread::id receiver;
    int structures = 0;
    QVector<OrbItemId> values;
    QVector<OrbItemId> statuses;
    QStringList logged;
};
