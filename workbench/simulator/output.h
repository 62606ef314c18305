#pragma once

#include "workbench/simulator/output_course.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/voltage_ramp.h"

#include <QtGlobal>

namespace simulator
{

/// What the outputs of a module are made for.
struct OutputRating
{
    double voltage = 0; ///< V
    double current = 0; ///< A
};

/// The electric side of a channel: a source that gives between 0 and a set current, and what hangs on it. Times are in s
/// on the plant's clock and never before that of an earlier call.
///
/// The node at the output has a voltage V and a capacitance C; the load takes V / R and a leakage, which flows while
/// there is any voltage. While the source is on, a reference goes to what is asked for in a straight line, and V follows
/// it. Where that would take more than the set current, the source gives the set current and V takes the time that it
/// takes: C dV/dt = I - V / R - leakage; without a capacitance it is at once where the load draws the set current. The
/// source cannot take current: where C would have to be emptied faster than the load does it, V stays above the reference
/// until the load has done it. Switched off, the source gives nothing and C is discharged by the load.
///
/// Chosen for the simulation:
/// - An output without a load has a bleeder of ten times nominal voltage by nominal current, behind the measurement of
///   the current, which matters only while the source gives nothing.
/// - A discharge is over at a millionth of the nominal voltage.
/// - A short, or an arc, takes the voltage to 0 at once and draws the set current. A load that came off takes its
///   leakage with it and leaves the capacitance.
///
/// The course is exact between two turns. The owner asks for the next turn, and takes it at its time.
class Output
{
public:
    enum class Regulation : quint8
    {
        Off, ///< the source gives nothing
        Voltage, ///< the voltage is what the reference says
        Current, ///< the source gives all that it may
        Draining, ///< the source is on and gives nothing, since the voltage is above the reference
    };

    enum class Turn : quint8
    {
        None,
        ReferenceArrives,
        VoltageArrives,
        CurrentLimited,
        SourceBlocked,
        Emptied,
    };

    struct NextTurn
    {
        double time;
        Turn turn;
    };

    /// `outputRating` is not owned and outlives the output. `currentLimit` in A.
    Output(const LoadLayout &loadLayout, const OutputRating &outputRating, double currentLimit);

    double voltage(double now) const { return course.voltageAt(now); }
    double current(double now) const { return course.currentAt(now); }
    const OutputCourse &presentCourse() const { return course; }
    Regulation regulation() const { return mode; }
    /// Another one whenever the output took another course.
    quint8 courseNumber() const { return courses; }

    /// On the way to what was asked for, as far as that is the source's doing or it waits for the load.
    bool isRamping() const { return moving || mode == Regulation::Draining; }
    bool isRampingUp() const { return moving && reference.slope() > 0; }
    bool isReferenceMoving() const { return moving; }
    /// What was asked for, in V.
    double target() const { return reference.target(); }
    double currentSet() const { return limit; }
    /// s on average; 0 for a load that does not spark.
    double sparkInterval() const { return loadOff ? 0 : load.sparkInterval; }

    /// Switches the source on, if it is not, and takes the reference from the voltage that is there to `target`.
    /// `speed` in V/s, above 0.
    void rampTo(double target, double speed, double now);
    void cutOff(double now);
    void setCurrentSet(double amperes, double now);
    void setShorted(bool isShorted, double now);
    void setBrokenDown(bool isBrokenDown, double now);
    void setLoadOff(bool isOff, double now);
    /// Besides the load's own, in A.
    void setLeak(double amperes, double now);

    NextTurn nextTurn(double now) const;
    void take(Turn turn, double now);

private:
    double resistance() const { return loadOff ? NoLoad : load.resistance; }
    double discharge() const; // Ohm
    double leakage(double now) const;
    double leakageDrift() const { return loadOff ? 0 : load.leakageDrift; }
    double referenceSlope() const { return moving ? reference.slope() : 0; }
    bool isPinned() const { return shorted || brokenDown; }
    double voltageTolerance() const;
    double currentTolerance() const;
    double residue() const;

    void select(double voltage, double now);
    void selectWithoutCapacitance(double now);
    void followReference(double now);
    void giveCurrent(double voltage, double now);
    void drain(double voltage, Regulation regulation, double now);
    OutputCourse chargingCourse(double voltage, double amperes, double ohm, double now) const;
    void stay(double voltage, double current, Regulation regulation, double now);
    void begin(const OutputCourse &next, Regulation regulation);
    void consider(NextTurn &best, double time, Turn turn) const;
    void considerRegulatedTurns(NextTurn &best, double now) const;
    double drawnAtReference(double now) const; // A
    double timeOfBlocking(double now) const;

    LoadLayout load;
    const OutputRating *rating;
    VoltageRamp reference;
    OutputCourse course;
    double limit; // A
    double leak = 0; // A
    Regulation mode = Regulation::Off;
    quint8 courses = 0;
    bool sourceOn : 1;
    bool moving : 1;
    bool shorted : 1;
    bool brokenDown : 1;
    bool loadOff : 1;
};

} // namespace simulator
