#pragma once

#include "workbench/simulator/item_definition.h"
#include "workbench/simulator/item_value.h"

#include <QString>

namespace simulator
{

/// "bool", "int", "float" or "string".
QString kindName(ItemKind kind);

/// What is behind the group, in words: "safety loop was opened" for "Error.safetyLoopWasOpened".
QString itemWords(const QString &itemName);

/// "true", "false", a decimal number of up to nine significant digits, or the text itself.
QString formatValue(const ItemDefinition &item, const ItemValue &value);

/// Reads a value as it is written to an item; false when it does not make sense for the item's kind and range.
/// A bool is "true", "false", "1" or "0" (any case), an int a decimal number without a fraction, a float a finite
/// decimal number. `unit` is empty or the item's own; for a float it may carry one of the prefixes n, u, m, k, M,
/// and the value is scaled accordingly ("1.5" with "kV" is 1500 V). Any other unit is refused rather than ignored.
bool parseValue(const ItemDefinition &item, const QString &text, const QString &unit, ItemValue &value);

} // namespace simulator
