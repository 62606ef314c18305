#pragma once

#include "workbench/simulator/plant_file_places.h"

#include <QString>

namespace simulator
{

/// The first thing that is wrong with a plant file. Reading goes on after it, with the values that hold when a field is
/// left out, so that the readers need no way out of their own.
class PlantFileErrors
{
public:
    PlantFileErrors(QString shownFileName, PlantFilePlaces filePlaces);

    bool isEmpty() const { return first.isEmpty(); }
    /// "FILE:LINE:COLUMN: what is wrong", empty when nothing is.
    const QString &text() const { return first; }

    /// At the value of that path.
    void add(const QString &path, const QString &text);
    /// At the name of the member of that path.
    void addAtName(const QString &path, const QString &text);
    void addAt(TextPlace place, const QString &text);

private:
    QString fileName;
    PlantFilePlaces places;
    QString first;
};

} // namespace simulator
