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
/// always in the order in which they were posted. What is not yet begun when the queue is stopped is dropped.
class AnswerQueue
{
public:
    using Job = std::function<void()>;

    AnswerQueue();
    ~AnswerQueue();
    AnswerQueue(const AnswerQueue &) = delete;
    AnswerQueue &operator=(const AnswerQueue &) = delete;

    void post(std::chrono::milliseconds delay, Job job);

    /// Waits for the job under way. Never called by a job.
    void stop();

private:
    struct Entry
    {
        std::chrono::steady_clock::time_point due;
        Job job;
    };

    void run();

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Entry> entries;
    bool stopped = false;
    std::thread worker; // the last member: it uses the others as soon as it exists
};

} // namespace simulator
