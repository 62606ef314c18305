#pragma once

#include "workbench/hostkit/orb_backend.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

/// Hands everything on to another backend, and makes go wrong what a test wants to go wrong. For one thread.
///
/// An item is named "connection:path", such as "local:0.2.1.Status.currentTrip".
class FaultInjector final : public OrbBackend
{
public:
    /// `service` is not owned and outlives this object.
    explicit FaultInjector(OrbBackend &service);

    /// Reading the item gives this value from now on, with the item's own unit and type.
    void answer(const QString &item, const QString &value);
    /// Reading the item fails from now on.
    void makeUnreadable(const QString &item);
    /// Writing the item is refused from now on.
    void refuseToWrite(const QString &item);
    /// Sending pass-through messages, or activating them, is refused from now on.
    void refuseToSend();
    void refuseToActivate();

    /// What was written, refused or not, as "connection:path=value", oldest first.
    QStringList writes() const;
    void clearWrites();
    /// Called with the item before each write.
    void setWriteListener(std::function<void(const QString &item)> listener);

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
    TarnResult setDebugLevel(int level) override;

private:
    OrbBackend &service;
    QHash<QString, QString> answers;
    QSet<QString> unreadable;
    QSet<QString> refused;
    bool sendingRefused = false;
    bool activatingRefused = false;
    QStringList written;
    std::function<void(const QString &)> writeListener;
};
