#pragma once

#include <QtGlobal>

#include <limits>
#include <vector>

namespace simulator
{

class EventQueue;

/// Something that has to be done at a time of its own. It is in at most one queue, and leaves it before it is destroyed
/// or moved.
class QueuedEvent
{
public:
    static constexpr double Never = std::numeric_limits<double>::infinity();

    virtual ~QueuedEvent() = default;

    /// s on the plant's clock; Never while it is in no queue.
    double dueTime() const { return due; }

protected:
    QueuedEvent() = default;
    QueuedEvent(const QueuedEvent &) = default;
    QueuedEvent &operator=(const QueuedEvent &) = default;

    /// Its time has come. It is in no queue any more, and may go into one again. It may change the queue as it likes.
    virtual void happen(double time) = 0;

private:
    friend class EventQueue;
    static constexpr quint32 NoPlace = std::numeric_limits<quint32>::max();

    double due = Never;
    quint32 rank = NoPlace;
    quint32 place = NoPlace;
};

/// What is going to happen in a plant, by its time and then by its rank, so that it happens in the same order however
/// large the steps are in which somebody looks. Empty in a plant in which nothing moves. Not locked.
class EventQueue
{
public:
    EventQueue() = default;
    EventQueue(const EventQueue &) = delete;
    EventQueue &operator=(const EventQueue &) = delete;

    /// Of events at the same time, the one that was ranked first happens first. One that never was goes last.
    void rank(QueuedEvent &event) { event.rank = nextRank++; }

    /// Puts it in, moves it, or with Never takes it out. A time that has passed is now.
    void setDue(QueuedEvent &event, double time);

    /// Carries out what is due up to `now`, each at its own time. A time before that of an earlier call does nothing.
    /// Not called by an event.
    void runUntil(double now);

    bool isEmpty() const { return heap.empty(); }
    std::size_t size() const { return heap.size(); }

private:
    static bool isBefore(const QueuedEvent &a, const QueuedEvent &b)
    {
        return a.due < b.due || (a.due == b.due && a.rank < b.rank);
    }
    void put(QueuedEvent &event, quint32 place);
    void moveUp(QueuedEvent &event);
    void moveDown(QueuedEvent &event);
    void remove(QueuedEvent &event);

    std::vector<QueuedEvent *> heap; // the earliest first; not owned
    quint32 nextRank = 0;
    double time = 0;
};

} // namespace simulator
