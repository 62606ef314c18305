#include "workbench/simulator/answer_queue.h"

#include <utility>

namespace simulator
{

AnswerQueue::AnswerQueue() : worker([this] { run(); }) { }

AnswerQueue::~AnswerQueue()
{
    stop();
}

void AnswerQueue::post(std::chrono::milliseconds delay, Job job)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopped)
            return;
        entries.push_back({std::chrono::steady_clock::now() + delay, std::move(job)});
    }
    changed.notify_one();
}

void AnswerQueue::stop()
{
    std::deque<Entry> dropped; // destroyed with no lock held
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
        dropped.swap(entries);
    }
    changed.notify_one();
    if (worker.joinable())
        worker.join();
}

void AnswerQueue::run()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopped) {
        if (entries.empty()) {
            changed.wait(lock);
            continue;
        }
        const auto due = entries.front().due;
        if (std::chrono::steady_clock::now() < due) {
            changed.wait_until(lock, due);
            continue;
        }
        const Job job = std::move(entries.front().job);
        entries.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

} // namespace simulator
