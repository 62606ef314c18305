#pragma once

#include "workbench/simulator/object_address.h"
#include "workbench/simulator/plant_layout.h"

#include <QString>

namespace rehearsal
{

enum class Quantity : quint8
{
    Voltage,
    Current,
};

QString quantityName(Quantity quantity);

/// What a channel's voltage or current may come to. A text of this form:
///
///     [CONTROLLER/]PLACE.QUANTITY<=VALUE UNIT
///
/// PLACE is "line.module.channel", each a number or "*", or a single "*" for every channel. QUANTITY is "voltage" or
/// "current". CONTROLLER is a connection name or a display text, in which "*" stands for any characters; without one
/// the limit holds on every controller. VALUE is a number above 0, or 0; UNIT is V, kV or mV, or A, mA, uA (µA) or nA.
/// Blanks around "<=" and before the unit may be left out or added. What counts is the magnitude, so that a limit holds
/// for negative outputs as well.
struct Limit
{
    QString text; ///< as it was given, without the blanks around it
    QString controller; ///< empty for every one
    int line = Any;
    int module = Any;
    int channel = Any;
    Quantity quantity = Quantity::Voltage;
    double value = 0; ///< V or A

    static constexpr int Any = -1;

    /// Whether the limit holds for a channel; the controller by connection name and display text.
    bool holdsFor(const QString &connectionName, const QString &displayText,
                  const simulator::ObjectAddress &address) const;
    /// Whether it holds for any channel of the plant.
    bool holdsIn(const simulator::PlantLayout &plant) const;
    /// Whether a voltage in V or a current in A is beyond it, by more than the inexactness of a floating-point number.
    bool isCrossedBy(double measured) const;
};

/// Reads a limit; or false, with a text that says what is wrong with it and what is allowed.
bool parseLimit(const QString &text, Limit &limit, QString &error);

} // namespace rehearsal
