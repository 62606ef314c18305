#pragma once

class QWidget;

namespace workbench
{

/// Whether a tool's editor, the child of that name, holds text that was typed and not saved; its document's modified
/// flag tells. A tool without an editor has nothing to lose.
bool hasUnsavedText(const QWidget &tool);

} // namespace workbench
