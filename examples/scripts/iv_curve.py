# Measures the current of one channel at a row of voltages and writes both to a CSV file. The channel must be off
# before, and is off afterwards.
#
# The curve ends early, with what was measured up to there, when the current reaches MOST_CURRENT; the channel's delayed
# trip, which would take that for a problem, is disabled for the time of the measurement. Anything that goes wrong ends
# it as well; either way the channel is switched off, with its ramp, and the script says at which voltage it was left.
# Closing the terminal meanwhile ends the script where it is and leaves the channel on.
# The ramp speeds stay as they are set here.

import csv
import math
import os
import time

import orbClient

CONNECTION = "local"
LINE = 0
MODULE = 2
CHANNEL = 1

VOLTAGES = [0, 100, 200, 300, 400, 500]  # V, in this order
MOST_CURRENT = 0.001  # A, set as the channel's current limit for the time of the measurement
RAMP_SPEED = 50.0  # V/s, up and down
SETTLING_TIME = 2.0  # s, between the end of a ramp and the measurement
NO_TRIP = 4  # the delayed trip action that disables the trip
LONGEST_RAMP = 60.0  # s, in which one step must be over, and the way down to 0 V as well
SAFE_VOLTAGE = 60.0  # V, below which the channel counts as being off
INTERVAL = 0.5  # s, from one look at a ramp to the next
CSV_FILE = os.path.join(os.path.expanduser("~"), time.strftime("iv_curve_%Y%m%d_%H%M%S.csv"))


def find_channel():
    connection = orbClient.findConnection(CONNECTION)
    if connection == "error":
        names = ", ".join(str(other) for other in orbClient.getConnections())
        raise RuntimeError(f"There is no open connection \"{CONNECTION}\". Open are: {names or 'none'}.")
    for module in connection.modules:
        if (module.line, module.address) == (LINE, MODULE) and CHANNEL < len(module.channels):
            return module.channels[CHANNEL]
    raise RuntimeError(f"Connection \"{CONNECTION}\" has no channel {LINE}.{MODULE}.{CHANNEL}.")


def number(reading, what):
    if not isinstance(reading, float) or not math.isfinite(reading):
        raise RuntimeError(f"The {what} cannot be read: the answer is \"{reading}\".")
    return reading


def flag(reading, what):
    if reading not in (True, False):
        raise RuntimeError(f"Whether there is {what} cannot be read: the answer is \"{reading}\".")
    return bool(reading)


def write(result, what):
    if result != "ok":
        raise RuntimeError(f"The service refuses to {what}.")


def check_faults(channel):
    faults = (
        ("a current trip", channel.getEventTrip),
        ("a voltage above its limit", channel.getEventVoltageLimitExceeded),
        ("a current above its limit", channel.getEventCurrentLimitExceeded),
        ("an external inhibit", channel.getEventExternalInhibitActive),
        ("an emergency off", channel.getEventEmergency),
        ("too many arcs", channel.getErrorArc),
        ("a voltage outside of its bounds", channel.getErrorVoltageBoundExceeded),
        ("a current outside of its bounds", channel.getErrorCurrentBoundExceeded),
    )
    found = [what for what, read in faults if flag(read(), what)]
    if found:
        raise RuntimeError(f"Channel {channel} reports {' and '.join(found)}.")


def check_before(channel):
    limit = number(channel.getStatusVoltageLimit(), "voltage limit")
    for voltage in VOLTAGES:
        if not 0 <= voltage <= limit:
            raise RuntimeError(f"{voltage:g} V is not possible: channel {channel} goes from 0 V to {limit:g} V.")
    if flag(channel.getStatusOn(), "high voltage"):
        raise RuntimeError(f"Channel {channel} is in use: it is on already.")
    check_faults(channel)  # they stay until they are cleared, which is for somebody to do who knows why they are there


def check_while_on(channel):
    check_faults(channel)
    if not flag(channel.getStatusOn(), "high voltage"):
        raise RuntimeError(f"Channel {channel} was switched off by something else.")


