#pragma once

#include "workbench/simulator/item_table.h"

namespace simulator
{

/// What can be the case with a channel. Each is a bit of its status, events and errors.
enum class ChannelCondition : quint8
{
    VoltageLimitExceeded,
    CurrentLimitExceeded,
    CurrentTrip,
    ExternalInhibit,
    VoltageBoundExceeded,
    CurrentBoundExceeded,
    ConstantVoltage,
    ConstantCurrent,
    Emergency,
    EndOfRamp,
    Arc,
    VoltageBottom,
    MaxPower,
    ConstantPower,
    VoltageBoundLower,
    VoltageBoundUpper,
    VoltageRampDown,
    VoltageRampUp,
    CurrentRampDown,
    CurrentRampUp,
    EndOfCurrentRamp,
    InputError,
    ArcError,
    On,
    VoltageRamping,
    CurrentRamping,
    LowCurrentRange,
};

enum class ChannelSetting : quint8
{
    DelayedTripAction,
    DelayedTripTime,
    ExternalInhibitAction,
    ChannelEventMask,
    VctCoefficient,
    VoltageBounds,
    CurrentBounds,
    ResistanceExternal,
    VoltageRampPriority,
    VoltageBottom,
    OutputPolarity,
    OutputMode,
    // Settings whose defaults follow from the module and its nominal values.
    VoltageRampspeedUp,
    VoltageRampspeedDown,
    VoltageRampspeedMin,
    VoltageRampspeedMax,
    CurrentRampspeedUp,
    CurrentRampspeedDown,
    CurrentRampspeedMin,
    CurrentRampspeedMax,
};

enum class ChannelQuantity : quint8
{
    ClearAll,
    ClearEvents,
    ClearErrors,
    EventCounter,
    ErrorCounter,
    RunningState,
    VoltageSet,
    VoltageMeasure,
    VoltageLimit,
    VoltageNominal,
    CurrentSet,
    CurrentMeasure,
    CurrentLimit,
    CurrentNominal,
    Emergency,
    On,
    VoltageModeList,
    CurrentModeList,
    VoltageRampspeedUp,
    VoltageRampspeedDown,
    VoltageRampspeedMin,
    VoltageRampspeedMax,
    CurrentRampspeedUp,
    CurrentRampspeedDown,
    CurrentRampspeedMin,
    CurrentRampspeedMax,
};

const ItemTable &channelItems();

} // namespace simulator
