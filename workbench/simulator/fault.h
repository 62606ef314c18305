#pragma once

#include "workbench/simulator/object_address.h"

#include <QString>

namespace simulator
{

/// What can go wrong with the plant, be it by schedule or by an operator's hand.
enum class FaultKind : quint8
{
    // of a channel
    Spark, ///< the load breaks down for a moment; `amount` sparks, 10 ms apart (1 when it is 0)
    Short, ///< the output is shorted
    OpenLoad, ///< the load comes off
    Leak, ///< an additional leakage of `amount` A
    ExternalInhibit, ///< the inhibit input of the channel is active
    // of a module
    SafetyLoopOpen,
    SupplyFailure,
    Overheating, ///< the board is `amount` degrees warmer than it would be (40 when it is 0)
    NeedService,
    // of a crate
    MainsFailure,
    CrateSupplyFailure,
    BatteryFailure,
    CrateOverheating,
    // of a controller
    Disconnect, ///< the controller is away
    SlowAnswers, ///< every answer takes `amount` s longer
    DropAnswers, ///< the next answers get lost, `amount` of them (1 when it is 0)
    DuplicateAnswers, ///< the next answers come twice, as many
    ReorderAnswers, ///< the next two answers come in the other order
};

/// A fault at a place. Plain data.
struct Fault
{
    FaultKind kind = FaultKind::Spark;
    QString controller; ///< connection name or display text
    ObjectAddress object; ///< of the level that the kind is for; ignored for a controller's
    /// s until it is over by itself; 0: until it is mended. A spark and what counts answers is over by itself anyway.
    double duration = 0;
    double amount = 0; ///< what the kind says
};

/// A fault that comes by itself.
struct ScheduledFault
{
    double at = 0; ///< s on the plant's clock, 0 or more
    Fault fault;
};

/// The name of a kind as plant files and journals spell it: "spark", "externalInhibit".
QString faultName(FaultKind kind);
/// False when no kind has that name.
bool faultOfName(const QString &name, FaultKind &kind);
/// The level of object that the kind is for; System for a controller's.
OrbItemId::Type faultLevel(FaultKind kind);

} // namespace simulator
