#pragma once

#include "workbench/rehearsal/recording.h"

#include <QString>

namespace rehearsal
{

// The report's tables, each as a piece of the page; empty when there is nothing to be listed. A cell that holds a number
// has it as its attribute "data-value", as it stands in the JSON report.

/// Of all channels together.
constexpr int MostListedRamps = 10000;

QString fileTable(const Recording &recording);
QString findingList(const Recording &recording, const std::vector<Finding> &findings, int leftOut);
QString peakTable(const Recording &recording);
QString crossingTable(const Recording &recording);
QString rampTable(const Recording &recording); // of at most MostListedRamps
QString requestTable(const Recording &recording);
QString eventTable(const Recording &recording);
QString transcriptText(const Recording &recording);

/// "2 × limit crossed, 1 × channel tripped".
QString findingCounts(const std::vector<Finding> &findings);

} // namespace rehearsal
