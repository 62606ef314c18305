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

QString placeName(const ObjectAddress &object)
{
    switch (object.level) {
    case OrbItemId::Line:
        return QStringLiteral("line ") + addressText(object);
    case OrbItemId::Crate:
        return QStringLiteral("crate ") + addressText(object);
    case OrbItemId::Module:
        return QStringLiteral("module ") + addressText(object);
    case OrbItemId::Channel:
        return QStringLiteral("channel ") + addressText(object);
    case OrbItemId::System:
    case OrbItemId::Undefined:
    case OrbItemId::Item:
        break;
    }
    return QStringLiteral("controller");
}

} // namespace simulator
