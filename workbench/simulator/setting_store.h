#pragma once

#include <QtGlobal>

#include <memory>
#include <vector>

namespace simulator
{

/// The settings of one object that are not at their defaults. Most objects have none or a few, so that an object
/// costs next to nothing until somebody changes it.
class SettingStore
{
public:
    /// Null when the setting was never written. Valid until the next set().
    const double *find(quint8 key) const
    {
        if (entries == nullptr)
            return nullptr;
        for (const Entry &entry : *entries) {
            if (entry.key == key)
                return &entry.value;
        }
        return nullptr;
    }

    double value(quint8 key, double fallback) const
    {
        const double *found = find(key);
        return found != nullptr ? *found : fallback;
    }

    void set(quint8 key, double value)
    {
        if (entries == nullptr)
            entries = std::make_unique<std::vector<Entry>>();
        for (Entry &entry : *entries) {
            if (entry.key == key) {
                entry.value = value;
                return;
            }
        }
        entries->push_back({value, key});
    }

    void remove(quint8 key)
    {
        if (entries == nullptr)
            return;
        for (auto entry = entries->begin(); entry != entries->end(); ++entry) {
            if (entry->key == key) {
                entries->erase(entry);
                return;
            }
        }
    }

private:
    struct Entry
    {
        double value;
        quint8 key;
    };

    std::unique_ptr<std::vector<Entry>> entries; // null for none, which is the rule
};

} // namespace simulator
