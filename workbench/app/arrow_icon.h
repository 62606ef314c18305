#pragma once

#include <QIcon>

namespace workbench
{

/// A mark for what only went that way, left or right. Its shape is none of those that stand for a state.
/// GUI thread only.
QIcon arrowIcon(Qt::ArrowType direction);

} // namespace workbench
