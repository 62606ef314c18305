#include "command_terminal/refresh_limiter.h"

#include <QTimerEvent>
#include <QWidget>

namespace command_terminal
{

namespace
{

constexpr int RefreshMs = 33;

} // namespace

RefreshLimiter::RefreshLimiter(QWidget *limited) : QObject(limited), widget(limited) { }

RefreshLimiter::~RefreshLimiter() = default;

void RefreshLimiter::holdBack()
{
    if (timer.isActive())
        return;
    timer.start(RefreshMs, this);
    widget->setUpdatesEnabled(false);
}

void RefreshLimiter::release()
{
    if (!timer.isActive())
        return;
    timer.stop();
    widget->setUpdatesEnabled(true);
}

void RefreshLimiter::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    timer.stop();
    widget->setUpdatesEnabled(true);
    widget->repaint(); // at once: an update would be lost when the next change holds it back again
}

} // namespace command_terminal
