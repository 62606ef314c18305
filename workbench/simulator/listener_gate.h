#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

class OrbBackendListener;

namespace simulator
{

/// The way to the listener. Any thread may call through it, with no lock held; taking the listener away waits until no
/// call to it is under way. A listener may take itself away from inside a call: its own call is not waited for.
class ListenerGate
{
public:
    void setListener(OrbBackendListener *newListener);

    /// Calls `function` with the listener, when there is one.
    template <class Function>
    void call(Function function)
    {
        if (OrbBackendListener *target = enter()) {
            function(*target);
            leave(target);
        }
    }

private:
    struct Call
    {
        OrbBackendListener *target = nullptr;
        std::thread::id caller;
    };

    OrbBackendListener *enter();
    void leave(OrbBackendListener *target);

    std::mutex mutex;
    std::condition_variable left;
    OrbBackendListener *listener = nullptr;
    std::vector<Call> calls;
};

} // namespace simulator
