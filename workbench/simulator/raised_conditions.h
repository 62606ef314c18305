#pragma once

#include "workbench/simulator/item_table.h"
#include "workbench/simulator/plant_journal.h"

namespace simulator
{

/// Enters events and errors that occurred, pending already or not, by the names of the items that tell of them; a
/// condition without such an item goes without saying. `place` says where and when.
void enterRaised(PlantJournal &journal, const JournalEntry &place, const ItemTable &items, quint32 events,
                 quint32 errors);

} // namespace simulator
