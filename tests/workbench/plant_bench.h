#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QString>

#include <chrono>
#include <memory>

/// The simulated system in a time that the test steps, behind the layer through which the window sees it.
class PlantBench
{
public:
    explicit PlantBench(const simulator::PlantLayout &layout = simulator::PlantLayout::rehearsal())
        : service(clock, layout), dataAccess(service), mainData(&dataAccess)
    { }

    void step(double seconds)
    {
        clock->advance(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
    }

    static OrbItemId channel(qint32 number, quint32 module = 0)
    {
        OrbItemId id(OrbItemId::Channel);
        id.connectionName = QStringLiteral("local");
        id.address = module;
        id.channel = number;
        return id;
    }

    static simulator::ObjectAddress address(qint32 number, quint32 module = 0)
    {
        return {OrbItemId::Channel, 0, module, number};
    }

    bool set(const OrbItemId &id, const char *item, const QString &value)
    {
        OrbItemId target = id;
        target.itemName = QString::fromLatin1(item);
        return service.writeItem(target, value) == TarnResult::Success;
    }

    /// On, and on its way to that voltage at 10 % of 6 kV a second.
    bool rampTo(const OrbItemId &id, double volts)
    {
        return set(id, "Control.voltageSet", QString::number(volts))
            && set(id, "Control.on", QStringLiteral("1"));
    }

    std::shared_ptr<simulator::SteppedClock> clock = std::make_shared<simulator::SteppedClock>();
    simulator::SimulatedService service;
    DlDataAccess dataAccess;
    KdMainData mainData;
};
