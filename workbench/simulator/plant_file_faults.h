#pragma once

#include "workbench/simulator/plant_layout.h"

namespace simulator
{

class PlantFileObject;

/// Reads the "faults" of a plant file's outermost object and adds them to the layout, which is otherwise complete.
/// What is wrong goes to the object's errors.
void readPlantFaults(const PlantFileObject &plant, PlantLayout &layout);

/// The unit of a fault's amount: "A", "K", "s", or empty for a count.
QString faultAmountUnit(FaultKind kind);
/// Whether an amount says anything for that kind.
bool faultHasAmount(FaultKind kind);

} // namespace simulator
