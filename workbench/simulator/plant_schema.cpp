#include "workbench/simulator/plant_schema.h"

#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace simulator
{

namespace
{

using Kind = PlantFieldKind;
using Owner = PlantObjectKind;

// In characters.
constexpr int LongestText = 200;
constexpr int LongestName = 100;
constexpr int LongestPayload = 10000;

constexpr double NoFallback = PlantField::NoFallback;

struct Range
{
    double least;
    bool isLeastAllowed;
    double most;
};

constexpr Range from(double least, double most)
{
    return {least, true, most};
}

constexpr Range above(double least, double most)
{
    return {least, false, most};
}

constexpr Range Anything{0, true, 0}; // of a field that is no number

constexpr PlantField number(Owner owner, const char *name, const char *unit, Range range, double fallback,
                            const char *description)
{
    return {owner,      name,     Kind::Number, false, unit,         range.least, range.isLeastAllowed,
            range.most, fallback, "",           "",    Owner::Plant, description};
}

// A number of which `text` says what holds when it is left out.
constexpr PlantField numberOr(Owner owner, const char *name, const char *unit, Range range, double fallback,
                              const char *text, const char *description)
{
    return {owner,      name,     Kind::Number, false, unit,         range.least, range.isLeastAllowed,
            range.most, fallback, text,         "",    Owner::Plant, description};
}

constexpr PlantField neededNumber(Owner owner, const char *name, const char *unit, Range range,
                                  const char *description)
{
    return {owner,      name,       Kind::Number, true, unit,         range.least, range.isLeastAllowed,
            range.most, NoFallback, "",           "",   Owner::Plant, description};
}

constexpr PlantField integer(Owner owner, const char *name, Range range, double fallback, const char *text,
                             const char *description)
{
    return {owner,      name,     Kind::Integer, false, "",           range.least, range.isLeastAllowed,
            range.most, fallback, text,          "",    Owner::Plant, description};
}

constexpr PlantField neededInteger(Owner owner, const char *name, Range range, const char *description)
{
    return {
        owner, name, Kind::Integer, true,       "", range.least, range.isLeastAllowed, range.most, NoFallback,
        "",    "",   Owner::Plant,  description};
}

constexpr PlantField plain(Owner owner, const char *name, Kind kind, bool isRequired,
                           const char *fallbackText, const char *choices, Owner element,
                           const char *description)
{
    return {owner, name,       kind,         isRequired, "",      Anything.least, Anything.isLeastAllowed,
            0,     NoFallback, fallbackText, choices,    element, description};
}

constexpr PlantField neededText(Owner owner, const char *name, const char *description)
{
    return plain(owner, name, Kind::Text, true, "", "", Owner::Plant, description);
}

constexpr PlantField text(Owner owner, const char *name, const char *fallbackText, const char *description)
{
    return plain(owner, name, Kind::Text, false, fallbackText, "", Owner::Plant, description);
}

constexpr PlantField yesOrNo(Owner owner, const char *name, const char *fallbackText, const char *description)
{
    return plain(owner, name, Kind::Bool, false, fallbackText, "", Owner::Plant, description);
}

constexpr PlantField choice(Owner owner, const char *name, const char *choices, const char *description)
{
    return plain(owner, name, Kind::Choice, false, "", choices, Owner::Plant, description);
}

constexpr PlantField objects(Owner owner, const char *name, Kind kind, Owner element, const char *description)
{
    return plain(owner, name, kind, false, "none", "", element, description);
}

constexpr Range Addresses = from(0, 999);
constexpr Range Counts = from(1, 1000);
constexpr Range Percent = above(0, 100);
constexpr Range Speeds = from(0.001, 100);
constexpr Range Errors = from(0, 1000);

// clang-format off
constexpr PlantField Fields[] = {
    integer(Owner::Plant, "seed", from(0, 4294967295.0), 1, "",
            "Noise, sparks and jitter are drawn from it: a plant with the same seed and the same commands behaves the same"),
    plain(Owner::Plant, "controllers", Kind::Objects, true, "", "", Owner::Controller,
          "At least one. The first answers for addresses that no controller has"),
    objects(Owner::Plant, "faults", Kind::Objects, Owner::Fault, "What goes wrong by itself, and when"),
    objects(Owner::Plant, "messages", Kind::Objects, Owner::Message, "What is handed to scripts that have activated the pass-through, and when"),

    plain(Owner::Controller, "name", Kind::Name, true, "", "", Owner::Plant,
          "The name of its connection, unlike name and text of any other controller"),
    plain(Owner::Controller, "text", Kind::Name, false, "the name", "", Owner::Plant,
          "How the controller is shown, unlike name and text of any other"),
    text(Owner::Controller, "address", "127.0.0.1 with a port of its own, from 8080 on",
         "`host:port` under which a script connects to it, unlike that of any other controller"),
    yesOrNo(Owner::Controller, "local", "no controller of the file says so: the first is",
            "Whether it is the service on this machine, which at most one is"),
    numberOr(Owner::Controller, "latency", "s", from(0, 3600), -1, "what `--latency` says, or 5 ms",
             "Between a raw request and its answer"),
    number(Owner::Controller, "jitter", "s", from(0, 3600), 0, "By which an answer may take longer, evenly spread"),
    plain(Owner::Controller, "lines", Kind::Objects, false, "none", "", Owner::Line, "The lines of the controller"),

    integer(Owner::Line, "line", Addresses, NoFallback, "one more than the line before it, 0 for the first",
            "The number of the line, unlike that of any other"),
    integer(Owner::Line, "count", Counts, 1, "", "So many lines like this one, with consecutive numbers"),
    objects(Owner::Line, "crates", Kind::Objects, Owner::Crate, "The crates on the line"),
    objects(Owner::Line, "modules", Kind::Objects, Owner::Module, "Modules with a supply of their own, in no crate"),

    integer(Owner::Crate, "address", from(1000, 9999), NoFallback,
            "one more than the crate before it on the line, 1000 for the first",
            "The address of the crate, unlike that of any other on the line"),
    integer(Owner::Crate, "count", Counts, 1, "", "So many crates like this one, with consecutive addresses"),
    objects(Owner::Crate, "modules", Kind::Objects, Owner::Module, "The modules in the crate"),

    integer(Owner::Module, "address", Addresses, NoFallback,
            "one more than the module before it on the line, 0 for the first",
            "The address of the module, unlike that of any other on the line"),
    integer(Owner::Module, "count", Counts, 1, "", "So many modules like this one, with consecutive addresses and serial numbers"),
    neededInteger(Owner::Module, "channels", from(1, 1000), "How many channels it has"),
    neededNumber(Owner::Module, "voltage", "V", above(0, 1e6), "The nominal voltage of each channel"),
    neededNumber(Owner::Module, "current", "A", above(0, 1000), "The nominal current of each channel"),
    choice(Owner::Module, "polarity", "positive|negative", "The polarity of the outputs"),
    number(Owner::Module, "voltageLimit", "%", Percent, 100, "The limit of the voltage, in percent of the nominal voltage"),
    number(Owner::Module, "currentLimit", "%", Percent, 100, "The limit of the current, in percent of the nominal current"),
    number(Owner::Module, "voltageRamp", "%/s", Speeds, 10, "How fast voltages ramp until somebody sets another speed"),
    number(Owner::Module, "currentRamp", "%/s", Speeds, 50, "How fast currents ramp until somebody sets another speed"),
    plain(Owner::Module, "measurement", Kind::Object, false, "exact", "", Owner::Measurement, "What is wrong with what it measures"),
    plain(Owner::Module, "load", Kind::ObjectOrObjects, false, "no load on any channel", "", Owner::Load,
          "What hangs on its outputs: one load for all channels, or a list whose loads, each as often as its `count` says, make up the channels"),
    integer(Owner::Module, "serial", from(0, 4294967295.0), NoFallback, "480001 and on, in the order of the file", "The serial number"),
    text(Owner::Module, "firmware", "SIM-HV and the number of channels", "The name of the firmware"),
    text(Owner::Module, "release", "7.12.0", "The release of the firmware"),

    number(Owner::Measurement, "voltageNoise", "V", Errors, 0, "Standard deviation of a measured voltage"),
    number(Owner::Measurement, "currentNoise", "A", Errors, 0, "Standard deviation of a measured current"),
    number(Owner::Measurement, "voltageOffset", "V", from(-1000, 1000), 0, "By which every measured voltage is too high"),
    number(Owner::Measurement, "currentOffset", "A", from(-1000, 1000), 0, "By which every measured current is too high"),
    number(Owner::Measurement, "voltageStep", "V", Errors, 0, "Between two voltages that the converter can tell apart, 0 for no steps"),
    number(Owner::Measurement, "currentStep", "A", Errors, 0, "Between two currents that the converter can tell apart, 0 for no steps"),

    integer(Owner::Load, "count", Counts, 1, "", "In a list: on so many channels, one after the other"),
    numberOr(Owner::Load, "resistance", "Ohm", above(0, 1e18), NoFallback, "none: an open output",
             "Between output and ground; a short has next to nothing"),
    number(Owner::Load, "capacitance", "F", from(0, 1), 0, "Of output, cable and load together"),
    number(Owner::Load, "leakage", "A", from(0, 1000), 0, "A current besides that of the resistance, while there is any voltage"),
    number(Owner::Load, "leakageDrift", "A/s", from(0, 1000), 0, "By which the leakage grows from the start on"),
    number(Owner::Load, "sparkInterval", "s", from(0, 1e9), 0,
           "Between two sparks on average, above half of the voltage limit; 0 for no sparks"),

    neededNumber(Owner::Fault, "at", "s", from(0, 1e9), "When, counted from the start of the plant"),
    neededText(Owner::Fault, "fault", "What goes wrong: one of the names below"),
    text(Owner::Fault, "controller", "the first", "Name or text of the controller on which it does"),
    text(Owner::Fault, "crate", "", "`line.address` of the crate, for the fault of one"),
    text(Owner::Fault, "module", "", "`line.address` of the module, for the fault of one"),
    text(Owner::Fault, "channel", "", "`line.address.channel`, for the fault of a channel"),
    numberOr(Owner::Fault, "duration", "s", from(0, 1e9), 0, "until somebody mends it", "After which it is over by itself"),
    numberOr(Owner::Fault, "amount", "", from(0, 1e6), 0, "as the fault says", "How much of it: as the fault says"),

    neededNumber(Owner::Message, "at", "s", from(0, 1e9), "When, counted from the start of the plant"),
    numberOr(Owner::Message, "every", "s", from(0.001, 1e9), 0, "once", "After which it comes again, and again"),
    text(Owner::Message, "controller", "the first", "Name or text of the controller that hands it over"),
    choice(Owner::Message, "command", "getItem|setItem", "What the script is asked to do"),
    neededText(Owner::Message, "object", "`line.address` of a crate or module, or `line.address.channel`, which need not exist"),
    neededText(Owner::Message, "item", "The name of the item, which may be one of the script's own"),
    plain(Owner::Message, "value", Kind::Payload, false, "", "", Owner::Plant, "The value to set"),
    text(Owner::Message, "unit", "", "The unit of the value"),

    plain(Owner::FaultFile, "faults", Kind::Objects, true, "", "", Owner::Fault, "As in a plant"),
};
// clang-format on

constexpr bool isSame(const char *one, const char *other)
{
    for (; *one != '\0' && *one == *other; ++one, ++other) { }
    return *one == *other;
}

constexpr bool namesAreUnique()
{
    for (std::size_t i = 0; i < std::size(Fields); ++i) {
        for (std::size_t j = i + 1; j < std::size(Fields); ++j) {
            if (Fields[i].owner == Fields[j].owner && isSame(Fields[i].name, Fields[j].name))
                return false;
        }
    }
    return true;
}

static_assert(namesAreUnique(), "a field is listed twice");

struct KindWords
{
    PlantObjectKind kind;
    const char *name;
    const char *description;
};

constexpr KindWords Kinds[] = {
    {Owner::Plant, "plant", "The file is one object, the plant."},
    {Owner::Controller, "controller", "A controller and what hangs on it."},
    {Owner::Line, "line", "A line of a controller, or several that are alike."},
    {Owner::Crate, "crate", "A powered crate with its modules, or several that are alike."},
    {Owner::Module, "module", "A module with its channels, or several that are alike."},
    {Owner::Measurement, "measurement",
     "How far a module's measurements are from what is there. They are exact unless this says otherwise."},
    {Owner::Load, "load", "What hangs on an output. `{}` is an open output."},
    {Owner::Fault, "fault",
     "Something that goes wrong by itself. It is said to be of a crate, a module or a channel by the field "
     "of that "
     "name; a fault of a controller needs none of them."},
    {Owner::Message, "message",
     "A request that the controller hands to the scripts that have activated its pass-through; nobody gets "
     "it later."},
    {Owner::FaultFile, "fault file", "A file of faults alone, for a plant that has none, or others."},
};

const KindWords &wordsOf(PlantObjectKind kind)
{
    return Kinds[static_cast<std::size_t>(kind)];
}

QString shortNumber(double value)
{
    constexpr int Digits = 10; // of the largest serial number
    return QString::number(value, 'g', Digits);
}

/// UTF-8 has no half characters: they would be others when they come back.
bool isWhole(const QString &text)
{
    return QString::fromUtf8(text.toUtf8()) == text;
}

} // namespace

const PlantField *PlantSchema::begin()
{
    return std::begin(Fields);
}

const PlantField *PlantSchema::end()
{
    return std::end(Fields);
}

const PlantField *PlantSchema::find(PlantObjectKind owner, const QString &name)
{
    for (const PlantField &field : Fields) {
        if (field.owner == owner && name == QLatin1String(field.name))
            return &field;
    }
    return nullptr;
}

QString PlantSchema::kindName(PlantObjectKind kind)
{
    return QString::fromLatin1(wordsOf(kind).name);
}

QString PlantSchema::kindDescription(PlantObjectKind kind)
{
    return QString::fromLatin1(wordsOf(kind).description);
}

QString PlantSchema::allowed(const PlantField &field)
{
    switch (field.kind) {
    case Kind::Number:
        return QString::fromLatin1(field.unit[0] == '\0' ? "a number from %1"
                                                         : "%1, as a number or as a text with its unit")
            .arg(range(field));
    case Kind::Integer:
        return QStringLiteral("a whole number from %1").arg(range(field));
    case Kind::Bool:
        return QStringLiteral("true or false");
    case Kind::Text:
        return QStringLiteral("a text of 1 to %1 characters that all can be seen, or are blanks, not all "
                              "of them blanks")
            .arg(LongestText);
    case Kind::Payload:
        return QStringLiteral("any text of up to %1 characters").arg(LongestPayload);
    case Kind::Name:
        return QStringLiteral("a name of 1 to %1 characters that all can be seen, or are blanks between "
                              "others, without \"/\", \"*\" and \"<\"")
            .arg(LongestName);
    case Kind::Choice: {
        QStringList choices = QString::fromLatin1(field.choices).split(QLatin1Char('|'));
        for (QString &choice : choices)
            choice = QStringLiteral("\"%1\"").arg(choice);
        return choices.join(QStringLiteral(" or "));
    }
    case Kind::Object:
        return QStringLiteral("an object: a %1").arg(kindName(field.element));
    case Kind::Objects:
        return QStringLiteral("a list of objects: %1s").arg(kindName(field.element));
    case Kind::ObjectOrObjects:
        return QStringLiteral("a %1, or a list of %1s").arg(kindName(field.element));
    }
    return {};
}

QString PlantSchema::range(const PlantField &field)
{
    return QStringLiteral("%1%2 to %3 %4")
        .arg(QString::fromLatin1(field.isLeastAllowed ? "" : "above "), shortNumber(field.least),
             shortNumber(field.most), QString::fromUtf8(field.unit))
        .trimmed();
}

bool PlantSchema::isPayload(const QString &text)
{
    return text.size() <= LongestPayload && isWhole(text);
}

bool PlantSchema::isText(const QString &text)
{
    if (text.size() > LongestText || text.trimmed().isEmpty() || !isWhole(text))
        return false;
    const QVector<uint> characters = text.toUcs4();
    return std::all_of(characters.begin(), characters.end(), [](uint character) {
        return character == ' ' || (QChar::isPrint(character) && !QChar::isSpace(character));
    });
}

bool PlantSchema::isName(const QString &text)
{
    const auto isMark = [](QChar character) {
        return character == QLatin1Char('/') || character == QLatin1Char('*')
            || character == QLatin1Char('<');
    };
    return isText(text) && text.size() <= LongestName && text.trimmed() == text
        && std::none_of(text.begin(), text.end(), isMark);
}

} // namespace simulator
