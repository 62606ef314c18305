#include "workbench/simulator/event_queue.h"

namespace simulator
{

void EventQueue::setDue(QueuedEvent &event, double dueTime)
{
    if (event.due == dueTime)
        return;
    if (dueTime == QueuedEvent::Never) {
        remove(event);
        return;
    }
    event.due = qMax(dueTime, time);
    if (event.place == QueuedEvent::NoPlace) {
        heap.push_back(nullptr);
        put(event, static_cast<quint32>(heap.size() - 1));
    }
    moveUp(event);
    moveDown(event);
}

void EventQueue::runUntil(double now)
{
    while (!heap.empty() && heap.front()->due <= now) {
        QueuedEvent &event = *heap.front();
        time = event.due;
        remove(event);
        event.happen(time);
    }
    time = qMax(time, now);
}

void EventQueue::put(QueuedEvent &event, quint32 place)
{
    heap[place] = &event;
    event.place = place;
}

void EventQueue::moveUp(QueuedEvent &event)
{
    quint32 place = event.place;
    while (place > 0) {
        const quint32 parent = (place - 1) / 2;
        if (!isBefore(event, *heap[parent]))
            break;
        put(*heap[parent], place);
        place = parent;
    }
    put(event, place);
}

void EventQueue::moveDown(QueuedEvent &event)
{
    quint32 place = event.place;
    const auto count = static_cast<quint32>(heap.size());
    for (quint32 child = 2 * place + 1; child < count; child = 2 * place + 1) {
        if (child + 1 < count && isBefore(*heap[child + 1], *heap[child]))
            ++child;
        if (!isBefore(*heap[child], event))
            break;
        put(*heap[child], place);
        place = child;
    }
    put(event, place);
}

void EventQueue::remove(QueuedEvent &event)
{
    event.due = QueuedEvent::Never;
    if (event.place == QueuedEvent::NoPlace)
        return;
    const quint32 place = event.place;
    event.place = QueuedEvent::NoPlace;
    QueuedEvent *const last = heap.back();
    heap.pop_back();
    if (last == &event)
        return;
    put(*last, place);
    moveUp(*last);
    moveDown(*last);
}

} // namespace simulator
