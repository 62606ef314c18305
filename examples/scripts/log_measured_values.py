# Writes the measured voltages and currents of all channels to a CSV file, at regular intervals, each value with the
# time at which it was taken. It only reads.
#
# A value that cannot be read leaves its cell empty; how many there were is said at the end. When a whole round brings
# no value any more, the connection is gone and the script ends.

import csv
import os
import time

import orbClient

CONNECTIONS = []  # names of connections, such as ["local"]; none means every connection that is open
INTERVAL = 1.0  # s, from one round to the next
DURATION = 60.0  # s, after which no further round begins
CSV_FILE = os.path.join(os.path.expanduser("~"), time.strftime("measured_values_%Y%m%d_%H%M%S.csv"))


def find_connections():
    if not CONNECTIONS:
        return sorted(orbClient.getConnections(), key=str)
    found = []
    for name in CONNECTIONS:
        connection = orbClient.findConnection(name)
        if connection == "error":
            names = ", ".join(str(other) for other in orbClient.getConnections())
            raise RuntimeError(f"There is no open connection \"{name}\". Open are: {names or 'none'}.")
        found.append(connection)
    return found


def time_text(timestamp):
    if timestamp != timestamp:  # the service gave no time
        return ""
    seconds, milliseconds = divmod(round(timestamp * 1000), 1000)
    return time.strftime("%Y-%m-%d %H:%M:%S", time.gmtime(seconds)) + f".{milliseconds:03}"


# The time and the value as two cells; both empty when there is no value.
def cells(pair):
    timestamp, value = pair
    if not isinstance(value, float):
        return ["", ""]
    return [time_text(timestamp), value]


# Returns how many values there should have been, and how many there were not.
def log_round(table, channels):
    missing = 0
    for channel in channels:
        voltage = cells(channel.getStatusVoltageMeasureWithTimestamp())
        current = cells(channel.getStatusCurrentMeasureWithTimestamp())
        missing += (voltage[1] == "") + (current[1] == "")
        table.writerow([channel.connection, str(channel)] + voltage + current)
    return 2 * len(channels), missing


def log(file, channels):
    table = csv.writer(file)
    table.writerow(["connection", "channel", "time of voltage (UTC)", "voltage (V)", "time of current (UTC)",
                    "current (A)"])
    start = time.monotonic()
    rounds = 0
    all_missing = 0
    while time.monotonic() - start <= DURATION:
        values, missing = log_round(table, channels)
        file.flush()
        rounds += 1
        all_missing += missing
        if missing == values:
            raise RuntimeError(f"No value can be read any more; the log ends after {rounds} rounds: {CSV_FILE}")
        time.sleep(max(0.0, start + rounds * INTERVAL - time.monotonic()))
    print(f"{rounds} rounds of {len(channels)} channels are in {CSV_FILE}")
    if all_missing:
        print(f"{all_missing} values could not be read; their cells are empty.")


channels = []
for connection in find_connections():
    for module in connection.modules:
        channels += module.channels
if not channels:
    raise RuntimeError("There is no channel to log: no connection is open, or none of them has a module.")
with open(CSV_FILE, "x", newline="", encoding="utf-8") as file:  # "x": never write over another log
    log(file, channels)
