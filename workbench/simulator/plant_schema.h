#pragma once

#include <QString>

#include <limits>

namespace simulator
{

/// The kinds of object that a plant file is made of.
enum class PlantObjectKind : quint8
{
    Plant,
    Controller,
    Line,
    Crate,
    Module,
    Measurement,
    Load,
    Fault,
    Message,
    FaultFile, ///< the outermost object of a file of faults alone
};

/// What the value of a field may be.
enum class PlantFieldKind : quint8
{
    Number, ///< a number in the field's unit, or a text of a number and that unit, which may have a prefix
    Integer,
    Bool,
    Text, ///< of characters that can be seen, and blanks
    Payload, ///< any text that is not too long
    Name, ///< a Text that stands in addresses and patterns: "name/0.1.2", "name/*.voltage<=1 kV"
    Choice, ///< one of the texts in PlantField::choices
    Object,
    Objects, ///< a list
    ObjectOrObjects, ///< one for all, or a list
};

/// One field of one kind of object: what the reader checks by, and what the reference says. Plain data.
struct PlantField
{
    /// Stands for a value that is made of other values, or for none.
    static constexpr double NoFallback = std::numeric_limits<double>::quiet_NaN();

    PlantObjectKind owner;
    const char *name;
    PlantFieldKind kind;
    bool isRequired;
    const char *unit; ///< of a Number, UTF-8; empty for a plain one
    double least; ///< of a Number or Integer
    bool isLeastAllowed; ///< whether `least` itself is allowed
    double most; ///< of a Number or Integer, itself allowed
    double fallback; ///< of a Number, Integer or Bool that is left out, or NoFallback
    const char *fallbackText; ///< says what holds when the field is left out; empty when `fallback` says it
    const char *choices; ///< of a Choice, with "|" between; the first holds when the field is left out
    PlantObjectKind element; ///< of an Object, Objects or ObjectOrObjects
    const char *description; ///< a sentence without its full stop
};

/// The fields of all kinds of object: by kind, and within a kind in the order of the reference.
class PlantSchema
{
public:
    static const PlantField *begin();
    static const PlantField *end();

    /// Null when objects of that kind have no such field.
    static const PlantField *find(PlantObjectKind owner, const QString &name);

    /// "module"
    static QString kindName(PlantObjectKind kind);
    /// What an object of that kind is, in a sentence or two.
    static QString kindDescription(PlantObjectKind kind);

    /// What a field takes, to go on from "allowed is": "above 0 to 100 V, as a number or as a text with its unit".
    static QString allowed(const PlantField &field);
    /// From where to where a Number or Integer goes: "above 0 to 100 V".
    static QString range(const PlantField &field);

    /// Whether it may be the value of a Text.
    static bool isText(const QString &text);
    /// Of a Payload.
    static bool isPayload(const QString &text);
    /// Of a Name.
    static bool isName(const QString &text);
};

// The most that a plant may have.
constexpr int MostPlantControllers = 100;
constexpr int MostPlantCrates = 10000;
constexpr int MostPlantChannels = 200000;
constexpr int MostPlantFaults = 10000;
constexpr int MostPlantMessages = 10000;

} // namespace simulator
