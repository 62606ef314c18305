#pragma once

#include <QString>

class OrbItemValue;
class OrbRequestItem;

namespace simulator
{

/// A message to a script as a journal shows it: "setItem 0.3.7 Control.voltageSet 100 V". One that carries no command is
/// shown as it was received.
QString passThroughText(const OrbRequestItem &request);
/// The same for a message from a script.
QString passThroughText(const OrbItemValue &value);

} // namespace simulator
