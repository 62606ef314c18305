#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"

#include <QMimeData>
#include <QString>
#include <QVector>

#include <memory>

/// The payload that the host drags, from both ends. Its form is told where KdPluginCommon reads it.
namespace hostkit
{

/// The mime type of the payload, as KdMainData::getDndMimeType gives it.
HOST_EXPORT QString dragMimeType();

/// Inverse of KdPluginCommon::parseDragAndDropString. Identifiers that are no place in the system (Undefined, Item)
/// are left out. There is no text/plain in it: a text field under the cursor must not take the payload for text.
HOST_EXPORT std::unique_ptr<QMimeData> makeDragPayload(const QVector<OrbItemId> &items,
                                                       const QString &mimeType);

} // namespace hostkit
