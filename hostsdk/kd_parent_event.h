#pragma once

#include "hostclient/host_export.h"
#include "hostclient/orb_item_id.h"
#include "hostsdk/kd_event_type.h"

#include <QStringList>
#include <QVector>

/// An event record: a number, texts and integers. The host sends it down to a tool. A plain value.
///
/// Chosen by our kit: an address takes two integers, at `index` and `index` + 1. The first holds the level in bits 56
/// to 63, the connection index in bits 32 to 55 (all ones for none) and the line in bits 0 to 31; the second holds
/// the channel in bits 32 to 63 (all ones for none) and the address in bits 0 to 31.
class HOST_EXPORT KdParentEvent
{
public:
    KdParentEvent();
    explicit KdParentEvent(KD::EventType eventType);
    KdParentEvent(const KdParentEvent &other);
    KdParentEvent &operator=(const KdParentEvent &other);
    ~KdParentEvent();

    /// Empties both argument lists; the type stays.
    void clear();

    /// Stores an integer argument, growing the list with zeros as needed. Indices above 4095 are ignored.
    void setIntArgument(qint64 value, quint64 index);

    /// The integer argument, or 0 when there is none at the index.
    qint64 getIntArgument(quint64 index) const;

    /// The text argument, or an empty text when there is none at the index.
    QString getStringArgument(quint64 index) const;

    /// The address packed at the index; Undefined when there is none.
    OrbItemId getHardwareId(unsigned index) const;

    /// Packs an address for getHardwareId. The name of its connection and of its item do not travel.
    void setHardwareId(const OrbItemId &id, unsigned index);

    KD::EventType type;
    QStringList stringArguments;
    QVector<qint64> intArguments;
};
