// Plant files of any content: nothing crashes, what is refused is refused in one line with its place, and what is taken
// makes a plant in which every object can be found, once.

#include "tests/fuzz/fuzz_require.h"

#include "workbench/simulator/plant_file.h"
#include "workbench/simulator/plant_file_places.h"
#include "workbench/simulator/plant_schema.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>
#include <QString>

#include <sanitizer/lsan_interface.h>

#include <cmath>

namespace
{

using namespace simulator;

struct Found
{
    QSet<quint32> addresses; // of modules on a line
    std::size_t channels = 0;
};

void look(const std::vector<ModuleLayout> &modules, Found &found)
{
    for (const ModuleLayout &module : modules) {
        require(module.address < 1000 && !found.addresses.contains(module.address),
                "a module has a place of its own");
        found.addresses.insert(module.address);
        found.channels += module.loads.size();
        require(!module.loads.empty(), "a module has channels");
        require(module.nominalVoltage > 0 && std::isfinite(module.nominalVoltage),
                "there is a nominal voltage");
        require(module.nominalCurrent > 0 && std::isfinite(module.nominalCurrent),
                "there is a nominal current");
        require(module.voltageLimit > 0 && module.voltageLimit <= 100,
                "a limit is a part of the nominal value");
        for (const LoadLayout &load : module.loads)
            require(load.resistance > 0 && load.capacitance >= 0 && std::isfinite(load.capacitance),
                    "a load is one");
    }
}

void look(const PlantLayout &plant)
{
    require(!plant.controllers.empty(), "a plant has a controller");
    std::size_t channels = 0;
    QSet<QString> names; // and texts
    for (const ControllerLayout &controller : plant.controllers) {
        require(PlantSchema::isName(controller.connectionName) && !names.contains(controller.connectionName),
                "a controller has a name of its own");
        require(PlantSchema::isName(controller.displayText)
                    && (controller.displayText == controller.connectionName
                        || !names.contains(controller.displayText)),
                "nobody takes a controller for another one by its text");
        names << controller.connectionName << controller.displayText;
        QSet<quint32> lines;
        for (const LineLayout &line : controller.lines) {
            require(!lines.contains(line.line), "a line has a number of its own");
            lines.insert(line.line);
            Found found;
            QSet<quint32> crates;
            for (const CrateLayout &crate : line.crates) {
                require(crate.address >= 1000 && !crates.contains(crate.address),
                        "a crate has a place of its own");
                crates.insert(crate.address);
                look(crate.modules, found);
            }
            look(line.modules, found);
            channels += found.channels;
        }
    }
    require(channels <= static_cast<std::size_t>(MostPlantChannels),
            "a plant has no more channels than it may");
    for (const ScheduledFault &scheduled : plant.faults) {
        require(scheduled.at >= 0 && scheduled.fault.duration >= 0 && scheduled.fault.amount >= 0,
                "a fault is in the future");
        require(names.contains(scheduled.fault.controller), "a fault is of a controller");
    }
}

/// Qt's reader loses some memory over a text that is not JSON, or has a member twice. That is no finding here.
bool losesMemory(const QByteArray &text)
{
    const __lsan::ScopedDisabler disabled;
    QJsonParseError error;
    QJsonDocument::fromJson(text, &error);
    return error.error != QJsonParseError::NoError || !PlantFilePlaces(text).repeatedPath().isEmpty();
}

bool parse(const QByteArray &text, PlantLayout &plant, QString &error)
{
    if (!losesMemory(text))
        return PlantFile::parse(text, QStringLiteral("plant"), plant, error);
    const __lsan::ScopedDisabler disabled;
    return PlantFile::parse(text, QStringLiteral("plant"), plant, error);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<int>(size));
    PlantLayout plant;
    QString error;
    if (parse(text, plant, error)) {
        require(error.isEmpty(), "nothing is said of a plant that is taken");
        look(plant);
        return 0;
    }
    static const QRegularExpression form(QStringLiteral("\\Aplant:([1-9][0-9]*):([1-9][0-9]*): [^\\n]+\\z"));
    const QRegularExpressionMatch match = form.match(error);
    require(match.hasMatch(), "a refusal is one line with its place");
    require(match.captured(1).toInt() <= text.count('\n') + 1, "the place is in the file");
    require(plant.controllers.empty(), "what is refused leaves nothing");
    return 0;
}
