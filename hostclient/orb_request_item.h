#pragma once

#include "hostclient/host_export.h"

#include <QString>

/// One pass-through request that the service forwarded. A plain value.
class HOST_EXPORT OrbRequestItem
{
public:
    enum CommandType : qint32
    {
        Unknown = 0,
        GetItem = 1,
        SetItem = 2,
    };

    OrbRequestItem();
    OrbRequestItem(const OrbRequestItem &other);
    OrbRequestItem &operator=(const OrbRequestItem &other);
    ~OrbRequestItem();

    /// "getItem", "setItem", or an empty text for a command that is neither.
    QString getCommandTypeAsString() const;

    CommandType commandType = Unknown;
    quint32 line = 0; ///< line index, from 0
    quint32 address = 0; ///< module or crate address on the line
    qint32 channel = -1; ///< channel index, -1 for none
    QString itemName;
    QString value; ///< value text; equal to `rawJson` when the request carried no plain value
    QString unit;
    QString rawJson; ///< the request as it was received
};
