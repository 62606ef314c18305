#include "workbench/simulator/plant_file.h"

#include "workbench/simulator/plant_file_errors.h"
#include "workbench/simulator/plant_file_faults.h"
#include "workbench/simulator/plant_file_object.h"
#include "workbench/simulator/plant_file_reader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace simulator
{

namespace
{

bool readText(const QString &fileName, QByteArray &text, QString &error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    text = file.read(PlantFile::LargestFile + 1);
    if (file.error() != QFileDevice::NoError) {
        error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    if (text.size() > PlantFile::LargestFile) {
        error = QStringLiteral("%1: the file is larger than %2 MB")
                    .arg(fileName, QString::number(PlantFile::LargestFile / (1024 * 1024)));
        return false;
    }
    return true;
}

/// Calls `read` with the outermost object and the errors, of which there are none yet.
template <class Reader>
bool readDocument(QByteArray text, const QString &shownFileName, PlantObjectKind kind, QString &error,
                  Reader read)
{
    constexpr char ByteOrderMark[] = "\xef\xbb\xbf"; // some editors write it
    if (text.startsWith(ByteOrderMark))
        text.remove(0, int(sizeof(ByteOrderMark)) - 1);
    QJsonParseError syntax{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &syntax);
    if (syntax.error != QJsonParseError::NoError) {
        const TextPlace place = PlantFilePlaces::placeOf(text, syntax.offset);
        error = QStringLiteral("%1:%2:%3: this is not JSON: %4")
                    .arg(shownFileName, QString::number(place.line), QString::number(place.column),
                         syntax.errorString());
        return false;
    }
    PlantFileErrors errors(shownFileName, PlantFilePlaces(text));
    const QJsonValue outermost =
        document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
    const PlantFileObject object(errors, kind, outermost, QString());
    if (errors.isEmpty())
        read(object);
    error = errors.text();
    return errors.isEmpty();
}

} // namespace

bool PlantFile::read(const QString &fileName, PlantLayout &layout, QString &error)
{
    QByteArray text;
    return readText(fileName, text, error) && parse(text, fileName, layout, error);
}

bool PlantFile::parse(const QByteArray &text, const QString &shownFileName, PlantLayout &layout,
                      QString &error)
{
    PlantLayout result;
    if (!readDocument(text, shownFileName, PlantObjectKind::Plant, error,
                      [&result](const PlantFileObject &plant) {
                          PlantFileReader(result).read(plant);
                          if (plant.errors().isEmpty())
                              readPlantFaults(plant, result);
                          if (plant.errors().isEmpty())
                              readPlantMessages(plant, result);
                      }))
        return false;
    layout = std::move(result);
    return true;
}

bool PlantFile::readFaults(const QString &fileName, PlantLayout &layout, QString &error)
{
    QByteArray text;
    PlantLayout result = layout;
    if (!readText(fileName, text, error)
        || !readDocument(text, fileName, PlantObjectKind::FaultFile, error,
                         [&result](const PlantFileObject &file) { readPlantFaults(file, result); }))
        return false;
    layout = std::move(result);
    return true;
}

} // namespace simulator
