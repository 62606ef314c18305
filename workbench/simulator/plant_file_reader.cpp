#include "workbench/simulator/plant_file_reader.h"

#include "workbench/simulator/connection_address.h"
#include "workbench/simulator/plant_file_object.h"
#include "workbench/simulator/refusal_text.h"

#include <algorithm>
#include <limits>

namespace simulator
{

namespace
{

constexpr quint32 HighestNumber = 999; // of lines and modules
constexpr quint32 FirstCrate = 1000;
constexpr quint32 HighestCrate = 9999;
constexpr quint32 FirstSerialNumber = 480001;
constexpr quint32 FirstPort = 8080;

LoadLayout load(const PlantFileObject &source)
{
    LoadLayout result;
    if (source.has("resistance"))
        result.resistance = source.number("resistance");
    result.capacitance = source.number("capacitance");
    result.leakage = source.number("leakage");
    result.leakageDrift = source.number("leakageDrift");
    result.sparkInterval = source.number("sparkInterval");
    return result;
}

std::vector<LoadLayout> loads(const PlantFileObject &module)
{
    const std::size_t channels = module.integer("channels");
    const std::vector<PlantFileObject> sources = module.objects("load");
    std::vector<LoadLayout> result;
    if (!module.isList("load")) {
        if (!sources.empty() && sources.front().has("count"))
            sources.front().refuse("count",
                                   QStringLiteral("\"count\" belongs to a load in a list; this one is "
                                                  "the load of all channels"));
        result.assign(channels, sources.empty() ? LoadLayout() : load(sources.front()));
        return result;
    }
    std::size_t count = 0;
    for (const PlantFileObject &source : sources)
        count += source.integer("count");
    if (count != channels) {
        module.refuse("load",
                      QStringLiteral("the loads in this list make up %1 channels; the module has %2")
                          .arg(count)
                          .arg(channels));
        return result;
    }
    for (const PlantFileObject &source : sources)
        result.insert(result.end(), source.integer("count"), load(source));
    return result;
}

MeasurementLayout measurement(const PlantFileObject &source)
{
    MeasurementLayout result;
    result.voltageNoise = source.number("voltageNoise");
    result.currentNoise = source.number("currentNoise");
    result.voltageOffset = source.number("voltageOffset");
    result.currentOffset = source.number("currentOffset");
    result.voltageStep = source.number("voltageStep");
    result.currentStep = source.number("currentStep");
    return result;
}

} // namespace

void PlantFileReader::read(const PlantFileObject &source)
{
    plant.seed = source.integer("seed");
    if (!source.allowAtMost(MostPlantControllers, "controllers"))
        return;
    const std::vector<PlantFileObject> controllers = source.objects("controllers");
    if (controllers.empty())
        source.refuse("controllers", QStringLiteral("a plant needs at least one controller"));
    for (const PlantFileObject &controller : controllers) {
        if (!source.errors().isEmpty())
            return;
        readController(controller);
    }
    const bool hasLocal =
        std::any_of(controllers.begin(), controllers.end(),
                    [](const PlantFileObject &controller) { return controller.has("local"); });
    if (!hasLocal && !plant.controllers.empty())
        plant.controllers.front().isLocal = true;
}

void PlantFileReader::readController(const PlantFileObject &source)
{
    ControllerLayout controller;
    controller.connectionName = source.text("name");
    controller.displayText = source.has("text") ? source.text("text") : controller.connectionName;
    controller.address = source.has("address")
        ? source.text("address")
        : QStringLiteral("127.0.0.1:%1").arg(FirstPort + plant.controllers.size());
    controller.isLocal = source.flag("local");
    controller.latency = source.number("latency");
    controller.jitter = source.number("jitter");
    checkController(source, controller);
    readLines(source, controller.lines);
    plant.controllers.push_back(std::move(controller));
}

void PlantFileReader::checkController(const PlantFileObject &source, const ControllerLayout &controller) const
{
    if (!isConnectionAddress(controller.address))
        source.refuse("address",
                      QStringLiteral("\"address\" of a controller is %1; allowed is host:port, with a "
                                     "port from 1 to 65535")
                          .arg(quoted(controller.address)));
    for (const ControllerLayout &other : plant.controllers) {
        if (other.connectionName == controller.connectionName)
            source.refuse("name",
                          QStringLiteral("there are two controllers of the name %1")
                              .arg(quoted(controller.connectionName)));
        if (other.displayText == controller.displayText)
            source.refuse("text",
                          QStringLiteral("there are two controllers of the text %1")
                              .arg(quoted(controller.displayText)));
        if (other.displayText == controller.connectionName)
            source.refuse("name",
                          QStringLiteral("there is a controller of the text %1 already")
                              .arg(quoted(controller.connectionName)));
        if (other.connectionName == controller.displayText)
            source.refuse("text",
                          QStringLiteral("there is a controller of the name %1 already")
                              .arg(quoted(controller.displayText)));
        if (other.address == controller.address)
            source.refuse("address",
                          QStringLiteral("there are two controllers at %1").arg(quoted(controller.address)));
        if (other.isLocal && controller.isLocal)
            source.refuse(
                "local",
                QStringLiteral("%1 is the local controller already").arg(quoted(other.connectionName)));
    }
}

void PlantFileReader::readLines(const PlantFileObject &source, std::vector<LineLayout> &lines)
{
    Numbers numbers;
    const std::vector<PlantFileObject> lineSources = source.objects("lines");
    for (const PlantFileObject &lineSource : lineSources) {
        const quint32 count = lineSource.integer("count");
        for (quint32 i = 0; i < count && source.errors().isEmpty(); ++i) {
            LineState state;
            state.crates.next = FirstCrate;
            if (!number(lineSource, "line", {}, i, HighestNumber, numbers, state.line))
                return;
            LineLayout line;
            line.line = state.line;
            readCrates(lineSource, state, line.crates);
            readModules(lineSource, state, line.modules);
            lines.push_back(std::move(line));
        }
    }
}

void PlantFileReader::readCrates(const PlantFileObject &source, LineState &line,
                                 std::vector<CrateLayout> &crates)
{
    const QString place = QStringLiteral("%1.").arg(line.line);
    const std::vector<PlantFileObject> crateSources = source.objects("crates");
    for (const PlantFileObject &crateSource : crateSources) {
        const quint32 count = crateSource.integer("count");
        crateCount += count;
        if (crateCount > static_cast<std::size_t>(MostPlantCrates)) {
            crateSource.refuse(
                "count", QStringLiteral("with these the plant has more than %1 crates").arg(MostPlantCrates));
            return;
        }
        for (quint32 i = 0; i < count && source.errors().isEmpty(); ++i) {
            CrateLayout crate;
            if (!number(crateSource, "address", place, i, HighestCrate, line.crates, crate.address))
                return;
            readModules(crateSource, line, crate.modules);
            crates.push_back(std::move(crate));
        }
    }
}

void PlantFileReader::readModules(const PlantFileObject &source, LineState &line,
                                  std::vector<ModuleLayout> &modules)
{
    const QString place = QStringLiteral("%1.").arg(line.line);
    const std::vector<PlantFileObject> moduleSources = source.objects("modules");
    for (const PlantFileObject &moduleSource : moduleSources) {
        const ModuleLayout one = module(moduleSource);
        const quint32 count = moduleSource.integer("count");
        if (one.serialNumber + quint64(count) - 1 > std::numeric_limits<quint32>::max())
            moduleSource.refuse(
                "serial",
                QStringLiteral("with \"count\" %1 the serial numbers get beyond the highest, %2")
                    .arg(count)
                    .arg(std::numeric_limits<quint32>::max()));
        for (quint32 i = 0; i < count && source.errors().isEmpty(); ++i) {
            ModuleLayout layout = one;
            if (!number(moduleSource, "address", place, i, HighestNumber, line.modules, layout.address)
                || !takeChannels(moduleSource, layout.loads.size()))
                return;
            layout.serialNumber =
                moduleSource.has("serial") ? one.serialNumber + i : FirstSerialNumber + moduleCount;
            ++moduleCount;
            modules.push_back(std::move(layout));
        }
    }
}

ModuleLayout PlantFileReader::module(const PlantFileObject &source) const
{
    ModuleLayout layout;
    layout.nominalVoltage = source.number("voltage");
    layout.nominalCurrent = source.number("current");
    layout.isNegative = source.text("polarity") == QLatin1String("negative");
    layout.voltageLimit = source.number("voltageLimit");
    layout.currentLimit = source.number("currentLimit");
    layout.voltageRampspeed = source.number("voltageRamp");
    layout.currentRampspeed = source.number("currentRamp");
    layout.measurement = measurement(source.object("measurement"));
    layout.loads = loads(source);
    layout.serialNumber = source.integer("serial");
    layout.firmwareName = source.has("firmware") ? source.text("firmware")
                                                 : QStringLiteral("SIM-HV%1").arg(layout.loads.size());
    layout.firmwareRelease = source.has("release") ? source.text("release") : QStringLiteral("7.12.0");
    return layout;
}

bool PlantFileReader::number(const PlantFileObject &source, const char *name, const QString &place,
                             quint32 repetition, quint32 highest, Numbers &numbers, quint32 &result)
{
    const bool isGiven = source.has(name) && repetition == 0;
    result = isGiven ? source.integer(name) : numbers.next;
    const QString what = QStringLiteral("%1 %2%3").arg(source.kindName(), place).arg(result);
    if (result > highest) {
        source.refuse(name, QStringLiteral("%1 is beyond the highest number, %2").arg(what).arg(highest));
        return false;
    }
    if (numbers.taken.contains(result)) {
        source.refuse(name, QStringLiteral("%1 is there twice").arg(what));
        return false;
    }
    numbers.taken.insert(result);
    numbers.next = result + 1;
    return true;
}

bool PlantFileReader::takeChannels(const PlantFileObject &source, std::size_t count)
{
    channels += count;
    if (channels <= static_cast<std::size_t>(MostPlantChannels))
        return true;
    source.refuse(
        "channels",
        QStringLiteral("with this module the plant has more than %1 channels").arg(MostPlantChannels));
    return false;
}

} // namespace simulator
