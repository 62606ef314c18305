#include "workbench/simulator/plant_file_errors.h"

#include "workbench/simulator/refusal_text.h"

#include <utility>

namespace simulator
{

PlantFileErrors::PlantFileErrors(QString shownFileName, PlantFilePlaces filePlaces)
    : fileName(std::move(shownFileName)), places(std::move(filePlaces))
{
    const QString &repeated = places.repeatedPath();
    if (repeated.isEmpty())
        return;
    QString name = repeated.section(QLatin1Char('/'), -1);
    name.replace(QLatin1String("~1"), QLatin1String("/")).replace(QLatin1String("~0"), QLatin1String("~"));
    addAt(places.repeatedName(),
          QStringLiteral("%1 stands twice in this object, first in line %2")
              .arg(quoted(name), QString::number(places.name(repeated).line)));
}

void PlantFileErrors::add(const QString &path, const QString &text)
{
    addAt(places.value(path), text);
}

void PlantFileErrors::addAtName(const QString &path, const QString &text)
{
    addAt(places.name(path), text);
}

void PlantFileErrors::addAt(TextPlace place, const QString &text)
{
    if (first.isEmpty())
        first = QStringLiteral("%1:%2:%3: %4")
                    .arg(fileName, QString::number(place.line), QString::number(place.column), text);
}

} // namespace simulator
