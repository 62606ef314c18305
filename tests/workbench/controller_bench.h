#pragma once

#include "workbench/simulator/controller.h"
#include "workbench/simulator/item_text.h"

#include <QString>

inline constexpr simulator::ObjectAddress System{OrbItemId::System, 0, 0, -1};
inline constexpr simulator::ObjectAddress Crate1000{OrbItemId::Crate, 0, 1000, -1};
inline constexpr simulator::ObjectAddress Module0{OrbItemId::Module, 0, 0, -1};
inline constexpr simulator::ObjectAddress Module3{OrbItemId::Module, 0, 3, -1};
inline constexpr simulator::ObjectAddress Channel00{OrbItemId::Channel, 0, 0, 0};
inline constexpr simulator::ObjectAddress Channel31{OrbItemId::Channel, 0, 3, 1};

/// A controller of the rehearsal plant, the first unless told otherwise, in a time that the test steps.
class ControllerBench
{
public:
    explicit ControllerBench(std::size_t which = 0)
        : controller(simulator::PlantLayout::rehearsal().controllers[which], run)
    { }

    QString text(const simulator::ObjectAddress &object, const char *item)
    {
        const simulator::ItemDefinition &definition =
            *simulator::Controller::itemsOf(object.level)->find(QString::fromLatin1(item));
        return simulator::formatValue(definition, controller.read(object, definition, view, now));
    }
    double number(const simulator::ObjectAddress &object, const char *item)
    {
        return text(object, item).toDouble();
    }
    bool isTrue(const simulator::ObjectAddress &object, const char *item)
    {
        return text(object, item) == QLatin1String("true");
    }

    TarnResult write(const simulator::ObjectAddress &object, const char *item, const char *value)
    {
        const simulator::ItemDefinition &definition =
            *simulator::Controller::itemsOf(object.level)->find(QString::fromLatin1(item));
        simulator::ItemValue parsed;
        if (!simulator::parseValue(definition, QString::fromLatin1(value), QString(), parsed))
            return TarnResult::Failed;
        return controller.write(object, definition, parsed, now);
    }
    bool set(const simulator::ObjectAddress &object, const char *item, const char *value)
    {
        return write(object, item, value) == TarnResult::Success;
    }
    bool ramp(const simulator::ObjectAddress &object, const char *volts)
    {
        return set(object, "Control.voltageSet", volts) && set(object, "Control.on", "1");
    }

    double now = 10;
    simulator::ConnectionView view{QStringLiteral("local"), QStringLiteral("Rehearsal controller"),
                                   QStringLiteral("s"), 1};
    simulator::PlantRun run;
    simulator::Controller controller;
};
