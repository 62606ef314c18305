#pragma once

#include "hostclient/host_export.h"
#include "hostsdk/kd_icon_type.h"

#include <QIconEngine>

namespace hostkit
{

/// Draws the host's icons as lines in the application palette's ButtonText colour, in its disabled group's when the
/// icon is disabled. Lines lie on whole device pixels, so that they are sharp at every size and device pixel ratio.
/// GUI thread only.
class HOST_EXPORT VectorIconEngine : public QIconEngine
{
public:
    /// `type` is one that knows() answers true to; any other draws nothing.
    explicit VectorIconEngine(KD::IconType type);
    ~VectorIconEngine() override;

    /// Whether there is a drawing of that number.
    static bool knows(KD::IconType type);

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine *clone() const override;
    QString key() const override;

private:
    const KD::IconType type;
};

} // namespace hostkit
