#include "workbench/hostkit/drag_payload.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{

QJsonObject toJson(const OrbItemId &id)
{
    QJsonObject object{{QStringLiteral("level"), static_cast<int>(id.type)}};
    if (id.connection >= 0)
        object.insert(QStringLiteral("connection"), id.connection);
    if (id.type >= OrbItemId::Line)
        object.insert(QStringLiteral("line"), static_cast<qint64>(id.line));
    if (id.type >= OrbItemId::Crate)
        object.insert(QStringLiteral("address"), static_cast<qint64>(id.address));
    if (id.type == OrbItemId::Channel)
        object.insert(QStringLiteral("channel"), id.channel);
    return object;
}

} // namespace

namespace hostkit
{

QString dragMimeType()
{
    return QStringLiteral("application/x-tarn-items");
}

std::unique_ptr<QMimeData> makeDragPayload(const QVector<OrbItemId> &items, const QString &mimeType)
{
    QJsonArray array;
    for (const OrbItemId &id : items) {
        if (id.type >= OrbItemId::System && id.type <= OrbItemId::Channel)
            array.append(toJson(id));
    }
    auto payload = std::make_unique<QMimeData>();
    payload->setData(mimeType, QJsonDocument(array).toJson(QJsonDocument::Compact));
    return payload;
}

} // namespace hostkit
