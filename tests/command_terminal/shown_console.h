#pragma once

#include "tests/command_terminal/probe_console.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QTest>

#include <memory>

/// For tests that begin each with a fresh console in an active window: a base of theirs.
class ShownConsole
{
protected:
    ShownConsole() = default;
    ~ShownConsole() = default;

    /// Makes the console and shows it; false when its window does not become active.
    bool showConsole()
    {
        host = std::make_unique<TerminalFixture>();
        console = std::make_unique<ProbeConsole>(*host);
        console->resize(400, 200);
        console->show();
        console->activateWindow();
        return QTest::qWaitForWindowActive(console.get());
    }

    void closeConsole()
    {
        console.reset();
        host.reset();
    }

    std::unique_ptr<TerminalFixture> host;
    std::unique_ptr<ProbeConsole> console;
};
