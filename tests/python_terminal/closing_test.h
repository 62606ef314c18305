#pragma once

#include "tests/python_terminal/open_python_tool.h"

#include <QStringList>

/// Closes the tool again and again in some state, and looks at what is left. The functions return what is wrong, an
/// empty text when nothing is.
class ClosingTest
{
public:
    /// Goes once through everything, so that what the toolkit and Python keep for good is there already.
    QString prepare();

    /// Runs the script up to where it prints "reached" and closes the tool there, in so many rounds; every
    /// time, the tool that is opened next evaluates. `sleeps`: the script then waits for something, and on every other
    /// time the tool is closed when it does.
    ///
    /// On a machine that has much else to do an interpreter may need longer than the tool waits for it. It then must end
    /// by itself soon, and not every time.
    QString closeWhile(const QString &script, bool sleeps, int rounds);
    /// The same in one round, without a look at what is left.
    QString closeOnceWhile(const QString &script, bool sleeps);
    /// Nothing of a tool is left that was not there at first, and the next one works.
    QString whatIsLeft();

    OpenPythonTool &openTool() { return tool; }

private:
    QString cycle(const QString &script, bool waitForSleep);
    QString waitForTheEnd();

    OpenPythonTool tool;
    qint64 longestClose = 0; ///< ms
    int lateEnds = 0;
    int threads = 0; ///< at first, as the descriptors
    QStringList descriptors;
};
