#pragma once

#include <QString>

namespace simulator
{

/// The reference of plant files as a Markdown page, made of PlantSchema and the table of faults.
QString plantReference();

} // namespace simulator
