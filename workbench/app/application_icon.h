#pragma once

#include <QIcon>

namespace workbench
{

/// The program's own icon, for its windows: drawn for each size from 16 to 256 pixels, so that none is scaled down.
/// Needs a QGuiApplication.
QIcon applicationIcon();

} // namespace workbench
