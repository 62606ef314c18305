#pragma once

#include <QString>

#include <limits>
#include <vector>

namespace simulator
{

/// An output without a load.
constexpr double NoLoad = std::numeric_limits<double>::infinity();

/// A module and its channels. Plain data.
struct ModuleLayout
{
    quint32 address = 0; ///< below 1000
    double nominalVoltage = 0; ///< V, above 0
    double nominalCurrent = 0; ///< A, above 0
    std::vector<double> loads; ///< Ohm, one for each channel, above 0 or NoLoad
    quint32 serialNumber = 0;
    QString firmwareName;
    QString firmwareRelease;
};

/// A crate and the modules in it. Plain data.
struct CrateLayout
{
    quint32 address = 0; ///< 1000 or above
    std::vector<ModuleLayout> modules;
};

/// A line of a controller: crates, and modules that have their own supply. Plain data.
struct LineLayout
{
    quint32 line = 0;
    std::vector<CrateLayout> crates;
    std::vector<ModuleLayout> modules;
};

/// A controller and what hangs on it. Plain data.
struct ControllerLayout
{
    QString connectionName; ///< unique among the controllers
    QString displayText; ///< unique among the controllers
    QString address; ///< "host:port" under which it is reached
    bool isLocal = false; ///< the service on this machine
    std::vector<LineLayout> lines;
};

/// Everything that is simulated. Plain data; the first controller answers for addresses that nobody has.
struct PlantLayout
{
    std::vector<ControllerLayout> controllers;

    /// Two controllers:
    /// "local", shown as "Rehearsal controller", is the local service at 127.0.0.1:8080. On its line 0 is the crate
    /// 1000 with the modules 0 (8 channels, 6 kV, 1 mA), 1 (12 channels, 3 kV, 2 mA), 2 (16 channels, 2 kV, 4 mA)
    /// and 3 (16 channels, 500 V, 10 mA).
    /// "bench", shown as "Bench supply", is at 127.0.0.1:8081. On its line 0 is the module 0 (4 channels, 1 kV,
    /// 5 mA) with a supply of its own and no crate.
    /// Each channel's load draws 40 % of the nominal current at the nominal voltage; the last channel of a module has
    /// no load.
    static PlantLayout rehearsal();
};

} // namespace simulator
