#pragma once

#include <QStringList>

/// What the operating system says this process holds. Read from /proc.
namespace process_census
{

/// Number of threads.
int threads();
/// Threads that the Python terminal names: workers that still live.
int workers();
/// Whether a worker sleeps in the kernel. False when there is none.
bool workerSleeps();
/// What the open descriptors refer to, sorted.
QStringList descriptors();
/// Timers of the operating system (alarm, setitimer) that are armed.
int armedTimers();
/// How long this thread has been ready to run without a processor, in ms: what a busy machine costs it.
qint64 waitedForProcessor();
/// Resident memory in KiB.
qint64 residentKiB();

} // namespace process_census
