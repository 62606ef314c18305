#include "workbench/simulator/answer_text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace simulator
{

namespace
{

// By hand, because QJsonObject sorts its fields by name and a reader wants the place first.
QString jsonText(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

QString jsonField(const char *name, const QString &json)
{
    return QStringLiteral("\"%1\":%2").arg(QLatin1String(name), json);
}

} // namespace

QString triggerMessage(TarnResult result)
{
    switch (result) {
    case TarnResult::Success:
        return QStringLiteral("[{\"trigger\":\"true\"}]");
    case TarnResult::Denied:
        return QStringLiteral("[{\"trigger\":\"denied\"}]");
    case TarnResult::NoData:
        return QStringLiteral("[{\"trigger\":\"noData\"}]");
    case TarnResult::Failed:
    case TarnResult::NotConnected:
        break;
    }
    return QStringLiteral("[{\"trigger\":\"false\"}]");
}

QString dataObject(const QString &connectionName, const RequestCommand &command,
                   const OrbItemReading &reading)
{
    constexpr int Milliseconds = 3;
    const ObjectAddress &object = command.object;
    const bool isDevice = object.level == OrbItemId::Crate || object.level == OrbItemId::Module
        || object.level == OrbItemId::Channel;
    QStringList fields{jsonField("controller", jsonText(connectionName))};
    if (isDevice || object.level == OrbItemId::Line)
        fields << jsonField("line", QString::number(object.line));
    if (isDevice)
        fields << jsonField("address", QString::number(object.address));
    if (object.level == OrbItemId::Channel)
        fields << jsonField("channel", QString::number(object.channel));
    const bool isText = reading.type == QLatin1String("string");
    fields << jsonField("item", jsonText(command.item))
           << jsonField("value", isText ? jsonText(reading.value) : reading.value)
           << jsonField("unit", jsonText(reading.unit))
           << jsonField("timestamp", QString::number(reading.timestamp, 'f', Milliseconds));
    return QLatin1Char('{') + fields.join(QLatin1Char(',')) + QLatin1Char('}');
}

QString dataMessage(const QStringList &objects)
{
    return QLatin1Char('[') + objects.join(QLatin1Char(',')) + QLatin1Char(']');
}

} // namespace simulator
