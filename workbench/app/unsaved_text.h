#pragma once

class QWidget;

namespace workbench
{

/// Whether a tool's editor holds text that the operator typed and has not saved. Goes by the controls that a tool with
/// an editor has; a tool without them has nothing to lose.
bool hasUnsavedText(const QWidget &tool);

} // namespace workbench
