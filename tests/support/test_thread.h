#pragma once

#include <functional>
#include <thread>
#include <utility>

/// A thread that does one piece of work and is waited for at the latest when it goes out of scope. Not a QThread: the
/// thread sanitizer does not see what happens on one, since Qt's library starts it.
class TestThread
{
public:
    explicit TestThread(std::function<void()> work) : thread(std::move(work)) { }
    TestThread(TestThread &&) noexcept = default;
    TestThread &operator=(TestThread &&) = delete;
    ~TestThread() { wait(); }

    /// Returns when the work is done.
    void wait()
    {
        if (thread.joinable())
            thread.join();
    }

private:
    std::thread thread;
};
