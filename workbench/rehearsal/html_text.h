#pragma once

#include <QString>

namespace rehearsal
{

/// A text of somebody else's, fit to stand in a page between tags and in a quoted attribute. What no page may hold is
/// replaced.
QString html(const QString &text);

} // namespace rehearsal
