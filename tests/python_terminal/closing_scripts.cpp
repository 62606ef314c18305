#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

#include <csignal>

void ClosingScripts::row(const char *name, const char *script, bool sleeps)
{
    QTest::newRow(name) << QString::fromLatin1(script) << sleeps;
}

void ClosingScripts::useDefaultInterruptSignal()
{
    std::signal(SIGINT, SIG_DFL);
}

void ClosingScripts::initTestCase()
{
    prepareProcess();
    test = std::make_unique<ClosingTest>();
    QCOMPARE(test->prepare(), QString());
}

void ClosingScripts::scripts_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("sleeps");
    addScripts();
}

void ClosingScripts::scripts()
{
    QFETCH(QString, script);
    QFETCH(bool, sleeps);
    QCOMPARE(test->closeWhile(script, sleeps, rounds), QString());
}
