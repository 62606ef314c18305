#pragma once

#include <QString>

#include <qwt_scale_draw.h>

namespace workbench
{

/// Labels an axis of currents, which is in A, in the unit that suits it: A, mA, µA or nA.
class CurrentScaleDraw : public QwtScaleDraw
{
public:
    /// Chooses the unit for an axis that ends there (A). True when it is another one than before.
    bool adaptTo(double amperes);

    const QString &unit() const { return unitText; }

    QwtText label(double value) const override;

private:
    double factor = 1;
    QString unitText = QStringLiteral("A");
};

} // namespace workbench
