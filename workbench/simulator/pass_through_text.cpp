#include "workbench/simulator/pass_through_text.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"

#include <QStringList>

namespace simulator
{

namespace
{

constexpr quint32 FirstCrate = 1000;

QString placeText(quint32 line, quint32 address, qint32 channel)
{
    QString text = QStringLiteral("%1.%2").arg(line).arg(address);
    if (channel >= 0 && address < FirstCrate)
        text += QStringLiteral(".%1").arg(channel);
    return text;
}

QString joined(const QStringList &words)
{
    QStringList present = words;
    present.removeAll(QString());
    return present.join(QLatin1Char(' '));
}

} // namespace

QString passThroughText(const OrbRequestItem &request)
{
    const QString command = request.getCommandTypeAsString();
    if (command.isEmpty())
        return request.rawJson;
    return joined({command, placeText(request.line, request.address, request.channel), request.itemName,
                   request.value, request.unit});
}

QString passThroughText(const OrbItemValue &value)
{
    const OrbItemId &id = value.id();
    return joined({value.command(), placeText(id.line, id.address, id.channel), id.itemName,
                   value.value().toString(), value.unit()});
}

} // namespace simulator
