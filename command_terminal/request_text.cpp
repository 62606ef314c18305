#include "command_terminal/request_text.h"

#include <QStringList>

namespace command_terminal
{

QString requestText(const RequestFields &fields)
{
    // Not by place markers: a field may hold one.
    const QStringList parts = {
        QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":")"),
        fields.command,
        QStringLiteral(R"(","p":{"p":{"l":")"),
        fields.line,
        QStringLiteral(R"(","a":")"),
        fields.address,
        QStringLiteral(R"(","c":")"),
        fields.channel,
        QStringLiteral(R"("},"i":")"),
        fields.item,
        QStringLiteral(R"(","v":")"),
        fields.value,
        QStringLiteral(R"(","u":")"),
        fields.unit,
        QStringLiteral(R"("}}],"r":"websocket"})"),
    };
    return parts.join(QString());
}

} // namespace command_terminal
