#pragma once

#include <QtGlobal>

#include <cstddef>

namespace simulator
{

enum class ItemKind : quint8
{
    Bool,
    Int,
    Float,
    String
};

enum class ItemAccess : quint8
{
    Read = 1,
    Write = 2,
    ReadWrite = 3
};

/// Where an item's value comes from.
enum class ItemSource : quint8
{
    Constant, ///< the row's default, always
    Setting, ///< what was written last, the row's default before; `argument` is the level's setting
    Status, ///< whether a condition holds now; `argument` is the level's condition
    StatusNot, ///< whether a condition does not hold now
    Event, ///< whether a condition held at any time since the events were cleared
    Error, ///< the same for the errors
    Quantity, ///< the object itself knows; `argument` is the level's quantity
};

/// Values that a write must not leave, both ends included.
struct ItemRange
{
    double minimum = -1e15;
    double maximum = 1e15;
};

/// One item of a level: a row of a table. Plain data.
struct ItemDefinition
{
    const char *name = "";
    ItemKind kind = ItemKind::Bool;
    ItemAccess access = ItemAccess::Read;
    const char *unit = ""; ///< UTF-8, "" for none
    ItemSource source = ItemSource::Constant;
    quint8 argument = 0;
    double number = 0; ///< default of a bool, int or float
    const char *text = ""; ///< default of a string
    ItemRange range = {};
};

constexpr bool isReadable(const ItemDefinition &item)
{
    return (static_cast<unsigned>(item.access) & static_cast<unsigned>(ItemAccess::Read)) != 0;
}

constexpr bool isWritable(const ItemDefinition &item)
{
    return (static_cast<unsigned>(item.access) & static_cast<unsigned>(ItemAccess::Write)) != 0;
}

// How the tables spell their rows. `Argument` is the level's own enumeration.

/// The words that the tables share; for their sources alone.
namespace item_words
{

inline constexpr auto Bool = ItemKind::Bool;
inline constexpr auto Int = ItemKind::Int;
inline constexpr auto Float = ItemKind::Float;
inline constexpr auto String = ItemKind::String;
inline constexpr auto Read = ItemAccess::Read;
inline constexpr auto ReadWrite = ItemAccess::ReadWrite;

inline constexpr ItemRange AnyMask{0, 4294967295.0};

} // namespace item_words

constexpr ItemDefinition constant(const char *name, ItemKind kind, const char *unit, double number)
{
    return {name, kind, ItemAccess::Read, unit, ItemSource::Constant, 0, number, "", {}};
}

constexpr ItemDefinition constantText(const char *name, const char *text)
{
    return {name, ItemKind::String, ItemAccess::Read, "", ItemSource::Constant, 0, 0, text, {}};
}

template <class Argument>
constexpr ItemDefinition setting(const char *name, ItemKind kind, const char *unit, Argument which,
                                 double number, ItemRange range)
{
    return {name, kind, ItemAccess::ReadWrite, unit, ItemSource::Setting, static_cast<quint8>(which), number,
            "",   range};
}

template <class Argument>
constexpr ItemDefinition conditionItem(const char *name, ItemSource source, Argument which)
{
    return {name, ItemKind::Bool, ItemAccess::Read, "", source, static_cast<quint8>(which), 0, "", {}};
}

template <class Argument>
constexpr ItemDefinition status(const char *name, Argument which)
{
    return conditionItem(name, ItemSource::Status, which);
}

template <class Argument>
constexpr ItemDefinition statusNot(const char *name, Argument which)
{
    return conditionItem(name, ItemSource::StatusNot, which);
}

template <class Argument>
constexpr ItemDefinition event(const char *name, Argument which)
{
    return conditionItem(name, ItemSource::Event, which);
}

template <class Argument>
constexpr ItemDefinition error(const char *name, Argument which)
{
    return conditionItem(name, ItemSource::Error, which);
}

template <class Argument>
constexpr ItemDefinition quantity(const char *name, ItemKind kind, ItemAccess access, const char *unit,
                                  Argument which, ItemRange range = {})
{
    return {name, kind, access, unit, ItemSource::Quantity, static_cast<quint8>(which), 0, "", range};
}

/// An item that can only be written: it makes something happen. A bool acts on true and ignores false.
template <class Argument>
constexpr ItemDefinition command(const char *name, Argument which, ItemKind kind = ItemKind::Bool)
{
    return {name, kind, ItemAccess::Write, "", ItemSource::Quantity, static_cast<quint8>(which), 0, "", {}};
}

constexpr quint64 itemNameHash(const char *name)
{
    quint64 hash = 14695981039346656037ULL;
    for (; *name != '\0'; ++name)
        hash = (hash ^ static_cast<quint64>(static_cast<unsigned char>(*name))) * 1099511628211ULL;
    return hash;
}

/// For a static_assert below each table.
template <std::size_t Size>
constexpr bool namesAreUnique(const ItemDefinition (&rows)[Size])
{
    quint64 hashes[Size] = {};
    for (std::size_t i = 0; i < Size; ++i) {
        hashes[i] = itemNameHash(rows[i].name);
        for (std::size_t j = 0; j < i; ++j) {
            if (hashes[i] == hashes[j])
                return false;
        }
    }
    return true;
}

} // namespace simulator
