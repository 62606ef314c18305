#pragma once

#include <QtGlobal>

namespace simulator
{

/// A channel at one moment, as it really is: without the noise and the steps of its measurement.
struct ChannelSnapshot
{
    double time = 0; ///< s on the plant's clock
    double voltage = 0; ///< V at the output
    double current = 0; ///< A
    double voltageSet = 0; ///< V
    double currentSet = 0; ///< A
    double voltageLimit = 0; ///< V
    double currentLimit = 0; ///< A
    double voltageNominal = 0; ///< V
    double currentNominal = 0; ///< A
    quint32 status = 0; ///< what is the case: bits of ChannelCondition
    quint32 events = 0; ///< what was, since somebody cleared it
    quint32 errors = 0;
};

} // namespace simulator
