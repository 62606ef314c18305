"""What an object that a script makes costs, since none is ever freed: the reference states it, and this measures it."""

import gc
import os
import re
import sys
import tracemalloc
import unittest

import orbClient

CONNECTION = "Main"
OBJECTS = 1000


def own_text(text):
    """A str that nothing else refers to, as each object gets one for its connection."""
    return "".join(list(text))


def make_channel():
    channel = orbClient.channel()
    channel.connection = own_text(CONNECTION)
    channel.line, channel.module, channel.index = 0, 3, 7
    return channel


def make_module(channels):
    module = orbClient.module()
    module.connection = own_text(CONNECTION)
    module.line, module.address = 0, 3
    for _ in range(channels):
        module.channels.append(make_channel())
    return module


def make_crate():
    crate = orbClient.crate()
    crate.connection = own_text(CONNECTION)
    crate.line, crate.address = 0, 1000
    return crate


def make_connection():
    return orbClient.connection(own_text(CONNECTION))


def make_frame():
    frame = orbClient.dataFrame()
    frame.connection = own_text(CONNECTION)
    frame.line, frame.address, frame.channel = 0, 3, 7
    for member in ("command", "item", "value", "unit", "rawJson"):
        setattr(frame, member, own_text("text of 16 bytes"))
    return frame


def bytes_kept(make):
    """What is left in memory of an object that was made and released at once."""
    make()
    gc.collect()
    tracemalloc.start()
    before = tracemalloc.get_traced_memory()[0]
    for _ in range(OBJECTS):
        make()
    gc.collect()
    after = tracemalloc.get_traced_memory()[0]
    tracemalloc.stop()
    return round((after - before) / OBJECTS)


MEASURED = [
    ("connection", "connection", make_connection),
    ("crate", "crate", make_crate),
    ("module without channels", "module", lambda: make_module(0)),
    ("module with 16 channels", "module", lambda: make_module(16)),
    ("channel", "channel", make_channel),
    ("dataFrame", "dataFrame", make_frame),
]


def stated():
    """The rows of the table in the reference: what, the object's own bytes, bytes that stay."""
    with open(os.path.join(os.environ["PYTHON_REFERENCE"], "README.md"), encoding="utf-8") as file:
        rows = re.findall(r"^\| ([^|]+) \| ([0-9]+) \| ([0-9]+) \|$", file.read(), re.MULTILINE)
    return {what: (int(own), int(kept)) for what, own, kept in rows}


class ObjectSizes(unittest.TestCase):
    def test_the_reference_states_what_is_measured(self):
        measured = {
            what: (sys.getsizeof(getattr(orbClient, type_name)()), bytes_kept(make))
            for what, type_name, make in MEASURED
        }
        self.assertEqual(stated(), measured)


if __name__ == "__main__":
    unittest.main()
