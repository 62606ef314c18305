#include "tests/python_terminal/process_census.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>

#include <sys/time.h>
#include <unistd.h>

namespace process_census
{

namespace
{

QStringList threadFolders()
{
    const QDir tasks(QStringLiteral("/proc/self/task"));
    return tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isWorker(const QString &thread)
{
    return contentsOf(QStringLiteral("/proc/self/task/%1/comm").arg(thread)).trimmed() == "python";
}

} // namespace

int threads()
{
    return threadFolders().size();
}

int workers()
{
    const QStringList all = threadFolders();
    return int(std::count_if(all.cbegin(), all.cend(), isWorker));
}

bool workerSleeps()
{
    const QStringList all = threadFolders();
    const auto worker = std::find_if(all.cbegin(), all.cend(), isWorker);
    if (worker == all.cend())
        return false;
    // The state follows the name, which stands in parentheses.
    const QByteArray status = contentsOf(QStringLiteral("/proc/self/task/%1/stat").arg(*worker));
    return status.mid(status.lastIndexOf(')') + 2, 1) == "S";
}

QStringList descriptors()
{
    const QDir folder(QStringLiteral("/proc/self/fd"));
    QStringList targets;
    // All entries: what a link to a socket or a pipe refers to is no file.
    const QStringList names = folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        std::array<char, 256> target{};
        const QByteArray link = QFile::encodeName(folder.filePath(name));
        const ssize_t length = readlink(link.constData(), target.data(), target.size());
        // The one through which this is being read is gone by now.
        if (length > 0)
            targets.append(name + QLatin1Char(' ') + QString::fromLocal8Bit(target.data(), int(length)));
    }
    targets.sort();
    return targets;
}

int armedTimers()
{
    const std::array<int, 3> clocks = {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF};
    return int(std::count_if(clocks.cbegin(), clocks.cend(), [](int clock) {
        itimerval timer{};
        getitimer(__itimer_which_t(clock), &timer);
        return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
    }));
}

qint64 waitedForProcessor()
{
    constexpr qint64 NanosecondsPerMillisecond = 1000000;
    const QList<QByteArray> times = contentsOf(QStringLiteral("/proc/thread-self/schedstat")).split(' ');
    return times.size() > 1 ? times.at(1).toLongLong() / NanosecondsPerMillisecond : 0;
}

qint64 residentKiB()
{
    const QList<QByteArray> pages = contentsOf(QStringLiteral("/proc/self/statm")).split(' ');
    return pages.size() > 1 ? pages.at(1).toLongLong() * sysconf(_SC_PAGESIZE) / 1024 : 0;
}

} // namespace process_census
