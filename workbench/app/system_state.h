#pragma once

#include <QIcon>
#include <QString>

namespace workbench
{

/// What an object of the system is doing, in the words an operator uses.
enum class SystemState
{
    Unknown, ///< not read yet, or the object does not say
    Unavailable, ///< the object does not answer
    Off, ///< no high voltage
    On, ///< high voltage is on, or the object is in service
    Ramping, ///< something below is ramping
    RampingUp,
    RampingDown,
    Emergency, ///< switched off without a ramp
    Tripped, ///< the current trip switched it off
    Error, ///< any other fault
};

/// The state as a word; empty for Unknown.
QString stateText(SystemState state);

/// A mark whose shape alone tells the states apart, so that colour is only a help. Null for Unknown.
QIcon stateIcon(SystemState state);

} // namespace workbench
