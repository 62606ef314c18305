# Switches all channels of a crate off, each with its own ramp, waits until every one of them is measured to be at a
# safe voltage, and only then switches the crate's power off.
#
# A channel that cannot be switched off does not keep the others from being switched off, but it does keep the power
# on: without power nothing would tell any more what voltage is left. The script then names the channel.

import time

import orbClient

CONNECTION = "local"
LINE = 0
CRATE = 1000  # address of the crate
SAFE_VOLTAGE = 60.0  # V, below which a channel counts as being off
LONGEST_RAMP = 300.0  # s, in which all channels must be down
INTERVAL = 1.0  # s, from one look at the channels to the next


def find_crate():
    connection = orbClient.findConnection(CONNECTION)
    if connection == "error":
        names = ", ".join(str(other) for other in orbClient.getConnections())
        raise RuntimeError(f"There is no open connection \"{CONNECTION}\". Open are: {names or 'none'}.")
    for crate in connection.crates:
        if (crate.line, crate.address) == (LINE, CRATE):
            return crate
    raise RuntimeError(f"Connection \"{CONNECTION}\" has no crate {LINE}.{CRATE}.")


def is_down(channel):
    voltage = channel.getStatusVoltageMeasure()
    return channel.getStatusOn() == 0 and isinstance(voltage, float) and abs(voltage) <= SAFE_VOLTAGE  # False equals 0


# Returns the channels that are not down when the time is over.
def switch_off(channels):
    remaining = channels
    end = time.monotonic() + LONGEST_RAMP
    while True:
        for channel in remaining:
            channel.setControlOn(0)  # again each time, in case the connection was away; what counts is what is measured
        remaining = [channel for channel in remaining if not is_down(channel)]
        if not remaining or time.monotonic() >= end:
            return remaining
        print(f"{len(remaining)} channels are not at a safe voltage yet.")
        time.sleep(INTERVAL)


def shut_down(crate):
    channels = [channel for module in crate.modules for channel in module.channels]
    print(f"Crate {crate}: switching {len(channels)} channels off.")
    remaining = switch_off(channels)
    for channel in remaining:
        print(f"CHANNEL {channel} IS NOT DOWN. Measured voltage: {channel.getStatusVoltageMeasure()} (V).")
    if remaining:
        raise RuntimeError(f"{len(remaining)} channels are not down after {LONGEST_RAMP:g} s. "
                           f"The power of crate {crate} stays on.")
    # The crate may have outputs that this script cannot see, in a module that does not say how many channels it has.
    if crate.getStatusOn() != 0:
        raise RuntimeError(f"All channels are down, but crate {crate} reports that an output is still on, or does not "
                           f"answer. Its power stays on.")
    if crate.setControlPower(0) != "ok" or crate.getControlPower() != 0:
        raise RuntimeError(f"All channels are down, but the power of crate {crate} cannot be switched off.")
    print(f"Crate {crate} is off. All channels were below {SAFE_VOLTAGE:g} V before.")


crate = find_crate()
if crate.getControlPower() == 0:
    print(f"Crate {crate} is off already.")
else:
    shut_down(crate)
