#include "workbench/simulator/output.h"

#include <cmath>
#include <limits>

namespace simulator
{

namespace
{

constexpr double BleederFactor = 10;
// In parts of the nominal values.
constexpr double Tolerance = 1e-9;
constexpr double Residue = 1e-6;

constexpr double Never = std::numeric_limits<double>::infinity();

} // namespace

Output::Output(const LoadLayout &loadLayout, const OutputRating &outputRating, double currentLimit)
    : load(loadLayout),
      rating(&outputRating),
      limit(currentLimit),
      sourceOn(false),
      moving(false),
      shorted(false),
      brokenDown(false),
      loadOff(false)
{ }

double Output::voltageTolerance() const
{
    return Tolerance * rating->voltage;
}

double Output::currentTolerance() const
{
    return Tolerance * rating->current;
}

double Output::residue() const
{
    return Residue * rating->voltage;
}

double Output::discharge() const
{
    const double ohm = resistance();
    return ohm == NoLoad ? BleederFactor * rating->voltage / rating->current : ohm;
}

double Output::leakage(double now) const
{
    return leak + (loadOff ? 0 : load.leakage + load.leakageDrift * now);
}

void Output::rampTo(double target, double speed, double now)
{
    const double from = voltage(now);
    moving = from != target;
    if (moving)
        reference.start(from, target, speed, now);
    else
        reference.jumpTo(target);
    sourceOn = true;
    select(from, now);
}

void Output::cutOff(double now)
{
    moving = false;
    reference.jumpTo(0);
    sourceOn = false;
    select(voltage(now), now);
}

void Output::setCurrentSet(double amperes, double now)
{
    limit = amperes;
    select(voltage(now), now);
}

void Output::setShorted(bool isShorted, double now)
{
    shorted = isShorted;
    select(voltage(now), now);
}

void Output::setBrokenDown(bool isBrokenDown, double now)
{
    brokenDown = isBrokenDown;
    select(voltage(now), now);
}

void Output::setLoadOff(bool isOff, double now)
{
    loadOff = isOff;
    select(voltage(now), now);
}

void Output::setLeak(double amperes, double now)
{
    leak = amperes;
    select(voltage(now), now);
}

Output::NextTurn Output::nextTurn(double now) const
{
    NextTurn best{Never, Turn::None};
    if (moving)
        consider(best, reference.endsAt(), Turn::ReferenceArrives);
    if (!isPinned())
        considerRegulatedTurns(best, now);
    best.time = qMax(best.time, now);
    return best;
}

void Output::consider(NextTurn &best, double time, Turn turn) const
{
    if (time < best.time)
        best = {time, turn};
}

void Output::considerRegulatedTurns(NextTurn &best, double now) const
{
    const double at = reference.valueAt(now);
    const double slope = referenceSlope();
    switch (mode) {
    case Regulation::Off:
        if (voltage(now) > 0)
            consider(best, course.timeOfFall(residue(), 0, now), Turn::Emptied);
        break;
    case Regulation::Voltage:
        consider(best, course.timeOfCurrentRise(limit + currentTolerance(), now), Turn::CurrentLimited);
        consider(best, timeOfBlocking(now), Turn::SourceBlocked);
        break;
    case Regulation::Current:
        consider(best, course.timeOfRise(at + voltageTolerance(), slope, now), Turn::VoltageArrives);
        if (voltage(now) > 0)
            consider(best, course.timeOfFall(0, 0, now), Turn::Emptied);
        break;
    case Regulation::Draining: {
        // A discharge never gets all the way down to a reference at rest.
        const double level = moving ? at - voltageTolerance() : at + residue();
        consider(best, course.timeOfFall(level, slope, now), Turn::VoltageArrives);
        break;
    }
    }
}

void Output::take(Turn turn, double now)
{
    switch (turn) {
    case Turn::None:
        break;
    case Turn::ReferenceArrives:
        moving = false;
        if (mode == Regulation::Voltage || isPinned())
            select(voltage(now), now);
        break;
    case Turn::VoltageArrives:
        select(reference.valueAt(now), now);
        break;
    case Turn::CurrentLimited:
        giveCurrent(voltage(now), now);
        break;
    case Turn::SourceBlocked:
        drain(voltage(now), Regulation::Draining, now);
        break;
    case Turn::Emptied:
        stay(0, mode == Regulation::Current ? limit : 0, mode, now);
        break;
    }
}

void Output::select(double voltage, double now)
{
    const double wanted = reference.valueAt(now);
    if (isPinned()) {
        const bool drives = sourceOn && (wanted > 0 || referenceSlope() > 0);
        const Regulation shortCircuit = sourceOn ? Regulation::Voltage : Regulation::Off;
        stay(0, drives ? limit : 0, drives ? Regulation::Current : shortCircuit, now);
        return;
    }
    if (load.capacitance <= 0) {
        selectWithoutCapacitance(now);
        return;
    }
    if (!sourceOn) {
        drain(voltage, Regulation::Off, now);
        return;
    }
    if (voltage < wanted - 2 * voltageTolerance()) {
        giveCurrent(voltage, now);
        return;
    }
    if (voltage > wanted + 2 * residue()) {
        drain(voltage, Regulation::Draining, now);
        return;
    }
    const double drawn = drawnAtReference(now);
    const double bled = resistance() == NoLoad ? wanted / discharge() : 0;
    const double draws = drawn + bled;
    if (drawn > limit + currentTolerance() || (drawn >= limit - currentTolerance() && referenceSlope() > 0))
        giveCurrent(wanted, now);
    else if (draws < -currentTolerance())
        drain(wanted, Regulation::Draining, now);
    else
        followReference(now);
}

void Output::selectWithoutCapacitance(double now)
{
    if (!sourceOn) {
        stay(0, 0, Regulation::Off, now);
        return;
    }
    const double wanted = reference.valueAt(now);
    const double drawn = drawnAtReference(now);
    const bool isFull = drawn >= limit - currentTolerance() && referenceSlope() > 0 && resistance() != NoLoad;
    if (drawn > limit + currentTolerance() || isFull)
        giveCurrent(wanted, now);
    else
        followReference(now);
}

double Output::drawnAtReference(double now) const
{
    const double volts = reference.valueAt(now);
    const double slope = referenceSlope();
    const bool leaks = volts > 0 || slope > 0;
    return volts / resistance() + load.capacitance * slope + (leaks ? leakage(now) : 0);
}

double Output::timeOfBlocking(double now) const
{
    const double slope = referenceSlope();
    if (slope >= 0 || load.capacitance <= 0)
        return Never;
    const double volts = reference.valueAt(now);
    const double drawn = volts / discharge() + load.capacitance * slope + leakage(now);
    const double growth = slope / discharge() + leakageDrift();
    return growth < 0 ? qMax(now, now - (drawn + currentTolerance()) / growth) : Never;
}

void Output::followReference(double now)
{
    OutputCourse next;
    next.start = now;
    next.voltage = reference.valueAt(now);
    next.slope = referenceSlope();
    next.current = drawnAtReference(now);
    if (next.voltage > 0 || next.slope > 0)
        next.currentSlope = next.slope / resistance() + leakageDrift();
    begin(next, Regulation::Voltage);
}

void Output::giveCurrent(double voltage, double now)
{
    const double available = limit - leakage(now);
    if (load.capacitance <= 0) {
        const double ohm = resistance();
        if (available <= 0 || ohm == NoLoad) {
            stay(0, limit, Regulation::Current, now);
            return;
        }
        OutputCourse next;
        next.start = now;
        next.voltage = available * ohm;
        next.slope = -leakageDrift() * ohm;
        next.current = limit;
        begin(next, Regulation::Current);
        return;
    }
    if (voltage <= 0 && available <= 0) {
        stay(0, limit, Regulation::Current, now);
        return;
    }
    begin(chargingCourse(voltage, limit, resistance(), now), Regulation::Current);
}

void Output::drain(double voltage, Regulation regulation, double now)
{
    if (voltage <= residue() || load.capacitance <= 0) {
        stay(0, 0, regulation, now);
        return;
    }
    begin(chargingCourse(voltage, 0, discharge(), now), regulation);
}

OutputCourse Output::chargingCourse(double voltage, double amperes, double ohm, double now) const
{
    // C dV/dt = amperes - V / ohm - leakage - drift t
    const double farad = load.capacitance;
    const double drift = leakageDrift();
    const double available = amperes - leakage(now);
    OutputCourse next;
    next.start = now;
    next.voltage = voltage;
    next.current = amperes;
    if (ohm == NoLoad) {
        next.slope = available / farad;
        next.bend = -drift / (2 * farad);
    } else {
        next.slope = -drift * ohm;
        next.rate = 1 / (ohm * farad);
        next.swing = voltage - (available + farad * drift * ohm) * ohm;
    }
    return next;
}

void Output::stay(double voltage, double current, Regulation regulation, double now)
{
    OutputCourse next;
    next.start = now;
    next.voltage = voltage;
    next.current = current;
    begin(next, regulation);
}

void Output::begin(const OutputCourse &next, Regulation regulation)
{
    const double now = next.start;
    const bool isSame = regulation == mode && next.slope == course.slope && next.rate == 0 && course.rate == 0
        && next.bend == 0 && course.bend == 0 && next.currentSlope == course.currentSlope
        && std::abs(next.voltage - voltage(now)) <= voltageTolerance()
        && std::abs(next.current - course.currentAt(now)) <= currentTolerance();
    mode = regulation;
    if (isSame)
        return;
    course = next;
    ++courses;
}

} // namespace simulator
