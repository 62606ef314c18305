#pragma once

#include "workbench/simulator/plant_layout.h"

namespace simulator
{

class PlantFileObject;

/// Reads the "faults" of a plant file's outermost object and adds them to the layout, which is otherwise complete.
/// What is wrong goes to the object's errors.
void readPlantFaults(const PlantFileObject &plant, PlantLayout &layout);

/// The same for its "messages".
void readPlantMessages(const PlantFileObject &plant, PlantLayout &layout);

/// What a fault's amount may be. Plain data.
struct FaultAmount
{
    const char *unit = ""; ///< "A", "K", "s", or empty for a count
    double most = 0; ///< 0 for a fault that has no amount
    bool isNeeded = false; ///< has to be there, and above 0

    bool isCount() const { return unit[0] == '\0'; }
};

FaultAmount faultAmount(FaultKind kind);
/// From where to where: "above 0 to 1000 A"; empty for a fault that has no amount.
QString faultAmountText(FaultKind kind);

} // namespace simulator
