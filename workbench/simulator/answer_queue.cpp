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

void AnswerQueue::setAlarm(std::chrono::steady_clock::time_point when, Job job)
{
    Entry replaced{when, std::move(job)}; // destroyed with no lock held
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopped)
            return;
        std::swap(alarm, replaced);
    }
    changed.notify_one();
}

void AnswerQueue::stop()
{
    std::deque<Entry> dropped; // destroyed with no lock held
    Entry droppedAlarm{Never, {}};
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
        dropped.swap(entries);
        std::swap(alarm, droppedAlarm);
    }
    changed.notify_one();
    if (worker.joinable())
        worker.join();
}

void AnswerQueue::run()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopped) {
        const bool isAlarm = entries.empty() || alarm.due < entries.front().due;
        const auto due = isAlarm ? alarm.due : entries.front().due;
        if (due == Never) {
            changed.wait(lock);
            continue;
        }
        if (std::chrono::steady_clock::now() < due) {
            changed.wait_until(lock, due);
            continue;
        }
        Job job;
        if (isAlarm) {
            job = std::move(alarm.job);
            alarm = {Never, {}};
        } else {
            job = std::move(entries.front().job);
            entries.pop_front();
        }
        lock.unlock();
        job();
        job = nullptr; // with no lock held
        lock.lock();
    }
}

} // namespace simulator
