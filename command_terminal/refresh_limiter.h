#pragma once

#include <QBasicTimer>
#include <QObject>

class QWidget;

namespace command_terminal
{

/// Paints a widget and what is in it at most 30 times a second while it changes faster than anybody can read.
/// Otherwise each answered line of a command file would paint the whole tool. Costs nothing while nothing changes.
/// GUI thread only.
class RefreshLimiter : public QObject
{
    Q_OBJECT

public:
    /// `widget` owns the limiter.
    explicit RefreshLimiter(QWidget *widget);
    ~RefreshLimiter() override;

    /// Something is about to change: the next painting waits for what else changes within 33 ms.
    void holdBack();

    /// Nothing more is to be expected: what changed may be painted now.
    void release();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QWidget *widget;
    QBasicTimer timer;
};

} // namespace command_terminal
