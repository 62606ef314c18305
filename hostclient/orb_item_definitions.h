#pragma once

#include "hostclient/host_export.h"

#include <QString>

/// Names of system and module items, so that nobody spells them twice. Callable from any thread.
class HOST_EXPORT OrbItemDefinitions
{
public:
    static QString getItemNameSystemStatussessionId();
    static QString getItemNameSystemStatususbAuxState();
    static QString getItemNameSystemStatusliveInsertion();
    static QString getItemNameSystemStatusethernetState();
    static QString getItemNameSystemStatuswifiState();
    static QString getItemNameSystemStatususbRemoteState();
    static QString getItemNameSystemStatususbRemoteText();
    static QString getItemNameSystemStatususbAuxText();
    static QString getItemNameSystemStatuscanState();
    static QString getItemNameSystemStatuscanText();
    static QString getItemNameSystemStatusconnectionName();
    static QString getItemNameSystemStatuscontrollerName();
    static QString getItemNameModuleStatusnumberOfChannels();
};
