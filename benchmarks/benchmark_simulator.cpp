// What a large plant costs: 100,000 channels against ten. Each figure has a limit, and the program fails when one is
// missed.

#include "benchmarks/held_figure.h"
#include "hostclient/orb_item_id.h"
#include "workbench/simulator/controller.h"
#include "workbench/simulator/real_clock.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QElapsedTimer>
#include <QSemaphore>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>

using namespace simulator;

namespace
{

constexpr int ChannelsOfModule = 16;
constexpr int ModulesOfCrate = 10;
constexpr int ModulesOfLine = 1000;
constexpr int Large = 6250; // modules: 100,000 channels

constexpr double ReadySeconds = 1;
constexpr double BytesOfChannel = 400;
constexpr double SameObjectRatio = 1.5; // with 100,000 channels by with ten, the same channel over and over
constexpr double AnyObjectRatio =
    4; // the same, another channel every time: memory is farther away than the cache
constexpr double IdleSeconds = 0.001; // of the processor, in a second

ModuleLayout moduleLayout(quint32 address)
{
    ModuleLayout module;
    module.address = address;
    module.nominalVoltage = 2000;
    module.nominalCurrent = 0.004;
    LoadLayout load;
    load.resistance = 1e6;
    module.loads.assign(ChannelsOfModule, load);
    module.firmwareName = QStringLiteral("SIM");
    module.firmwareRelease = QStringLiteral("1");
    return module;
}

PlantLayout plantLayout(int modules)
{
    ControllerLayout controller;
    controller.connectionName = QStringLiteral("local");
    controller.displayText = QStringLiteral("Large plant");
    controller.address = QStringLiteral("127.0.0.1:8080");
    for (int module = 0; module < modules; ++module) {
        const auto line = static_cast<std::size_t>(module / ModulesOfLine);
        const auto address = static_cast<quint32>(module % ModulesOfLine);
        if (controller.lines.size() <= line) {
            controller.lines.emplace_back();
            controller.lines.back().line = static_cast<quint32>(line);
        }
        std::vector<CrateLayout> &crates = controller.lines.back().crates;
        if (address % ModulesOfCrate == 0) {
            crates.emplace_back();
            crates.back().address = 1000 + address / ModulesOfCrate;
        }
        crates.back().modules.push_back(moduleLayout(address));
    }
    PlantLayout plant;
    plant.controllers = {controller};
    return plant;
}

OrbItemId itemId(OrbItemId::Type level, int channel, const QString &item)
{
    const int module = channel / ChannelsOfModule;
    OrbItemId id(level);
    id.connectionName = QStringLiteral("local");
    id.line = static_cast<quint32>(module / ModulesOfLine);
    id.address = static_cast<quint32>(module % ModulesOfLine);
    if (level == OrbItemId::Crate)
        id.address = 1000 + id.address / ModulesOfCrate;
    id.channel = level == OrbItemId::Channel ? channel % ChannelsOfModule : -1;
    id.itemName = item;
    return id;
}

/// A plant in a time that only passes when it is told to.
struct Plant
{
    explicit Plant(int modules) : channels(modules * ChannelsOfModule), service(clock, plantLayout(modules))
    { }

    /// All channels on, and the ramps done.
    void switchOn()
    {
        for (int channel = 0; channel < channels; ++channel) {
            service.writeItem(itemId(OrbItemId::Channel, channel, QStringLiteral("Control.voltageSet")),
                              QStringLiteral("1000"));
            service.writeItem(itemId(OrbItemId::Channel, channel, QStringLiteral("Control.on")),
                              QStringLiteral("1"));
        }
        clock->advance(std::chrono::seconds(60));
        service.nextJournalNumber();
    }

