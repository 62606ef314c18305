"""Both names import one module, which takes the host's library from the prefix that it was installed to."""

import os

import orbClient
import orbClientPython_3_for_ORB

assert orbClient is orbClientPython_3_for_ORB
assert orbClient.__name__ == "orbClientPython_3", orbClient.__name__
assert orbClient.findConnection("Main") == "error"

with open("/proc/self/maps", encoding="utf-8") as maps:
    loaded = {line.split()[-1] for line in maps if "libhost_kit" in line}
expected = {os.path.realpath(os.path.join(os.environ["PREFIX"], os.environ["LIBRARY_DIR"], "libhost_kit.so"))}
assert loaded == expected, f"{loaded}, and not {expected}"
