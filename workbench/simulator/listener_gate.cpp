#include "workbench/simulator/listener_gate.h"

#include <algorithm>

namespace simulator
{

void ListenerGate::setListener(OrbBackendListener *newListener)
{
    std::unique_lock<std::mutex> lock(mutex);
    OrbBackendListener *const old = listener;
    listener = newListener;
    if (old == newListener)
        return;
    const std::thread::id self = std::this_thread::get_id();
    left.wait(lock, [this, old, self] {
        return std::none_of(calls.begin(), calls.end(), [old, self](const Call &call) {
            return call.target == old && call.caller != self;
        });
    });
}

OrbBackendListener *ListenerGate::enter()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (listener != nullptr)
        calls.push_back({listener, std::this_thread::get_id()});
    return listener;
}

void ListenerGate::leave(OrbBackendListener *target)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const std::thread::id self = std::this_thread::get_id();
        const auto own = std::find_if(calls.begin(), calls.end(), [target, self](const Call &call) {
            return call.target == target && call.caller == self;
        });
        calls.erase(own);
    }
    left.notify_all();
}

} // namespace simulator
