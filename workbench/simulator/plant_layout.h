#pragma once

#include "hostclient/orb_request_item.h"
#include "workbench/simulator/fault.h"

#include <QString>

#include <limits>
#include <vector>

namespace simulator
{

/// An output without a load.
constexpr double NoLoad = std::numeric_limits<double>::infinity();

/// What hangs on an output, and the output's own capacitance. Plain data.
struct LoadLayout
{
    double resistance = NoLoad; ///< Ohm, above 0 or NoLoad; a short has next to nothing
    double capacitance = 0; ///< F of output, cable and load, 0 or more
    double leakage = 0; ///< A besides what the resistance draws, while there is any voltage; 0 or more
    double leakageDrift = 0; ///< A/s by which the leakage grows from the start on
    double sparkInterval =
        0; ///< s between two sparks on average, above half the voltage limit; 0 for no sparks
};

/// How far a module's measurements are from what is there. Plain data.
struct MeasurementLayout
{
    double voltageNoise = 0; ///< V, standard deviation
    double currentNoise = 0; ///< A, standard deviation
    double voltageOffset = 0; ///< V
    double currentOffset = 0; ///< A
    double voltageStep = 0; ///< V between two values of the converter; 0 for none
    double currentStep = 0; ///< A
};

/// A module and its channels. Plain data.
struct ModuleLayout
{
    quint32 address = 0; ///< below 1000
    double nominalVoltage = 0; ///< V, above 0
    double nominalCurrent = 0; ///< A, above 0
    bool isNegative = false; ///< the polarity of its outputs
    double voltageLimit = 100; ///< percent of the nominal voltage, above 0, to 100
    double currentLimit = 100; ///< percent of the nominal current
    double voltageRampspeed = 10; ///< %/s before anybody sets another one
    double currentRampspeed = 50; ///< %/s
    MeasurementLayout measurement;
    std::vector<LoadLayout> loads; ///< one for each channel
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
    double latency = -1; ///< s between a raw request and its answer; below 0 for the service's own
    double jitter = 0; ///< s by which an answer may take longer, evenly spread
    std::vector<LineLayout> lines;
};

/// A message that is handed to the scripts that have activated the pass-through of a controller by then. Plain data.
struct ScheduledMessage
{
    double at = 0; ///< s on the plant's clock, 0 or more
    double every = 0; ///< s after which it comes again; 0 for once
    QString controller; ///< connection name or display text
    OrbRequestItem request;
};

/// Everything that is simulated. Plain data; the first controller answers for addresses that nobody has.
struct PlantLayout
{
    std::vector<ControllerLayout> controllers;
    quint32 seed = 1; ///< of noise, sparks and jitter
    std::vector<ScheduledFault> faults;
    std::vector<ScheduledMessage> messages;

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
