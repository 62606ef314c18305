#pragma once

#include "workbench/rehearsal/recording.h"

#include <QString>

namespace rehearsal
{

/// The recording as a page of HTML that needs nothing but itself: no script, no other file, no network.
QString reportPage(const Recording &recording);

} // namespace rehearsal
