#include "hostclient/dl_data_access.h"

#include "hostclient/orb_item_value.h"
#include "workbench/hostkit/dl_data_access_private.h"

DlDataAccess::DlDataAccess(OrbBackend &backend) : d(std::make_unique<DlDataAccessPrivate>(backend)) { }

DlDataAccess::~DlDataAccess() = default;

OrbClient *DlDataAccess::getOrbClientPtr()
{
    return &d->client;
}

bool DlDataAccess::executeRawOrbCommand(const QString &connectionName, const QString &command,
                                        QString &response)
{
    return d->client.executeRawOrbCommand(connectionName, command, response);
}

void DlDataAccess::subscribeRawMessage(DlMessageSubscriber *subscriber)
{
    d->subscribeRaw(subscriber);
}

void DlDataAccess::subscribeStructureChanged(DlMessageSubscriber *subscriber)
{
    d->subscribeStructure(subscriber);
}

void DlDataAccess::unsubscribe(DlMessageSubscriber *subscriber)
{
    d->unsubscribe(subscriber);
}

bool DlDataAccess::getAllControllerNames(QVector<QPair<QString, QString>> &controllers)
{
    controllers = d->backend.controllers();
    return !controllers.isEmpty();
}

bool DlDataAccess::getOrbItemNames(const OrbItemId &id, QVector<QString> &names, bool writableOnly)
{
    names.clear();
    return d->backend.itemNames(id, writableOnly, names);
}

int DlDataAccess::getOrbConnectionIndex(const QString &connectionName)
{
    return d->backend.connectionIndex(connectionName);
}

void DlDataAccess::readItemValue(OrbItemValue &value)
{
    d->client.readItemValue(value);
}
