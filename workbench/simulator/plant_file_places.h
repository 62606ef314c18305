#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace simulator
{

/// A place in a text. Both count from 1; a column is a character.
struct TextPlace
{
    int line = 1;
    int column = 1;
};

/// Where the values of a JSON document stand, which Qt's own reader does not tell. A value is named by its path: the
/// names of the members and the indices of the elements that lead to it, each after a "/": "/controllers/0/name". What
/// is a "/" or a "~" in a name is "~1" or "~0" in a path.
class PlantFilePlaces
{
public:
    /// `text` is a document that QJsonDocument takes.
    explicit PlantFilePlaces(const QByteArray &text);

    /// The first place when there is no such value.
    TextPlace value(const QString &path) const { return values.value(path); }
    /// Of the member's name.
    TextPlace name(const QString &path) const { return names.value(path); }

    /// The path of a member that stands twice in its object; empty when none does. The second one's name is at
    /// repeatedName(); name() is that of the first.
    const QString &repeatedPath() const { return repeated; }
    TextPlace repeatedName() const { return repeatedPlace; }

    static QString memberPath(const QString &objectPath, QString name);
    static QString elementPath(const QString &listPath, int index);

    /// The place of a byte.
    static TextPlace placeOf(const QByteArray &text, int offset);

private:
    class Scanner;

    QHash<QString, TextPlace> values;
    QHash<QString, TextPlace> names;
    QString repeated;
    TextPlace repeatedPlace;
};

} // namespace simulator
