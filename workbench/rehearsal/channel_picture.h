#pragma once

#include "workbench/rehearsal/recording.h"

#include <QString>

namespace rehearsal
{

/// A channel's voltage and current over the time of the whole rehearsal, with set value, limits, commands, events,
/// faults and trips marked: a figure for the report's page. Lines are drawn, texts are the page's own, so that they
/// keep their size at any width.
QString channelPicture(const Recording &recording, std::size_t channel);

/// The key to the pictures' lines and marks.
QString pictureKey();

} // namespace rehearsal
