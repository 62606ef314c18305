#pragma once

class QTextStream;

namespace workbench
{

class ChannelRecorder;

/// Writes every record as comma-separated values, in SI units and with a decimal point whatever the operator's own
/// notation, one line a sample or mark and the channels one after the other:
///
///     time / s,channel,voltage / V,voltage set / V,voltage limit / V,current / A,current set / A,current limit / A,event
///     12.500,local 0.0.1,499.8,500,6000,3.3e-05,0.001,0.001,
///     12.750,local 0.0.1,,,,,,,end of ramp
void writeChannelCsv(const ChannelRecorder &recorder, QTextStream &out);

} // namespace workbench
