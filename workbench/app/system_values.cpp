#include "workbench/app/system_values.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_item_value.h"

#include <QLocale>

#include <cmath>
#include <iterator>

namespace workbench
{

namespace
{

/// Reads items of one object.
class Reader
{
public:
    Reader(OrbClient &client_, const OrbItemId &id_) : client(client_), id(id_) { }

    OrbItemValue read(QLatin1String item)
    {
        id.itemName = item;
        OrbItemValue value(id);
        if (!client.readItemValue(value))
            value.setValue({});
        return value;
    }

    QString text(QLatin1String item) { return read(item).value().toString(); }
    bool flag(QLatin1String item) { return text(item) == QLatin1String("true"); }

    /// The item as a quantity; a text that is not a number is shown as it is.
    QString quantity(QLatin1String item, QString (*format)(double))
    {
        const OrbItemValue value = read(item);
        bool isNumber = false;
        const double number = value.value().toDouble(&isNumber);
        if (!isNumber)
            return value.value().toString();
        const bool isBaseUnit = value.unit() == QLatin1String("V") || value.unit() == QLatin1String("A");
        return isBaseUnit ? format(number) : QLocale().toString(number) + QLatin1Char(' ') + value.unit();
    }

private:
    OrbClient &client;
    OrbItemId id;
};

SystemState channelFault(Reader &reader)
{
    if (reader.flag(QLatin1String("Status.emergency")))
        return SystemState::Emergency;
    // The excess itself is over once the output is off; the error stays. With an output that is on, the trip is an
    // error that nothing came of. No item tells an output that its trip switched off from one that somebody switched
    // off before the trip was cleared.
    if (!reader.flag(QLatin1String("Status.on"))
        && (reader.flag(QLatin1String("Status.currentTrip"))
            || reader.flag(QLatin1String("Error.currentTrip"))))
        return SystemState::Tripped;
    return SystemState::Error;
}

SystemState channelRamp(Reader &reader)
{
    if (reader.flag(QLatin1String("Status.voltageRampUp")))
        return SystemState::RampingUp;
    if (reader.flag(QLatin1String("Status.voltageRampDown")))
        return SystemState::RampingDown;
    return SystemState::Ramping;
}

SystemState deviceState(Reader &reader, bool isChannel)
{
    const QString text = reader.text(QLatin1String("Status.runningState"));
    if (text == QLatin1String("off"))
        return SystemState::Off;
    if (text == QLatin1String("ok"))
        return SystemState::On;
    if (text == QLatin1String("info"))
        return isChannel ? channelRamp(reader) : SystemState::Ramping;
    if (text == QLatin1String("error"))
        return isChannel ? channelFault(reader) : SystemState::Error;
    return SystemState::Unavailable;
}

} // namespace

SystemValues readSystemValues(OrbClient &client, const OrbItemId &id)
{
    SystemValues values;
    if (id.type == OrbItemId::Channel) {
        Reader reader(client, id);
        values.voltageSet = reader.quantity(QLatin1String("Control.voltageSet"), voltageText);
        values.voltageMeasure = reader.quantity(QLatin1String("Status.voltageMeasure"), voltageText);
        values.currentMeasure = reader.quantity(QLatin1String("Status.currentMeasure"), currentText);
    }
    values.state = readSystemState(client, id);
    return values;
}

SystemState readSystemState(OrbClient &client, const OrbItemId &id)
{
    Reader reader(client, id);
    switch (id.type) {
    case OrbItemId::System: {
        const QString text = reader.text(QLatin1String("Status.runningStateOrb"));
        if (text.isEmpty())
            return SystemState::Unavailable;
        return text == QLatin1String("error") ? SystemState::Error : SystemState::On;
    }
    case OrbItemId::Crate:
    case OrbItemId::Module:
        return deviceState(reader, false);
    case OrbItemId::Channel:
        return deviceState(reader, true);
    default: // a line has no items of its own
        return SystemState::Unknown;
    }
}

QString voltageText(double volts)
{
    constexpr double Half = 0.005; // of the last digit; what is below is 0, which has no sign
    return QLocale().toString(std::fabs(volts) < Half ? 0 : volts, 'f', 2) + QStringLiteral(" V");
}

QString currentText(double amperes)
{
    struct Step
    {
        double factor;
        const char *unit;
    };
    static constexpr Step steps[] = {{1, " A"}, {1e3, " mA"}, {1e6, " \u00b5A"}, {1e9, " nA"}};
    const double size = std::fabs(amperes);
    // Below a picoampere is the noise of the measurement.
    const Step *step = size < 1e-12 ? std::end(steps) - 1 : std::begin(steps);
    while (step + 1 != std::end(steps) && size * step->factor < 0.9995)
        ++step;
    const double shown = size < 1e-12 ? 0 : amperes * step->factor;
    return QLocale().toString(shown, 'f', 3) + QString::fromUtf8(step->unit);
}

} // namespace workbench
