#pragma once

#include "workbench/simulator/event_queue.h"
#include "workbench/simulator/plant_journal.h"

#include <QtGlobal>

namespace simulator
{

/// What all objects of a plant share while time passes: what is going to happen, what has happened, and chance. Not
/// locked; the service does that. It outlives the objects.
struct PlantRun
{
    explicit PlantRun(quint32 plantSeed = 1) : seed(plantSeed) { }

    EventQueue queue;
    PlantJournal journal;
    const quint32 seed;
};

} // namespace simulator
