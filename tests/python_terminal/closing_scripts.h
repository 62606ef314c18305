#pragma once

#include "tests/python_terminal/closing_test.h"

#include <QObject>

#include <memory>

/// A test of scripts: the tool closes while each of them runs, round after round, and opens again. Its rows are what
/// the subclass adds.
class ClosingScripts : public QObject
{
    Q_OBJECT

protected:
    explicit ClosingScripts(int roundsOfEach) : rounds(roundsOfEach) { }

    /// Calls row() for each script.
    virtual void addScripts() = 0;
    /// `sleeps`: as ClosingTest::closeWhile has it.
    static void row(const char *name, const char *script, bool sleeps);

    /// Changes of the process before the first interpreter starts; none by default.
    virtual void prepareProcess() { }
    /// Takes the test library's handler away: one that the process has already is left to it, and it would end the test.
    static void useDefaultInterruptSignal();

    std::unique_ptr<ClosingTest> test;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { test.reset(); }

    void scripts_data();
    void scripts();

private:
    const int rounds;
};
