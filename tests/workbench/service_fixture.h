#pragma once

#include "tests/workbench/listener_log.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QString>

#include <memory>

/// The simulated service in a time that the test steps, with a listener, and the ids of what it simulates.
class ServiceFixture
{
protected:
    void setUp()
    {
        clock = std::make_shared<simulator::SteppedClock>();
        service = std::make_unique<simulator::SimulatedService>(clock);
        listener = std::make_unique<ListenerLog>();
        service->setListener(listener.get());
    }
    void tearDown()
    {
        service.reset();
        listener.reset();
    }

    static OrbItemId objectId(OrbItemId::Type level, quint32 line, quint32 address, qint32 channel,
                              const char *item)
    {
        OrbItemId id(level);
        id.connectionName = Local;
        id.line = line;
        id.address = address;
        id.channel = channel;
        id.itemName = QString::fromLatin1(item);
        return id;
    }

    static OrbItemId channelItem(const char *item) { return objectId(OrbItemId::Channel, 0, 0, 1, item); }

    static OrbItemId systemItem(const QString &connection, const QString &item)
    {
        OrbItemId id(OrbItemId::System);
        id.connectionName = connection;
        id.itemName = item;
        return id;
    }

    static inline const QString Local = QStringLiteral("local");
    static inline const QString LocalText = QStringLiteral("Rehearsal controller");
    static inline const QString Bench = QStringLiteral("bench");

    std::shared_ptr<simulator::SteppedClock> clock;
    std::unique_ptr<simulator::SimulatedService> service;
    std::unique_ptr<ListenerLog> listener;
};
