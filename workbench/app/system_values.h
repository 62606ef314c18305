#pragma once

#include "workbench/app/system_state.h"

#include <QString>

class OrbClient;
class OrbItemId;

namespace workbench
{

/// What the System view shows of one object, as texts ready to show.
struct SystemValues
{
    QString voltageSet; ///< set voltage with its unit; empty for anything but a channel
    QString voltageMeasure;
    QString currentMeasure;
    SystemState state = SystemState::Unknown;
};

inline bool operator==(const SystemValues &a, const SystemValues &b)
{
    return a.voltageSet == b.voltageSet && a.voltageMeasure == b.voltageMeasure
        && a.currentMeasure == b.currentMeasure && a.state == b.state;
}

inline bool operator!=(const SystemValues &a, const SystemValues &b)
{
    return !(a == b);
}

/// Reads the values of one object now. What cannot be read stays empty.
SystemValues readSystemValues(OrbClient &client, const OrbItemId &id);

/// Reads no more than the state. Unknown for an object that has none.
SystemState readSystemState(OrbClient &client, const OrbItemId &id);

/// A voltage (V) with two decimals, such as "1,250.00 V" in the operator's own notation.
QString voltageText(double volts);

/// A current (A) in the unit that leaves one to three digits before the point: "2.500 µA".
QString currentText(double amperes);

} // namespace workbench
