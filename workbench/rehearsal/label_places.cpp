#include "workbench/rehearsal/label_places.h"

#include <algorithm>
#include <vector>

namespace rehearsal
{

namespace
{

/// Labels that touch one another.
struct Group
{
    double sum = 0; ///< of their own places, each without what those before it in the column take
    int count = 0;

    double place() const { return sum / count; }
};

} // namespace

QVector<double> labelPlaces(QVector<double> places, double distance)
{
    const int count = places.size();
    if (count > 1)
        distance = std::min(distance, 1.0 / (count - 1));
    std::vector<Group> groups;
    for (int i = 0; i < count; ++i) {
        groups.push_back({places.at(i) - i * distance, 1});
        while (groups.size() > 1 && groups.back().place() < groups.end()[-2].place()) {
            const Group last = groups.back();
            groups.pop_back();
            groups.back().sum += last.sum;
            groups.back().count += last.count;
        }
    }
    int index = 0;
    const double highest = 1 - (count - 1) * distance;
    for (const Group &group : groups) {
        for (int i = 0; i < group.count; ++i, ++index)
            places[index] = std::clamp(group.place(), 0.0, highest) + index * distance;
    }
    return places;
}

} // namespace rehearsal
