#pragma once

// How the sources of the simulated service get at the plant. For them alone.

#include "workbench/simulator/simulated_service.h"

#include <utility>
#include <vector>

namespace simulator
{

/// Why nothing can be done with a connection; Success when it can.
inline TarnResult usability(const Connection *connection)
{
    if (connection == nullptr)
        return TarnResult::NoData;
    return connection->isUsable() ? TarnResult::Success : TarnResult::NotConnected;
}

/// The plant, locked and come to the clock's time. Whatever happened until then is on its way to the listener when the
/// visit ends.
class SimulatedService::Visit
{
public:
    explicit Visit(const SimulatedService &visited)
        : service(visited), lock(visited.plantMutex), now(visited.clock->now())
    {
        service.transport.comeTo(now);
    }
    ~Visit()
    {
        std::vector<AnswerNotice> notices = service.transport.takeNotices();
        if (notices.empty())
            return;
        service.answers.post(std::chrono::milliseconds(0), [&told = service, notices = std::move(notices)] {
            for (const AnswerNotice &notice : notices)
                told.tell(notice);
        });
    }
    Visit(const Visit &) = delete;
    Visit &operator=(const Visit &) = delete;

private:
    const SimulatedService &service;
    const Guard lock;

public:
    const double now; ///< s on the plant's clock
};

template <class Name, class Function>
TarnResult SimulatedService::onConnection(const Name &nameOrId, Function function) const
{
    const Visit visit(*this);
    Connection *const connection = connections.find(nameOrId);
    const TarnResult result = usability(connection);
    return result == TarnResult::Success ? function(*connection, visit.now) : result;
}

} // namespace simulator