def go_to(channel, voltage):
    write(channel.setControlVoltageSet(voltage), f"set channel {channel} to {voltage:g} V")
    end = time.monotonic() + LONGEST_RAMP
    ramping = True
    while ramping:
        if time.monotonic() >= end:
            raise RuntimeError(f"Channel {channel} did not come to {voltage:g} V within {LONGEST_RAMP:g} s.")
        time.sleep(INTERVAL)  # before the first look, so that the ramp has begun
        check_while_on(channel)
        ramping = flag(channel.getStatusRamping(), "a ramp")
    settled = time.monotonic() + SETTLING_TIME
    while time.monotonic() < settled:
        time.sleep(INTERVAL)
        check_while_on(channel)


# Writes a row for each voltage, and at once, so that a curve that is cut short is in the file as far as it went.
def measure(channel, file):
    write(channel.setControlVoltageRampspeedUp(RAMP_SPEED), f"ramp channel {channel} up by {RAMP_SPEED:g} V/s")
    write(channel.setControlVoltageRampspeedDown(RAMP_SPEED), f"ramp channel {channel} down by {RAMP_SPEED:g} V/s")
    write(channel.setControlCurrentSet(MOST_CURRENT), f"limit channel {channel} to {MOST_CURRENT:g} A")
    write(channel.setSetupDelayedTripAction(NO_TRIP), f"disable the trip of channel {channel}")
    table = csv.writer(file)
    table.writerow(["time (s since 1970)", "voltage set (V)", "voltage (V)", "current (A)", "limited by current"])
    write(channel.setControlVoltageSet(0), f"set channel {channel} to 0 V")
    write(channel.setControlOn(1), f"switch channel {channel} on")  # once: whoever switches it off ends the curve
    for voltage_set in VOLTAGES:
        go_to(channel, voltage_set)
        limited = flag(channel.getStatusConstantCurrent(), "current control")
        timestamp, voltage = channel.getStatusVoltageMeasureWithTimestamp()
        voltage = number(voltage, "measured voltage")
        current = number(channel.getStatusCurrentMeasure(), "measured current")
        table.writerow([f"{timestamp:.3f}", voltage_set, voltage, current, "yes" if limited else "no"])
        file.flush()
        print(f"Channel {channel}: {voltage:.1f} V, {current:.3e} A")
        if limited:
            print(f"The current limit of {MOST_CURRENT:g} A is reached; the curve ends here.")
            return


def switch_off(channel):
    end = time.monotonic() + LONGEST_RAMP
    while True:
        channel.setControlOn(0)  # again each time, in case the connection was away; what counts is what is measured
        voltage = channel.getStatusVoltageMeasure()
        if channel.getStatusOn() == 0 and isinstance(voltage, float) and abs(voltage) <= SAFE_VOLTAGE:  # False equals 0
            print(f"Channel {channel} is off, at {voltage:.1f} V.")
            return
        if time.monotonic() >= end:
            raise RuntimeError(f"CHANNEL {channel} IS NOT OFF. Measured voltage: {voltage} (V). Switch it off by hand.")
        time.sleep(INTERVAL)


channel = find_channel()
check_before(channel)
usual_current = number(channel.getControlCurrentSet(), "current limit")
usual_trip = int(number(channel.getSetupDelayedTripAction(), "trip action"))
with open(CSV_FILE, "x", newline="", encoding="utf-8") as file:  # "x": never write over another curve
    try:
        measure(channel, file)
    except BaseException as problem:
        print(f"Stopped: {str(problem) or type(problem).__name__} Switching channel {channel} off.")
        raise
    finally:
        switch_off(channel)
        write(channel.setSetupDelayedTripAction(usual_trip), f"restore the trip of channel {channel}")
        write(channel.setControlCurrentSet(usual_current), f"limit channel {channel} to {usual_current:g} A again")
print(f"The curve is in {CSV_FILE}")
