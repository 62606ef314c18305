#pragma once

#include "workbench/rehearsal/recording.h"

#include <QByteArray>

namespace rehearsal
{

/// The recording as JSON, in the form that docs/rehearsing.md describes.
QByteArray reportJson(const Recording &recording);

/// What was found, as the line of JSON that is printed when it happens; without a line feed.
QByteArray findingLine(const Finding &finding);

} // namespace rehearsal
