#include "hostclient/orb_request_item.h"

OrbRequestItem::OrbRequestItem() = default;
OrbRequestItem::OrbRequestItem(const OrbRequestItem &other) = default;
OrbRequestItem &OrbRequestItem::operator=(const OrbRequestItem &other) = default;
OrbRequestItem::~OrbRequestItem() = default;

QString OrbRequestItem::getCommandTypeAsString() const
{
    switch (commandType) {
    case GetItem:
        return QStringLiteral("getItem");
    case SetItem:
        return QStringLiteral("setItem");
    case Unknown:
        break;
    }
    return {};
}
