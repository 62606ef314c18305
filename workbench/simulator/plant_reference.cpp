#include "workbench/simulator/plant_reference.h"

#include "workbench/simulator/fault.h"
#include "workbench/simulator/plant_file_faults.h"
#include "workbench/simulator/plant_schema.h"

#include <QStringList>

#include <cmath>

namespace simulator
{

namespace
{

constexpr char Introduction[] =
    R"(# Plant files

A plant file says what the workbench simulates: controllers, their lines, the crates and modules on them, the loads on
the channels, and what is going to go wrong.

```console
$ terminal-workbench --plant examples/plants/full_crate.json
```

It is JSON. The shortest module there is, on a bench, with a load of 500 kOhm on each of its channels:

```json
{
    "controllers": [
        {
            "name": "bench",
            "lines": [
                {
                    "modules": [
                        { "channels": 4, "voltage": "1 kV", "current": "5 mA", "load": { "resistance": "500 kOhm" } }
                    ]
                }
            ]
        }
    ]
}
```

- **Numbers** are in the unit that the table says, or texts with that unit: `1500`, `"1500 V"` and `"1.5 kV"` are the
  same voltage. The prefixes are `p`, `n`, `u` or `µ`, `m`, `k`, `M` and `G`; percents have none. `Ω` is `Ohm`.
- **What is not said** has the value under "left out". Numbers and addresses that are left out go on from the one
  before.
- **What is alike** is written once, with a `count`: so many lines, crates, modules or loads, one after the other. An
  address that is given is that of the first. In crates that are repeated, leave the addresses of the modules out.
- A field that is not in these tables is refused, and so is one that stands twice, a value that is not allowed, and an
  address that is taken. The error names the file, the line and the column: `plant.json:12:15: "voltage" of a module is
  -5; allowed is above 0 to 1000000 V, as a number or as a text with its unit`.
- **Texts** have 1 to 200 characters that all can be seen, or are blanks, not all of them blanks. A **name** has at most
  100, no blank at its ends, and no `/`, `*` or `<`, which mean something where a channel is named:
  `local/*.voltage<=1 kV`.
- A file has at most 16 MB, a plant at most 100 controllers, 10000 crates, 200000 channels, 10000 faults and 10000
  messages.

Examples are in [`examples/plants/`](../examples/plants/).
)";

constexpr char FaultIntroduction[] =
    R"(
### What goes wrong

| fault | of a | amount | |
|---|---|---|---|
)";

QString plain(QString text)
{
    return text.replace(QLatin1Char('|'), QLatin1String("\\|"));
}

QString row(const QStringList &cells)
{
    QString result = QStringLiteral("|");
    for (const QString &cell : cells)
        result += cell.isEmpty() ? QStringLiteral(" |") : QStringLiteral(" %1 |").arg(plain(cell));
    return result + QLatin1Char('\n');
}

QString allowedText(const PlantField &field)
{
    if (field.kind == PlantFieldKind::Number)
        return PlantSchema::range(field);
    if (field.kind == PlantFieldKind::Text)
        return QStringLiteral("a text");
    if (field.kind == PlantFieldKind::Name)
        return QStringLiteral("a name");
    if (field.kind == PlantFieldKind::Object || field.kind == PlantFieldKind::Objects
        || field.kind == PlantFieldKind::ObjectOrObjects) {
        const QString name = PlantSchema::kindName(field.element);
        const QString link = QStringLiteral("[%1](#%1)").arg(name);
        if (field.kind == PlantFieldKind::Object)
            return QStringLiteral("a %1").arg(link);
        return QString::fromLatin1(field.kind == PlantFieldKind::Objects ? "a list: %1" : "a %1, or a list")
            .arg(link);
    }
    QString text = PlantSchema::allowed(field);
    return text.replace(QLatin1Char('"'), QLatin1Char('`'));
}

QString leftOutText(const PlantField &field)
{
    if (field.isRequired)
        return QStringLiteral("**needed**");
    if (field.fallbackText[0] != '\0')
        return QString::fromUtf8(field.fallbackText);
    if (field.kind == PlantFieldKind::Choice)
        return QStringLiteral("`%1`").arg(QString::fromLatin1(field.choices).section(QLatin1Char('|'), 0, 0));
    if (std::isnan(field.fallback))
        return {};
    const QString unit = QString::fromUtf8(field.unit);
    return QStringLiteral("%1 %2").arg(field.fallback).arg(unit).trimmed();
}

