#pragma once

#include <QString>
#include <QVector>

namespace rehearsal
{

/// The axis of a picture: from where to where, and where its ticks are. Plain data.
struct Axis
{
    double least = 0;
    double most = 1;
    double step = 1; ///< between ticks, which are at its multiples

    /// Takes the values in, ends at ticks on both sides when `isRounded`, and has about `ticks` of them.
    static Axis of(double least, double most, int ticks, bool isRounded);

    QVector<double> ticks() const;
    /// 0 at the least, 1 at the most.
    double share(double value) const { return (value - least) / (most - least); }
    /// A tick's text, of a value that is divided by `unit` first.
    QString text(double tick, double unit) const;
};

} // namespace rehearsal
