#include "tests/examples/fault_injector.h"

#include "tests/support/recording_backend.h"

#include <utility>

FaultInjector::FaultInjector(OrbBackend &realService) : service(realService) { }

void FaultInjector::answer(const QString &item, const QString &value)
{
    answers.insert(item, value);
}

void FaultInjector::makeUnreadable(const QString &item)
{
    unreadable.insert(item);
}

void FaultInjector::refuseToWrite(const QString &item)
{
    refused.insert(item);
}

void FaultInjector::refuseToSend()
{
    sendingRefused = true;
}

void FaultInjector::refuseToActivate()
{
    activatingRefused = true;
}

QStringList FaultInjector::writes() const
{
    return written;
}

void FaultInjector::clearWrites()
{
    written.clear();
}

void FaultInjector::setWriteListener(std::function<void(const QString &item)> listener)
{
    writeListener = std::move(listener);
}

TarnResult FaultInjector::readItem(const OrbItemId &id, OrbItemReading &reading)
{
    const QString item = RecordingBackend::textOf(id);
    if (unreadable.contains(item))
        return TarnResult::Failed;
    const TarnResult result = service.readItem(id, reading);
    if (result == TarnResult::Success && answers.contains(item))
        reading.value = answers.value(item);
    return result;
}

TarnResult FaultInjector::writeItem(const OrbItemId &id, const QString &value)
{
    const QString item = RecordingBackend::textOf(id);
    written.append(QStringLiteral("%1=%2").arg(item, value));
    if (writeListener)
        writeListener(item);
    return refused.contains(item) ? TarnResult::Denied : service.writeItem(id, value);
}

TarnResult FaultInjector::activatePassThrough(const QString &connectionName, const QString &scriptName)
{
    return activatingRefused ? TarnResult::Denied : service.activatePassThrough(connectionName, scriptName);
}

TarnResult FaultInjector::sendPassThroughMessages(const QString &connectionName,
                                                  const QVector<OrbItemValue> &values)
{
    return sendingRefused ? TarnResult::Failed : service.sendPassThroughMessages(connectionName, values);
}

// Everything else is the service's own affair.

void FaultInjector::setListener(OrbBackendListener *listener)
{
    service.setListener(listener);
}

TarnResult FaultInjector::openConnection(const QString &connectionName, const QString &address,
                                         const QString &login, const QString &password)
{
    return service.openConnection(connectionName, address, login, password);
}

TarnResult FaultInjector::openScriptConnection(const QString &connectionName, const QString &address,
                                               const QString &scriptName, const QString &sessionId,
                                               const QString &login, const QString &password)
{
    return service.openScriptConnection(connectionName, address, scriptName, sessionId, login, password);
}

TarnResult FaultInjector::closeConnection(const QString &connectionName)
{
    return service.closeConnection(connectionName);
}

QVector<QPair<QString, QString>> FaultInjector::controllers() const
{
    return service.controllers();
}

int FaultInjector::connectionIndex(const QString &connectionName) const
{
    return service.connectionIndex(connectionName);
}

bool FaultInjector::isLocal(const QString &connectionName) const
{
    return service.isLocal(connectionName);
}

bool FaultInjector::crates(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    return service.crates(connectionName, ids);
}

bool FaultInjector::modules(const QString &connectionName, QVector<OrbItemId> &ids) const
{
    return service.modules(connectionName, ids);
}

bool FaultInjector::crateModules(const OrbItemId &crate, QVector<OrbItemId> &ids) const
{
    return service.crateModules(crate, ids);
}

bool FaultInjector::itemNames(const OrbItemId &id, bool writableOnly, QVector<QString> &names) const
{
    return service.itemNames(id, writableOnly, names);
}

bool FaultInjector::rawRequest(const QString &controller, const QString &request, QString &reply)
{
    return service.rawRequest(controller, request, reply);
}

TarnResult FaultInjector::takePassThroughMessage(const QString &connectionName, OrbRequestItem &request)
{
    return service.takePassThroughMessage(connectionName, request);
}

TarnResult FaultInjector::takePassThroughMessages(const QString &connectionName,
                                                  QVector<OrbRequestItem> &requests)
{
    return service.takePassThroughMessages(connectionName, requests);
}

TarnResult FaultInjector::setDebugLevel(int level)
{
    return service.setDebugLevel(level);
}