QString section(PlantObjectKind kind)
{
    const QString name = PlantSchema::kindName(kind);
    QString text = QStringLiteral("\n## %1\n\n%2\n\n| field | allowed | left out | |\n|---|---|---|---|\n")
                       .arg(name, PlantSchema::kindDescription(kind));
    for (const PlantField *field = PlantSchema::begin(); field != PlantSchema::end(); ++field) {
        if (field->owner == kind)
            text += row({QStringLiteral("`%1`").arg(QLatin1String(field->name)), allowedText(*field),
                         leftOutText(*field), QString::fromUtf8(field->description)});
    }
    return text;
}

QString levelText(FaultKind kind)
{
    switch (faultLevel(kind)) {
    case OrbItemId::Channel:
        return QStringLiteral("channel");
    case OrbItemId::Module:
        return QStringLiteral("module");
    case OrbItemId::Crate:
        return QStringLiteral("crate");
    default:
        return QStringLiteral("controller");
    }
}

QString amountText(FaultKind kind)
{
    const QString text = faultAmountText(kind);
    return faultAmount(kind).isNeeded ? text + QStringLiteral(", **needed**") : text;
}

QString faultText(FaultKind kind)
{
    switch (kind) {
    case FaultKind::Spark:
        return QStringLiteral(
            "the load breaks down for a moment, so many times, 10 ms apart; once when left out");
    case FaultKind::Short:
        return QStringLiteral("the output is shorted");
    case FaultKind::OpenLoad:
        return QStringLiteral("the load comes off");
    case FaultKind::Leak:
        return QStringLiteral("an additional leakage");
    case FaultKind::ExternalInhibit:
        return QStringLiteral("the inhibit input of the channel is active");
    case FaultKind::SafetyLoopOpen:
        return QStringLiteral("the safety loop is open");
    case FaultKind::SupplyFailure:
        return QStringLiteral("a supply of the module fails");
    case FaultKind::Overheating:
        return QStringLiteral("the board is so much warmer than it would be, 40 K when left out");
    case FaultKind::NeedService:
        return QStringLiteral("the module asks for service");
    case FaultKind::MainsFailure:
        return QStringLiteral("the crate has no mains");
    case FaultKind::CrateSupplyFailure:
        return QStringLiteral("a supply of the crate fails");
    case FaultKind::BatteryFailure:
        return QStringLiteral("the crate's battery fails");
    case FaultKind::CrateOverheating:
        return QStringLiteral("the crate is so much warmer than it would be, 40 K when left out");
    case FaultKind::Disconnect:
        return QStringLiteral("the controller is away; what it was asked before is lost");
    case FaultKind::SlowAnswers:
        return QStringLiteral("every answer takes so much longer");
    case FaultKind::DropAnswers:
        return QStringLiteral(
            "so many of the next answers get lost, one when left out; the requests are carried out");
    case FaultKind::DuplicateAnswers:
        return QStringLiteral("so many of the next answers come twice, one when left out");
    case FaultKind::ReorderAnswers:
        return QStringLiteral("the next two answers come in the other order");
    }
    return {};
}

QString faultTable()
{
    QString text = QString::fromUtf8(FaultIntroduction);
    for (int i = 0; i <= static_cast<int>(FaultKind::ReorderAnswers); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        text += row({QStringLiteral("`%1`").arg(faultName(kind)), levelText(kind), amountText(kind),
                     faultText(kind)});
    }
    return text;
}

} // namespace

QString plantReference()
{
    QString text = QString::fromUtf8(Introduction);
    for (const PlantObjectKind kind :
         {PlantObjectKind::Plant, PlantObjectKind::Controller, PlantObjectKind::Line, PlantObjectKind::Crate,
          PlantObjectKind::Module, PlantObjectKind::Measurement, PlantObjectKind::Load,
          PlantObjectKind::Fault})
        text += section(kind);
    text += faultTable();
    text += section(PlantObjectKind::Message);
    text += section(PlantObjectKind::FaultFile);
    return text;
}

} // namespace simulator
