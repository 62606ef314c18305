#include "hostsdk/kd_custom_q_event.h"

KdCustomQEvent::KdCustomQEvent(QEvent::Type type, int subCode) : QEvent(type), code(subCode) { }

KdCustomQEvent::~KdCustomQEvent() = default;

int KdCustomQEvent::getSubCode() const
{
    return code;
}
