#pragma once

#include "workbench/simulator/fault.h"

#include <QString>

namespace workbench
{

/// The fault in an operator's words: "External inhibit".
QString faultText(simulator::FaultKind kind);

} // namespace workbench
