#pragma once

#include "workbench/simulator/object_address.h"

#include <QString>

namespace simulator
{

/// One command of a raw request. Plain data.
struct RequestCommand
{
    enum Kind
    {
        GetItem,
        SetItem
    };

    Kind kind = GetItem;
    ObjectAddress object;
    QString item;
    QString value; ///< of a set
    QString unit; ///< of a set; empty for the item's own
};

} // namespace simulator
