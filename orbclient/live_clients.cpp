#include "orbclient/live_clients.h"

#include <algorithm>
#include <atomic>
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

OrbClient *liveClient(OrbClient *client)
{
    if (withdrawn)
        return nullptr;
    const auto found = std::find(clients().cbegin(), clients().cend(), client);
    return found != clients().cend() ? client : nullptr;
}

void withdrawClients()
{
    withdrawn = true;
}

} // namespace orbclient
