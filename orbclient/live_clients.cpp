#include "orbclient/live_clients.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace orbclient
{

namespace
{

// One entry for each module that has a client: one in practice.
std::vector<OrbClient *> &clients()
{
    static std::vector<OrbClient *> list;
    return list;
}

std::atomic<bool> withdrawn{false};
// Changed with the interpreter lock held alone.
std::atomic<int> callsUnderWay{0};

} // namespace

void addLiveClient(OrbClient *client)
{
    withdrawn = false;
    clients().push_back(client);
}

void removeLiveClient(OrbClient *client)
{
    const auto found = std::find(clients().begin(), clients().end(), client);
    if (found != clients().end())
        clients().erase(found);
}

LiveClient::LiveClient(OrbClient *wanted) : client(nullptr)
{
    // Said first and asked then, as the other side asks after it has said: one of the two sees the other.
    callsUnderWay = callsUnderWay.load(std::memory_order_relaxed) + 1;
    if (withdrawn)
        return;
    const auto found = std::find(clients().cbegin(), clients().cend(), wanted);
    if (found != clients().cend())
        client = wanted;
}

LiveClient::~LiveClient()
{
    callsUnderWay.store(callsUnderWay.load(std::memory_order_relaxed) - 1, std::memory_order_release);
}

bool withdrawClients()
{
    constexpr std::chrono::milliseconds Longest(50);
    const auto start = std::chrono::steady_clock::now();
    withdrawn = true;
    while (callsUnderWay != 0) {
        if (std::chrono::steady_clock::now() - start > Longest)
            return false;
        std::this_thread::yield();
    }
    return true;
}

} // namespace orbclient
