#include "workbench/hostkit/orb_item_path.h"

#include <QStringRef>

#include <algorithm>
#include <array>
#include <limits>

namespace
{

bool isDecimal(const QStringRef &text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
}

/// The numbers that a path begins with, and what follows them.
struct LeadingNumbers
{
    std::array<quint32, 3> values{};
    int count = 0;
    QStringRef rest;
    bool valid = true; ///< false when a number does not fit
};

LeadingNumbers splitNumbers(const QString &path)
{
    LeadingNumbers numbers;
    numbers.rest = QStringRef(&path);
    while (numbers.count < static_cast<int>(numbers.values.size())) {
        const int dot = numbers.rest.indexOf(QLatin1Char('.'));
        const QStringRef part = dot < 0 ? numbers.rest : numbers.rest.left(dot);
        if (!isDecimal(part))
            break;
        numbers.values.at(static_cast<std::size_t>(numbers.count)) = part.toUInt(&numbers.valid);
        numbers.rest = dot < 0 ? QStringRef() : numbers.rest.mid(dot + 1);
        ++numbers.count;
        if (!numbers.valid)
            break;
    }
    return numbers;
}

} // namespace

namespace hostkit
{

bool parseItemPath(const QString &path, OrbItemId &id)
{
    const LeadingNumbers numbers = splitNumbers(path);
    // An item's name never begins with a number: a fourth one, or the only one, is a path that went wrong.
    const bool itemIsNumber = isDecimal(numbers.rest.left(numbers.rest.indexOf(QLatin1Char('.'))));
    if (!numbers.valid || numbers.rest.isEmpty() || itemIsNumber || numbers.count == 1)
        return false;

    const quint32 line = numbers.values[0];
    const quint32 address = numbers.values[1];
    const quint32 channel = numbers.values[2];
    const bool hasChannel = numbers.count == 3;
    if (hasChannel
        && (address >= FirstCrateAddress
            || channel > static_cast<quint32>(std::numeric_limits<qint32>::max())))
        return false;

    if (numbers.count == 0)
        id.type = OrbItemId::System;
    else if (hasChannel)
        id.type = OrbItemId::Channel;
    else
        id.type = address >= FirstCrateAddress ? OrbItemId::Crate : OrbItemId::Module;
    id.line = line;
    id.address = address;
    id.channel = hasChannel ? static_cast<qint32>(channel) : -1;
    id.itemName = numbers.rest.toString();
    return true;
}

} // namespace hostkit
