# Ramps one channel to a voltage, waits until it is there, and leaves it on.
#
# Nothing is written before everything has been looked at. After that, the first thing that goes wrong switches the
# channel off, with its ramp; the last line says what became of its voltage. Closing the terminal meanwhile ends the
# script where it is, and the channel goes on by itself to VOLTAGE. The ramp speeds stay as they are set here.

import math
import time

import orbClient

CONNECTION = "local"
LINE = 0
MODULE = 2
CHANNEL = 1

VOLTAGE = 500.0  # V, where to ramp to
RAMP_SPEED = 50.0  # V/s, up and down
TOLERANCE = 2.0  # V, how near to VOLTAGE the measured voltage must come
LONGEST_RAMP = 60.0  # s, in which a ramp must be over, up or down
INTERVAL = 1.0  # s, from one look at the channel to the next
SAFE_VOLTAGE = 60.0  # V, below which the channel counts as being off


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
    if not 0 <= VOLTAGE <= limit:
        raise RuntimeError(f"{VOLTAGE:g} V is not possible: channel {channel} goes from 0 V to {limit:g} V.")
    check_faults(channel)  # they stay until they are cleared, which is for somebody to do who knows why they are there


def ramp(channel):
    write(channel.setControlVoltageRampspeedUp(RAMP_SPEED), f"ramp channel {channel} up by {RAMP_SPEED:g} V/s")
    write(channel.setControlVoltageRampspeedDown(RAMP_SPEED), f"ramp channel {channel} down by {RAMP_SPEED:g} V/s")
    write(channel.setControlVoltageSet(VOLTAGE), f"set channel {channel} to {VOLTAGE:g} V")
    write(channel.setControlOn(1), f"switch channel {channel} on")
    end = time.monotonic() + LONGEST_RAMP
    while True:
        voltage = number(channel.getStatusVoltageMeasure(), "measured voltage")
        current = number(channel.getStatusCurrentMeasure(), "measured current")
        print(f"Channel {channel}: {voltage:.1f} V, {current:.3e} A")
        check_faults(channel)
        if not flag(channel.getStatusOn(), "high voltage"):
            raise RuntimeError(f"Channel {channel} was switched off by something else.")
        ramping = flag(channel.getStatusRamping(), "a ramp")
        if not ramping and abs(voltage - VOLTAGE) <= TOLERANCE:
            return
        if not ramping and flag(channel.getStatusConstantCurrent(), "current control"):
            raise RuntimeError(f"The current limit holds channel {channel} at {voltage:.1f} V.")
        if time.monotonic() >= end:
            raise RuntimeError(f"Channel {channel} did not reach {VOLTAGE:g} V within {LONGEST_RAMP:g} s.")
        time.sleep(INTERVAL)


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
try:
    ramp(channel)
except BaseException as problem:
    print(f"Stopped: {str(problem) or type(problem).__name__} Switching channel {channel} off.")
    switch_off(channel)
    raise
print(f"Channel {channel} has reached {VOLTAGE:g} V. It stays on.")
