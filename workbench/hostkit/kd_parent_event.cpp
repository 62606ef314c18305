#include "hostsdk/kd_parent_event.h"

namespace
{

constexpr quint64 MaximumIndex = 4095;
constexpr quint64 NoConnection = 0xFFFFFF;
constexpr int TypeShift = 56;
constexpr int ConnectionShift = 32;
constexpr int ChannelShift = 32;

} // namespace

KdParentEvent::KdParentEvent() : KdParentEvent(static_cast<KD::EventType>(0)) { }

KdParentEvent::KdParentEvent(KD::EventType eventType) : type(eventType) { }

KdParentEvent::KdParentEvent(const KdParentEvent &other) = default;
KdParentEvent &KdParentEvent::operator=(const KdParentEvent &other) = default;
KdParentEvent::~KdParentEvent() = default;

void KdParentEvent::clear()
{
    stringArguments.clear();
    intArguments.clear();
}

void KdParentEvent::setIntArgument(qint64 value, quint64 index)
{
    if (index > MaximumIndex)
        return;
    const int position = static_cast<int>(index);
    if (position >= intArguments.size())
        intArguments.resize(position + 1);
    intArguments[position] = value;
}

qint64 KdParentEvent::getIntArgument(quint64 index) const
{
    return index < static_cast<quint64>(intArguments.size()) ? intArguments.at(static_cast<int>(index)) : 0;
}

QString KdParentEvent::getStringArgument(quint64 index) const
{
    return index < static_cast<quint64>(stringArguments.size()) ? stringArguments.at(static_cast<int>(index))
                                                                : QString();
}

OrbItemId KdParentEvent::getHardwareId(unsigned index) const
{
    // In 64 bits, so that the last index has a successor that is simply not there.
    const quint64 first = index;
    if (first + 1 >= static_cast<quint64>(intArguments.size()))
        return {};
    const auto place = static_cast<quint64>(getIntArgument(first));
    const auto device = static_cast<quint64>(getIntArgument(first + 1));

    const quint64 level = place >> TypeShift;
    if (level < OrbItemId::Item || level > OrbItemId::Channel)
        return {};
    OrbItemId id(static_cast<OrbItemId::Type>(static_cast<qint32>(level)));
    const quint64 connection = (place >> ConnectionShift) & NoConnection;
    id.connection = connection == NoConnection ? -1 : static_cast<qint32>(connection);
    id.line = static_cast<quint32>(place);
    id.channel = static_cast<qint32>(static_cast<quint32>(device >> ChannelShift));
    id.address = static_cast<quint32>(device);
    return id;
}

void KdParentEvent::setHardwareId(const OrbItemId &id, unsigned index)
{
    // One half of an address is none: both integers find room or neither is written.
    if (static_cast<quint64>(index) + 1 > MaximumIndex)
        return;
    const bool fits = id.connection >= 0 && static_cast<quint64>(id.connection) < NoConnection;
    const quint64 connection = fits ? static_cast<quint64>(id.connection) : NoConnection;
    const quint64 place =
        (static_cast<quint64>(id.type) << TypeShift) | (connection << ConnectionShift) | quint64{id.line};
    const quint64 device =
        (static_cast<quint64>(static_cast<quint32>(id.channel)) << ChannelShift) | quint64{id.address};
    setIntArgument(static_cast<qint64>(place), index);
    setIntArgument(static_cast<qint64>(device), quint64{index} + 1);
}
