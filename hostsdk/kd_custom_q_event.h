#pragma once

#include "hostclient/host_export.h"

#include <QEvent>

/// Posted to a widget, so that work that came up on another thread is done on the widget's own.
class HOST_EXPORT KdCustomQEvent : public QEvent
{
public:
    KdCustomQEvent(QEvent::Type type, int subCode);
    ~KdCustomQEvent() override;

    /// What the event is about, among events of one type.
    int getSubCode() const;

private:
    const int code;
};
