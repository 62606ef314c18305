# Starts the Qt console of Jupyter and says when its first prompt can be seen: what the Python terminal's start is
# compared with. Run by the Python that Debian's python3-qtconsole belongs to.
import os
import sys

from qtpy.QtCore import QTimer

from qtconsole.qtconsoleapp import JupyterQtConsoleApp

application = JupyterQtConsoleApp()
application.initialize(["--JupyterApp.answer_yes=True"])
application.window.show()


def look():
    if "In [" in application.widget._control.toPlainText():
        print("prompt", flush=True)
        application.kernel_manager.shutdown_kernel(now=True)
        os._exit(0)


timer = QTimer()
timer.timeout.connect(look)
timer.start(2)
sys.exit(application.app.exec_())
