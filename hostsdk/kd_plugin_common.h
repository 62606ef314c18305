#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"

#include <QVector>

class QMimeData;

/// Helpers that the host shares with its tools.
class HOST_EXPORT KdPluginCommon
{
public:
    /// Decodes the host's drag payload (data under KdMainData::getDndMimeType) into item addresses; false, with an
    /// empty list, when the payload holds none.
    ///
    /// Chosen by our kit: the payload is JSON in UTF-8, an array of objects with the numbers "level", "connection",
    /// "line", "address" and "channel"; what does not apply to a level may be left out. Elements that are not
    /// addresses are skipped. At most 1 MiB is looked at.
    static bool parseDragAndDropString(const QMimeData *mimeData, QVector<OrbItemId> &items);
};
