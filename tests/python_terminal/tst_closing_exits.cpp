#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes after a script has ended itself or its output, or wanted to end everything, and although it wants
/// to do much at its end.
class TestClosingExits : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingExits() : ClosingScripts(ClosingLimits::rounds()) { }

private:
    void addScripts() override;
    void prepareProcess() override { useDefaultInterruptSignal(); }
};

void TestClosingExits::addScripts()
{
    row("sys.exit", "import sys\nprint('reached')\nsys.exit()\n", true);
    row("exit", "print('reached')\nexit()\n", true);
    row("SIGINT", "import os, signal\nprint('reached')\nos.kill(os.getpid(), signal.SIGINT)\n", true);
    row("SIGINT while it sleeps", R"(
import os, signal, time
print('reached')
try:
    os.kill(os.getpid(), signal.SIGINT)
    time.sleep(60)
except KeyboardInterrupt:
    time.sleep(60)
)",
        true);
    row("closed output", "import sys\nprint('reached')\nsys.stdout.close()\n", true);
    row("sleeping exit function", R"(
import atexit, time
atexit.register(time.sleep, 60)
print('reached')
)",
        true);
    row("busy exit function", R"(
import atexit
def f():
    while True: pass
atexit.register(f)
print('reached')
)",
        true);
}

QTEST_MAIN(TestClosingExits)

#include "tst_closing_exits.moc"
