#include "hostclient/orb_item_definitions.h"

QString OrbItemDefinitions::getItemNameSystemStatussessionId()
{
    return QStringLiteral("Status.sessionId");
}

QString OrbItemDefinitions::getItemNameSystemStatususbAuxState()
{
    return QStringLiteral("Status.usbAuxState");
}

QString OrbItemDefinitions::getItemNameSystemStatusliveInsertion()
{
    return QStringLiteral("Status.liveInsertion");
}

QString OrbItemDefinitions::getItemNameSystemStatusethernetState()
{
    return QStringLiteral("Status.ethernetState");
}

QString OrbItemDefinitions::getItemNameSystemStatuswifiState()
{
    return QStringLiteral("Status.wifiState");
}

QString OrbItemDefinitions::getItemNameSystemStatususbRemoteState()
{
    return QStringLiteral("Status.usbRemoteState");
}

QString OrbItemDefinitions::getItemNameSystemStatususbRemoteText()
{
    return QStringLiteral("Status.usbRemoteText");
}

QString OrbItemDefinitions::getItemNameSystemStatususbAuxText()
{
    return QStringLiteral("Status.usbAuxText");
}

QString OrbItemDefinitions::getItemNameSystemStatuscanState()
{
    return QStringLiteral("Status.canState");
}

QString OrbItemDefinitions::getItemNameSystemStatuscanText()
{
    return QStringLiteral("Status.canText");
}

QString OrbItemDefinitions::getItemNameSystemStatusconnectionName()
{
    return QStringLiteral("Status.connectionName");
}

QString OrbItemDefinitions::getItemNameSystemStatuscontrollerName()
{
    return QStringLiteral("Status.controllerName");
}

QString OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels()
{
    return QStringLiteral("Status.numberOfChannels");
}
