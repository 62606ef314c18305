#include "hostsdk/kd_plugin_common.h"

#include "workbench/hostkit/drag_payload.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>

#include <cmath>
#include <limits>

namespace
{

constexpr int MaximumPayloadSize = 1024 * 1024;

constexpr double MaximumUnsigned = std::numeric_limits<quint32>::max();
constexpr double MaximumSigned = std::numeric_limits<qint32>::max();

/// Reads a whole number between 0 and `maximum`; false when there is none under the key.
bool readNumber(const QJsonObject &object, const QString &key, double maximum, double &number)
{
    const QJsonValue value = object.value(key);
    number = value.toDouble(-1);
    return value.isDouble() && number >= 0 && number <= maximum && std::floor(number) == number;
}

bool readIdentifier(const QJsonObject &object, OrbItemId &id)
{
    double number = 0;
    if (!readNumber(object, QStringLiteral("level"), OrbItemId::Channel, number)
        || number < OrbItemId::System)
        return false;
    id.type = static_cast<OrbItemId::Type>(static_cast<qint32>(number));

    if (readNumber(object, QStringLiteral("connection"), MaximumSigned, number))
        id.connection = static_cast<qint32>(number);
    if (id.type >= OrbItemId::Line) {
        if (!readNumber(object, QStringLiteral("line"), MaximumUnsigned, number))
            return false;
        id.line = static_cast<quint32>(number);
    }
    if (id.type >= OrbItemId::Crate) {
        if (!readNumber(object, QStringLiteral("address"), MaximumUnsigned, number))
            return false;
        id.address = static_cast<quint32>(number);
    }
    if (id.type == OrbItemId::Channel) {
        if (!readNumber(object, QStringLiteral("channel"), MaximumSigned, number))
            return false;
        id.channel = static_cast<qint32>(number);
    }
    return true;
}

} // namespace

bool KdPluginCommon::parseDragAndDropString(const QMimeData *mimeData, QVector<OrbItemId> &items)
{
    items.clear();
    if (mimeData == nullptr)
        return false;
    const QByteArray payload = mimeData->data(hostkit::dragMimeType());
    // A part of an array is no array: a payload beyond the limit holds nothing that could be read.
    if (payload.size() > MaximumPayloadSize)
        return false;

    const QJsonArray array = QJsonDocument::fromJson(payload).array();
    for (const QJsonValue &element : array) {
        OrbItemId id;
        if (readIdentifier(element.toObject(), id))
            items.append(id);
    }
    return !items.isEmpty();
}