    const int channels;
    const std::shared_ptr<SteppedClock> clock = std::make_shared<SteppedClock>();
    SimulatedService service;
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double allocatedBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

void ready(benchmark::State &state)
{
    const PlantLayout layout = plantLayout(Large);
    std::vector<double> times;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        SimulatedService service(std::make_shared<SteppedClock>(), layout);
        times.push_back(double(timer.nsecsElapsed()) * 1e-9);
    }
    hold(state, "seconds", median(times), ReadySeconds);
}
BENCHMARK(ready)->Iterations(5)->Unit(benchmark::kMillisecond);

void memory(benchmark::State &state)
{
    const PlantLayout layout = plantLayout(Large);
    for (auto _ : state) {
        const double before = allocatedBytes();
        const SimulatedService service(std::make_shared<SteppedClock>(), layout);
        hold(state, "bytes_per_channel", (allocatedBytes() - before) / (Large * ChannelsOfModule),
             BytesOfChannel);
    }
}
BENCHMARK(memory)->Iterations(1)->Unit(benchmark::kMillisecond);

// With everything in motion. The journal is not counted: it has a most number of entries, however large the plant is.
void memoryInMotion(benchmark::State &state)
{
    const ControllerLayout layout = plantLayout(Large).controllers.front();
    const ItemDefinition &voltageSet = *channelItems().find(QStringLiteral("Control.voltageSet"));
    const ItemDefinition &on = *channelItems().find(QStringLiteral("Control.on"));
    for (auto _ : state) {
        const double before = allocatedBytes();
        PlantRun run;
        Controller controller(layout, run);
        for (int channel = 0; channel < Large * ChannelsOfModule; ++channel) {
            const OrbItemId id = itemId(OrbItemId::Channel, channel, QString());
            const ObjectAddress object{id.type, id.line, id.address, id.channel};
            controller.write(object, voltageSet, ItemValue::of(1000.0), 1);
            controller.write(object, on, ItemValue::of(true), 1);
        }
        if (run.queue.size() != std::size_t(Large * ChannelsOfModule))
            state.SkipWithError("not everything is in motion");
        run.journal = PlantJournal();
        hold(state, "bytes_per_channel", (allocatedBytes() - before) / (Large * ChannelsOfModule),
             BytesOfChannel);
    }
}
BENCHMARK(memoryInMotion)->Iterations(1)->Unit(benchmark::kMillisecond);

struct Access
{
    const char *name;
    OrbItemId::Type level;
    const char *item;
    const char *value; // null for a read
};

constexpr Access Accesses[] = {
    {"read/voltage", OrbItemId::Channel, "Status.voltageMeasure", nullptr},
    {"read/channel_state", OrbItemId::Channel, "Status.runningState", nullptr},
    {"read/module_state", OrbItemId::Module, "Status.runningState", nullptr},
    {"read/module_temperature", OrbItemId::Module, "Status.temperature", nullptr},
    {"read/crate_events", OrbItemId::Crate, "Status.eventCounter", nullptr},
    {"read/system_state", OrbItemId::System, "Status.runningStateOrb", nullptr},
    {"write/setting", OrbItemId::Channel, "Setup.delayedTripTime", "200"},
    {"write/voltage_and_ramp", OrbItemId::Channel, "Control.voltageSet", "1500"},
    {"write/module_mask", OrbItemId::Module, "Control.moduleEventMask", "255"},
};

constexpr int AccessesOfBatch = 2000;
constexpr int Batches = 60;

double nanosecondsOfAccess(Plant &plant, const Access &access, bool everywhere)
{
    const QString name = QString::fromLatin1(access.item);
    std::vector<OrbItemId> ids;
    for (int i = 0; i < AccessesOfBatch; ++i)
        ids.push_back(itemId(access.level, everywhere ? int((qint64(i) * 7919) % plant.channels) : 3, name));
    const QString value = QString::fromLatin1(access.value == nullptr ? "" : access.value);
    OrbItemReading reading;
    bool fits = true;
    QElapsedTimer timer;
    timer.start();
    for (const OrbItemId &id : ids) {
        const TarnResult result = access.value == nullptr ? plant.service.readItem(id, reading)
                                                          : plant.service.writeItem(id, value);
        fits = fits && result == TarnResult::Success;
    }
    return fits ? double(timer.nsecsElapsed()) / AccessesOfBatch : -1;
}

// The two plants take turns, batch by batch, so that they share whatever else the machine does.
void accessItem(benchmark::State &state, const Access &access, bool everywhere, Plant &small, Plant &large)
{
    std::vector<double> smallTimes;
    std::vector<double> largeTimes;
    for (auto _ : state) {
        for (int i = 0; i < Batches; ++i) {
            smallTimes.push_back(nanosecondsOfAccess(small, access, everywhere));
            largeTimes.push_back(nanosecondsOfAccess(large, access, everywhere));
        }
    }
    if (smallTimes.back() < 0 || largeTimes.back() < 0) {
        ++missedLimits;
        state.SkipWithError("an access did not succeed");
        return;
    }
    state.counters["small_ns"] = median(smallTimes);
    state.counters["large_ns"] = median(largeTimes);
    hold(state, "ratio", median(largeTimes) / median(smallTimes),
         everywhere ? AnyObjectRatio : SameObjectRatio);
}

// An hour passes in a plant whose channels are all on and at rest.
void hourAtRest(benchmark::State &state, Plant &large)
{
    Plant small(1);
    small.switchOn();
    const auto nanoseconds = [](Plant &plant) {
        plant.clock->advance(std::chrono::hours(1));
        QElapsedTimer timer;
        timer.start();
        plant.service.nextJournalNumber();
        return double(timer.nsecsElapsed());
    };
    std::vector<double> smallTimes;
    std::vector<double> largeTimes;
    for (auto _ : state) {
        for (int i = 0; i < Batches; ++i) {
            smallTimes.push_back(nanoseconds(small));
            largeTimes.push_back(nanoseconds(large));
        }
    }
    state.counters["small_ns"] = median(smallTimes);
    state.counters["large_ns"] = median(largeTimes);
    hold(state, "ratio", median(largeTimes) / median(smallTimes), AnyObjectRatio);
}

// In real time, with nobody looking.
void idle(benchmark::State &state)
{
    SimulatedService service(std::make_shared<RealClock>(), plantLayout(Large));
    QSemaphore nobody;
    for (auto _ : state) {
        const double before = processorSeconds();
        nobody.tryAcquire(1, 1000);
        hold(state, "processor_seconds", processorSeconds() - before, IdleSeconds);
    }
}
BENCHMARK(idle)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    Plant small(1);
    Plant large(Large);
    small.switchOn();
    large.switchOn();
    for (const Access &access : Accesses) {
        for (const bool everywhere : {false, true}) {
            const std::string name = std::string(access.name) + (everywhere ? "/any" : "/same");
            benchmark::RegisterBenchmark(name.c_str(),
                                         [&access, everywhere, &small, &large](benchmark::State &state) {
                                             accessItem(state, access, everywhere, small, large);
                                         })
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark("hour_at_rest",
                                 [&large](benchmark::State &state) { hourAtRest(state, large); })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return missedLimits == 0 ? 0 : 1;
}
