# Run by the interpreter inside of an installed workbench, and by the plain one that this starts: both use what was
# installed under PREFIX, and nothing else of FOREIGN, folders with a colon between them.

CHECK = r"""
import bz2, ctypes, decimal, hashlib, json, lzma, math, multiprocessing, os, socket, sqlite3, ssl, struct, sys
import importlib.util

foreign = tuple(folder + "/" for folder in os.environ["FOREIGN"].split(":"))
mapped = {line.split(None, 5)[5].strip() for line in open("/proc/self/maps") if "/" in line}
problems = [path for path in sorted(mapped) + sys.path
            if path.startswith(foreign) and not path.startswith(os.environ["PREFIX"] + "/")]
with open(importlib.util.cache_from_source(json.__file__), "rb") as compiled:
    written_for = struct.unpack("<4sIII", compiled.read(16))[2]
if written_for != int(os.stat(json.__file__).st_mtime):
    problems.append("compiled modules are older than their sources")
"""

import os
import subprocess
import sys

exec(CHECK)
print("host: " + ("; ".join(problems) or "sound"))
child = CHECK + 'print("child: " + ("; ".join(problems) or "sound"))'
print(subprocess.run([sys.executable, "-c", child], stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout.decode())
