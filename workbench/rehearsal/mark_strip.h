#pragma once

#include "workbench/rehearsal/recording.h"

#include <QString>

namespace rehearsal
{

/// The style that a kind of mark has in the page.
QString markClass(Mark::Kind kind);
/// The sign of a kind, so that it is not told by its colour alone.
QString markSign(Mark::Kind kind);

/// Two rows of badges under a picture: commands by their numbers in the table of requests, and what happened by signs.
/// What is close together shares a badge. Twice: for wide pages and for narrow ones, of which the style shows one.
QString markStrip(const Recording &recording, const ChannelRecord &channel);

/// What happened to the channel, in words: the gravest of it when it is much.
QString markList(const ChannelRecord &channel);

} // namespace rehearsal
