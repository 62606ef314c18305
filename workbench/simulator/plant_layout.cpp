#include "workbench/simulator/plant_layout.h"

namespace simulator
{

namespace
{

ModuleLayout module(quint32 address, std::size_t channels, double volts, double amperes, quint32 serialNumber)
{
    constexpr double LoadFraction = 0.4;
    ModuleLayout layout;
    layout.address = address;
    layout.nominalVoltage = volts;
    layout.nominalCurrent = amperes;
    LoadLayout load;
    load.resistance = volts / (LoadFraction * amperes);
    layout.loads.assign(channels, load);
    layout.loads.back().resistance = NoLoad;
    layout.serialNumber = serialNumber;
    layout.firmwareName = QStringLiteral("SIM-HV%1").arg(channels);
    layout.firmwareRelease = QStringLiteral("7.12.0");
    return layout;
}

} // namespace

PlantLayout PlantLayout::rehearsal()
{
    CrateLayout crate;
    crate.address = 1000;
    crate.modules = {
        module(0, 8, 6000, 0.001, 480101),
        module(1, 12, 3000, 0.002, 480102),
        module(2, 16, 2000, 0.004, 480103),
        module(3, 16, 500, 0.010, 480104),
    };

    LineLayout crateLine;
    crateLine.crates = {crate};
    LineLayout benchLine;
    benchLine.modules = {module(0, 4, 1000, 0.005, 480201)};

    ControllerLayout local;
    local.connectionName = QStringLiteral("local");
    local.displayText = QStringLiteral("Rehearsal controller");
    local.address = QStringLiteral("127.0.0.1:8080");
    local.isLocal = true;
    local.lines = {crateLine};
    ControllerLayout bench;
    bench.connectionName = QStringLiteral("bench");
    bench.displayText = QStringLiteral("Bench supply");
    bench.address = QStringLiteral("127.0.0.1:8081");
    bench.lines = {benchLine};

    PlantLayout plant;
    plant.controllers = {local, bench};
    return plant;
}

} // namespace simulator
