#pragma once

#include <QVector>

namespace rehearsal
{

/// Where labels in a column go that would lie on one another: in their order, at least `distance` apart, as near to
/// their own places as that allows and between 0 and 1. What is too many for that is spread over the whole.
/// `places` ascend; everything is a share of the column's height.
QVector<double> labelPlaces(QVector<double> places, double distance);

} // namespace rehearsal
