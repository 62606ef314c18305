#include "workbench/simulator/object_address.h"

namespace simulator
{

QString addressText(const ObjectAddress &object)
{
    switch (object.level) {
    case OrbItemId::Line:
        return QString::number(object.line);
    case OrbItemId::Crate:
    case OrbItemId::Module:
        return QStringLiteral("%1.%2").arg(object.line).arg(object.address);
    case OrbItemId::Channel:
        return QStringLiteral("%1.%2.%3").arg(object.line).arg(object.address).arg(object.channel);
    case OrbItemId::System:
    case OrbItemId::Undefined:
    case OrbItemId::Item:
        break;
    }
    return {};
}

} // namespace simulator
