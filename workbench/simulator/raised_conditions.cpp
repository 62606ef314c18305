#include "workbench/simulator/raised_conditions.h"

namespace simulator
{

namespace
{

void enter(PlantJournal &journal, JournalEntry entry, const ItemTable &items, quint32 conditions,
           ItemSource source)
{
    for (quint8 condition = 0; conditions != 0; ++condition, conditions >>= 1) {
        if ((conditions & 1) == 0)
            continue;
        entry.item = items.nameOf(source, condition);
        if (!entry.item.isEmpty())
            journal.add(entry);
    }
}

} // namespace

void enterRaised(PlantJournal &journal, const JournalEntry &place, const ItemTable &items, quint32 events,
                 quint32 errors)
{
    if ((events | errors) == 0)
        return;
    JournalEntry entry = place;
    entry.kind = JournalEntry::Event;
    enter(journal, entry, items, events, ItemSource::Event);
    entry.kind = JournalEntry::Error;
    enter(journal, entry, items, errors, ItemSource::Error);
}

} // namespace simulator
