#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace simulator
{

/// Does jobs one after the other on a thread of its own, each no earlier than its delay after it was posted, and
/// always in the order in which they were posted. Besides it has one alarm, which waits for none of the jobs but the one
/// under way. What is not yet begun when the queue is stopped is dropped.
class AnswerQueue
{
public:
    using Job = std::function<void()>;

    AnswerQueue();
    ~AnswerQueue();
    AnswerQueue(const AnswerQueue &) = delete;
    AnswerQueue &operator=(const AnswerQueue &) = delete;

    void post(std::chrono::milliseconds delay, Job job);

    /// Does a job at that time, instead of an earlier one that the alarm was set for and that has not begun. Not for the
    /// latest time of all.
    void setAlarm(std::chrono::steady_clock::time_point when, Job job);

    /// Waits for the job under way. Never called by a job.
    void stop();

private:
    struct Entry
    {
        std::chrono::steady_clock::time_point due;
        Job job;
    };

    static constexpr auto Never = std::chrono::steady_clock::time_point::max();

    void run();

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Entry> entries;
    Entry alarm{Never, {}};
    bool stopped = false;
    std::thread worker; // the last member: it uses the others as soon as it exists
};

} // namespace simulator
