#include "workbench/simulator/plant_file_faults.h"

#include "workbench/simulator/plant_file_object.h"
#include "workbench/simulator/refusal_text.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace simulator
{

namespace
{

struct LevelField
{
    OrbItemId::Type level;
    const char *name; ///< of the field that says of which object a fault is
    int numbers; ///< in the text of its address
};

constexpr LevelField LevelFields[] = {
    {OrbItemId::Crate, "crate", 2}, {OrbItemId::Module, "module", 2}, {OrbItemId::Channel, "channel", 3}};

QString allFaultNames()
{
    QStringList names;
    for (int kind = 0; kind <= static_cast<int>(FaultKind::ReorderAnswers); ++kind)
        names << faultName(static_cast<FaultKind>(kind));
    return names.join(QStringLiteral(", "));
}

QString levelName(OrbItemId::Type level)
{
    for (const LevelField &field : LevelFields) {
        if (field.level == level)
            return QString::fromLatin1(field.name);
    }
    return QStringLiteral("controller");
}

bool parseAddress(const QString &text, const LevelField &field, ObjectAddress &object)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != field.numbers)
        return false;
    constexpr uint HighestNumber = 9999;
    QVector<uint> numbers;
    for (const QString &part : parts) {
        bool isNumber = false;
        numbers << part.toUInt(&isNumber);
        if (!isNumber || numbers.constLast() > HighestNumber)
            return false;
    }
    object.level = field.level;
    object.line = numbers.at(0);
    object.address = numbers.at(1);
    if (field.level == OrbItemId::Channel)
        object.channel = static_cast<qint32>(numbers.at(2));
    return true;
}

template <class Layouts>
auto findAddress(const Layouts &layouts, quint32 address)
{
    return std::find_if(layouts.begin(), layouts.end(),
                        [address](const auto &layout) { return layout.address == address; });
}

const ModuleLayout *findModule(const LineLayout &line, quint32 address)
{
    const auto own = findAddress(line.modules, address);
    if (own != line.modules.end())
        return &*own;
    for (const CrateLayout &crate : line.crates) {
        const auto module = findAddress(crate.modules, address);
        if (module != crate.modules.end())
            return &*module;
    }
    return nullptr;
}

bool hasObject(const ControllerLayout &controller, const ObjectAddress &object)
{
    const auto line =
        std::find_if(controller.lines.begin(), controller.lines.end(),
                     [&object](const LineLayout &layout) { return layout.line == object.line; });
    if (line == controller.lines.end())
        return false;
    if (object.level == OrbItemId::Crate)
        return findAddress(line->crates, object.address) != line->crates.end();
    const ModuleLayout *const module = findModule(*line, object.address);
    return module != nullptr
        && (object.level == OrbItemId::Module
            || static_cast<std::size_t>(object.channel) < module->loads.size());
}

const ControllerLayout *findController(const PlantLayout &layout, const QString &name)
{
    if (name.isEmpty())
        return layout.controllers.empty() ? nullptr : &layout.controllers.front();
    for (const ControllerLayout &controller : layout.controllers) {
        if (controller.connectionName == name)
            return &controller;
    }
    for (const ControllerLayout &controller : layout.controllers) {
        if (controller.displayText == name)
            return &controller;
    }
    return nullptr;
}

void readObject(const PlantFileObject &source, const ControllerLayout &controller, Fault &fault)
{
    const OrbItemId::Type level = faultLevel(fault.kind);
    const QString kind = quoted(faultName(fault.kind));
    for (const LevelField &field : LevelFields) {
        if (field.level != level) {
            if (source.has(field.name))
                source.refuse(field.name,
                              QStringLiteral("%1 is the fault of a %2, and takes no \"%3\"")
                                  .arg(kind, levelName(level), QLatin1String(field.name)));
            continue;
        }
        const QString text = source.text(field.name);
        const QString form =
            QString::fromLatin1(level == OrbItemId::Channel ? "line.address.channel" : "line.address");
        if (!source.has(field.name))
            source.refuse(field.name,
                          QStringLiteral("%1 is the fault of a %2, and needs \"%2\": %3")
                              .arg(kind, QLatin1String(field.name), form));
        else if (!parseAddress(text, field, fault.object))
            source.refuse(field.name,
                          QStringLiteral("\"%1\" of a fault is %2; allowed is %3, such as \"%4\"")
                              .arg(QLatin1String(field.name), quoted(text), form,
                                   QLatin1String(level == OrbItemId::Channel     ? "0.3.7"
                                                     : level == OrbItemId::Crate ? "0.1000"
                                                                                 : "0.3")));
        else if (!hasObject(controller, fault.object))
            source.refuse(field.name,
                          QStringLiteral("there is no %1 %2 on the controller %3")
                              .arg(QLatin1String(field.name), text, quoted(controller.connectionName)));
    }
}

