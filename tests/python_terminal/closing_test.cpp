#include "tests/python_terminal/closing_test.h"

#include "python_terminal/abandoned_worker.h"
#include "tests/python_terminal/process_census.h"

#include <QApplication>
#include <QtTest>

#include <algorithm>

namespace
{

constexpr int Patience = 10000; // ms

} // namespace

QString ClosingTest::prepare()
{
    if (!tool.open() || !tool.evaluates())
        return QStringLiteral("did not start: ") + tool.text();
    tool.close();
    if (!QTest::qWaitFor([] { return process_census::workers() == 0; }, Patience))
        return QStringLiteral("did not end");
    threads = process_census::threads();
    descriptors = process_census::descriptors();
    return QString();
}

QString ClosingTest::cycle(const QString &script, bool waitForSleep)
{
    if (!tool.open())
        return QStringLiteral("did not start: ") + tool.text();
    if (!tool.evaluates())
        return QStringLiteral("did not evaluate: ") + tool.text();
    if (!tool.run(script))
        return QStringLiteral("did not reach its state: ") + tool.text();
    if (waitForSleep && !QTest::qWaitFor(process_census::workerSleeps, Patience))
        return QStringLiteral("did not wait");
    const qint64 time = tool.close();
    longestClose = std::max(longestClose, time);
    return time < ClosingLimits::closeTime() ? waitForTheEnd() : QStringLiteral("closed in %1 ms").arg(time);
}

QString ClosingTest::waitForTheEnd()
{
    const auto ended = [] { return qApp->findChildren<AbandonedWorker *>().isEmpty(); };
    if (ended())
        return QString();
    ++lateEnds;
    return QTest::qWaitFor(ended, Patience) ? QString() : QStringLiteral("did not end");
}

QString ClosingTest::closeOnceWhile(const QString &script, bool sleeps)
{
    const QString wrong = cycle(script, sleeps);
    tool.close();
    return wrong;
}

QString ClosingTest::closeWhile(const QString &script, bool sleeps, int rounds)
{
    const qint64 before = process_census::residentKiB();
    longestClose = 0;
    lateEnds = 0;
    for (int i = 0; i < rounds; ++i) {
        const QString wrong = closeOnceWhile(script, sleeps && i % 2 == 1);
        if (!wrong.isEmpty())
            return QStringLiteral("round %1: %2").arg(i).arg(wrong.right(2000));
    }
    qInfo("%.1f KiB a round, closed in %lld ms at most, %d of %d ended later",
          double(process_census::residentKiB() - before) / rounds, static_cast<long long>(longestClose),
          lateEnds, rounds);
    if (lateEnds == rounds)
        return QStringLiteral("never ended in time");
    return whatIsLeft();
}

QString ClosingTest::whatIsLeft()
{
    QStringList wrong;
    if (!QTest::qWaitFor([] { return process_census::workers() == 0; }, Patience))
        wrong.append(QStringLiteral("%1 workers are left").arg(process_census::workers()));
    if (!QTest::qWaitFor([this] { return process_census::threads() <= threads; }, Patience))
        wrong.append(QStringLiteral("%1 threads instead of %2").arg(process_census::threads()).arg(threads));
    QStringList added = process_census::descriptors();
    for (const QString &descriptor : std::as_const(descriptors))
        added.removeOne(descriptor);
    if (!added.isEmpty())
        wrong.append(QStringLiteral("descriptors are left: ") + added.join(QLatin1String(", ")));
    if (process_census::armedTimers() != 0)
        wrong.append(QStringLiteral("timers are left"));
    if (!tool.open() || !tool.evaluates())
        wrong.append(QStringLiteral("the next tool does not work: ") + tool.text());
    tool.close();
    return wrong.join(QLatin1String("; "));
}
