#pragma once

#include <QString>

namespace rehearsal
{

/// The style sheet of the report's page: light or dark as the reader's system is, and for paper.
QString reportStyle();

} // namespace rehearsal
