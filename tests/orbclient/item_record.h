#pragma once

#include "hostclient/tarn_item.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

/// The record of an item that was read. Texts that fill their field stand there without a NUL; longer ones are cut.
inline TarnItem itemRecord(const QByteArray &value, const QByteArray &timestamp = QByteArray())
{
    TarnItem item{};
    item.path[0] = 'p';
    const auto fill = [](char *field, std::size_t size, const QByteArray &text) {
        std::memcpy(field, text.constData(), std::min(size, static_cast<std::size_t>(text.size())));
    };
    fill(item.value, sizeof(item.value), value);
    fill(item.timestamp, sizeof(item.timestamp), timestamp);
    return item;
}
