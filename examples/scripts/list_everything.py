# Prints a table of everything that the open connections lead to: crates, modules and channels, with a few values of
# each. It only reads.
#
# "error" in a cell means that the service did not give that value, or, in the last column, that the device itself
# reports an error.

import orbClient


# Finding a connection makes an object for each of its channels, and Python never frees one: find each only once.
def list_connection(connection):
    channels = sum(len(module.channels) for module in connection.modules)
    print(f"Connection {connection}: {connection.getStatusConnectionStatus()}, crates: {len(connection.crates)}, "
          f"modules: {len(connection.modules)}, channels: {channels}")
    for crate in connection.crates:
        list_crate(crate)
    for module in connection.modules:
        list_module(module)


def list_crate(crate):
    power = {True: "on", False: "off"}.get(crate.getControlPower(), "unknown")
    print(f"  Crate {crate}: {crate.getStatusFirmwareName()} {crate.getStatusFirmwareRelease()}, "
          f"power {power}, {crate.getStatusTemperature0()} C, {crate.getStatusRunningState()}")


def list_module(module):
    print(f"  Module {module}: {module.getStatusFirmwareName()} {module.getStatusFirmwareRelease()}, "
          f"serial number {module.getStatusSerialNumber()}, {module.getStatusTemperature()} C, "
          f"{module.getStatusRunningState()}")
    if not module.channels:
        print("    Its channels cannot be read.")
        return
    print(f"    {'channel':<10}{'set':>12}{'measured':>14}{'current':>16}  state")
    for channel in module.channels:
        voltage_set = with_unit(channel.getControlVoltageSet(), ".1f", "V")
        voltage = with_unit(channel.getStatusVoltageMeasure(), ".1f", "V")
        current = with_unit(channel.getStatusCurrentMeasure(), ".3e", "A")
        print(f"    {str(channel):<10}{voltage_set:>12}{voltage:>14}{current:>16}  {channel.getStatusRunningState()}")


def with_unit(reading, digits, unit):
    if isinstance(reading, float):
        return f"{reading:{digits}} {unit}"
    return str(reading)


connections = orbClient.getConnections()
if not connections:
    raise RuntimeError("There is no open connection.")
for connection in sorted(connections, key=str):
    list_connection(connection)