void readAmount(const PlantFileObject &source, Fault &fault)
{
    fault.amount = source.number("amount");
    const FaultAmount allowed = faultAmount(fault.kind);
    const QString kind = quoted(faultName(fault.kind));
    if (!source.has("amount")) {
        if (allowed.isNeeded)
            source.refuse("amount",
                          QStringLiteral("%1 needs an \"amount\" above 0, in %2")
                              .arg(kind, QLatin1String(allowed.unit)));
        return;
    }
    if (allowed.most == 0) {
        source.refuse("amount", QStringLiteral("%1 takes no \"amount\"").arg(kind));
        return;
    }
    const bool isWhole = !allowed.isCount() || std::floor(fault.amount) == fault.amount;
    if (!isWhole || fault.amount > allowed.most || (allowed.isNeeded && fault.amount <= 0))
        source.refuse("amount",
                      QStringLiteral("\"amount\" of %1 is %2; allowed is %3")
                          .arg(kind, QString::number(fault.amount, 'g', 9), faultAmountText(fault.kind)));
}

// Refuses it and gives null when there is none of that name.
const ControllerLayout *controllerOf(const PlantFileObject &source, const PlantLayout &layout)
{
    const ControllerLayout *const controller = findController(layout, source.text("controller"));
    if (controller == nullptr)
        source.refuse("controller",
                      QStringLiteral("there is no controller %1").arg(quoted(source.text("controller"))));
    return controller;
}

} // namespace

void readPlantFaults(const PlantFileObject &plant, PlantLayout &layout)
{
    if (!plant.allowAtMost(MostPlantFaults, "faults"))
        return;
    const std::vector<PlantFileObject> sources = plant.objects("faults");
    for (const PlantFileObject &source : sources) {
        if (!plant.errors().isEmpty())
            return;
        ScheduledFault scheduled;
        scheduled.at = source.number("at");
        Fault &fault = scheduled.fault;
        fault.duration = source.number("duration");
        if (!faultOfName(source.text("fault"), fault.kind)) {
            source.refuse("fault",
                          QStringLiteral("there is no fault %1; there are: %2")
                              .arg(quoted(source.text("fault")), allFaultNames()));
            return;
        }
        const ControllerLayout *const controller = controllerOf(source, layout);
        if (controller == nullptr)
            return;
        fault.controller = controller->connectionName;
        readObject(source, *controller, fault);
        readAmount(source, fault);
        layout.faults.push_back(scheduled);
    }
}

void readPlantMessages(const PlantFileObject &plant, PlantLayout &layout)
{
    if (!plant.allowAtMost(MostPlantMessages, "messages"))
        return;
    const std::vector<PlantFileObject> sources = plant.objects("messages");
    for (const PlantFileObject &source : sources) {
        const ControllerLayout *const controller = controllerOf(source, layout);
        if (controller == nullptr)
            return;
        ScheduledMessage message;
        message.at = source.number("at");
        message.every = source.number("every");
        message.controller = controller->connectionName;
        OrbRequestItem &request = message.request;
        request.commandType = source.text("command") == QLatin1String("setItem") ? OrbRequestItem::SetItem
                                                                                 : OrbRequestItem::GetItem;
        ObjectAddress object;
        const QString place = source.text("object");
        if (!parseAddress(place, {OrbItemId::Channel, "object", 3}, object)
            && !parseAddress(place, {OrbItemId::Module, "object", 2}, object))
            source.refuse("object",
                          QStringLiteral("\"object\" of a message is %1; allowed is line.address or "
                                         "line.address.channel, such as \"0.3.7\"")
                              .arg(quoted(place)));
        request.line = object.line;
        request.address = object.address;
        request.channel = object.channel;
        request.itemName = source.text("item");
        request.value = source.text("value");
        request.unit = source.text("unit");
        layout.messages.push_back(message);
    }
}

FaultAmount faultAmount(FaultKind kind)
{
    constexpr double MostSparks = 10000;
    constexpr double MostAnswers = 1000000;
    switch (kind) {
    case FaultKind::Leak:
        return {"A", 1000, true};
    case FaultKind::Overheating:
    case FaultKind::CrateOverheating:
        return {"K", 1000, false};
    case FaultKind::SlowAnswers:
        return {"s", 3600, true};
    case FaultKind::Spark:
        return {"", MostSparks, false};
    case FaultKind::DropAnswers:
    case FaultKind::DuplicateAnswers:
        return {"", MostAnswers, false};
    default:
        return {};
    }
}

QString faultAmountText(FaultKind kind)
{
    const FaultAmount amount = faultAmount(kind);
    if (amount.most == 0)
        return {};
    const QString most = QString::number(amount.most, 'f', 0);
    if (amount.isCount())
        return QStringLiteral("a whole number from 0 to %1").arg(most);
    return QStringLiteral("%1 to %2 %3")
        .arg(QString::fromLatin1(amount.isNeeded ? "above 0" : "0"), most, QLatin1String(amount.unit));
}

} // namespace simulator
