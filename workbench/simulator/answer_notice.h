#pragma once

#include "hostclient/orb_item_id.h"

#include <QString>

namespace simulator
{

/// Something that a listener has to be told, and what with. Plain data.
struct AnswerNotice
{
    enum Kind : quint8
    {
        RawMessage, ///< `message` from the connection `connection`
        ValuesChanged, ///< below `id`
        StructureChanged,
    };

    Kind kind = RawMessage;
    QString connection;
    QString message;
    OrbItemId id;
};

} // namespace simulator
