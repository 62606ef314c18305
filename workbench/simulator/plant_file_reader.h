#pragma once

#include "workbench/simulator/plant_layout.h"

#include <QSet>

namespace simulator
{

class PlantFileObject;

/// Makes a layout of a plant file's outermost object, all but its faults. Numbers those that the file leaves unnumbered,
/// repeats those that have a count, and refuses an address that is taken. What is wrong goes to the object's errors; the
/// layout is then of no use.
class PlantFileReader
{
public:
    /// The layout is empty, and outlives this object.
    explicit PlantFileReader(PlantLayout &result) : plant(result) { }

    void read(const PlantFileObject &source);

private:
    /// The numbers that are taken somewhere, and the next one.
    struct Numbers
    {
        QSet<quint32> taken;
        quint32 next = 0;
    };

    /// What is known of the line that is being read.
    struct LineState
    {
        quint32 line = 0;
        Numbers crates;
        Numbers modules;
    };

    void readController(const PlantFileObject &source);
    void checkController(const PlantFileObject &source, const ControllerLayout &controller) const;
    void readLines(const PlantFileObject &source, std::vector<LineLayout> &lines);
    void readCrates(const PlantFileObject &source, LineState &line, std::vector<CrateLayout> &crates);
    void readModules(const PlantFileObject &source, LineState &line, std::vector<ModuleLayout> &modules);
    ModuleLayout module(const PlantFileObject &source) const;
    /// False, with the error added, when the number is taken or beyond the highest.
    static bool number(const PlantFileObject &source, const char *name, const QString &place,
                       quint32 repetition, quint32 highest, Numbers &numbers, quint32 &result);
    bool takeChannels(const PlantFileObject &source, std::size_t count);

    PlantLayout &plant;
    std::size_t channels = 0;
    std::size_t crateCount = 0;
    quint32 moduleCount = 0;
};

} // namespace simulator
