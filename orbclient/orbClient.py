# Scripts know the module as orbClient. In the Python terminal it is built in under this name; a plain interpreter
# finds this file, and gets the same module from the extension beside it.
import sys

import orbClientPython_3_for_ORB

sys.modules[__name__] = orbClientPython_3_for_ORB
