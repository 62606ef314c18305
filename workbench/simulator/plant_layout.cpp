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
    layout.loads.assign(channels, volts / (LoadFraction * amperes));
    layout.loads.back() = NoLoad;
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

    return {{
        {QStringLiteral("local"),
         QStringLiteral("Rehearsal controller"),
         QStringLiteral("127.0.0.1:8080"),
         true,
         {crateLine}},
        {QStringLiteral("bench"),
         QStringLiteral("Bench supply"),
         QStringLiteral("127.0.0.1:8081"),
         false,
         {benchLine}},
    }};
}

} // namespace simulator
