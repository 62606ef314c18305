#pragma once

#include "workbench/app/channel_record.h"

#include <QPolygonF>

namespace workbench
{

/// One quantity of a record between two times (s) as a line of no more points than `columns` pixels can show: of each
/// column the first, the lowest, the highest and the last, so that no peak gets lost. The line begins before and ends
/// after the times where there is something.
QPolygonF stripChartLine(const ChannelRecord &record, double ChannelSample::*quantity, double from, double to,
                         int columns);

} // namespace workbench
