#include "workbench/simulator/plant_file_places.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace simulator
{

/// Walks over a document once, value by value. What the document is made of has been checked before; where it is not
/// what was expected, the walk ends.
class PlantFilePlaces::Scanner
{
public:
    Scanner(const QByteArray &document, PlantFilePlaces &found) : text(document), places(found) { }

    void scan()
    {
        constexpr char ByteOrderMark[] = "\xEF\xBB\xBF";
        if (text.startsWith(ByteOrderMark))
            at = static_cast<int>(sizeof(ByteOrderMark)) - 1;
        value(QString());
    }

private:
    bool isAtEnd() const { return at >= text.size(); }
    char current() const { return isAtEnd() ? '\0' : text.at(at); }

    // One byte on; the bytes after the first of a character count for nothing.
    void step()
    {
        if (text.at(at) == '\n') {
            ++place.line;
            place.column = 0;
        }
        ++at;
        const bool isInsideCharacter =
            !isAtEnd() && (static_cast<unsigned char>(text.at(at)) & 0xC0U) == 0x80U;
        if (!isInsideCharacter)
            ++place.column;
    }

    void skipSpace()
    {
        while (!isAtEnd()
               && (current() == ' ' || current() == '\t' || current() == '\r' || current() == '\n'))
            step();
    }

    bool take(char expected)
    {
        skipSpace();
        if (current() != expected)
            return false;
        step();
        return true;
    }

    // The text between two quotation marks, with its escapes resolved.
    QString quotedText()
    {
        const int start = at;
        step();
        bool hasEscapes = false;
        while (!isAtEnd() && current() != '"') {
            if (current() == '\\') {
                hasEscapes = true;
                step();
            }
            if (!isAtEnd())
                step();
        }
        if (!isAtEnd())
            step();
        const QByteArray token = text.mid(start, at - start);
        if (hasEscapes)
            return QJsonDocument::fromJson('[' + token + ']').array().at(0).toString();
        return QString::fromUtf8(token.mid(1, token.size() - 2));
    }

    void value(const QString &path)
    {
        skipSpace();
        places.values.insert(path, place);
        if (current() == '{')
            members(path);
        else if (current() == '[')
            elements(path);
        else if (current() == '"')
            quotedText();
        else
            word();
    }

    void word()
    {
        const QByteArray ends(",]} \t\r\n");
        while (!isAtEnd() && !ends.contains(current()))
            step();
    }

    void members(const QString &path)
    {
        step();
        if (take('}'))
            return;
        do {
            skipSpace();
            if (current() != '"')
                return;
            const TextPlace namePlace = place;
            const QString member = memberPath(path, quotedText());
            if (!places.names.contains(member)) {
                places.names.insert(member, namePlace);
            } else if (places.repeated.isEmpty()) {
                places.repeated = member;
                places.repeatedPlace = namePlace;
            }
            if (!take(':'))
                return;
            value(member);
        } while (take(','));
        take('}');
    }

    void elements(const QString &path)
    {
        step();
        if (take(']'))
            return;
        int index = 0;
        do
            value(elementPath(path, index++));
        while (take(','));
        take(']');
    }

    const QByteArray &text;
    PlantFilePlaces &places;
    int at = 0;
    TextPlace place;
};

PlantFilePlaces::PlantFilePlaces(const QByteArray &text)
{
    Scanner(text, *this).scan();
}

QString PlantFilePlaces::memberPath(const QString &objectPath, QString name)
{
    name.replace(QLatin1Char('~'), QLatin1String("~0")).replace(QLatin1Char('/'), QLatin1String("~1"));
    return objectPath + QLatin1Char('/') + name;
}

QString PlantFilePlaces::elementPath(const QString &listPath, int index)
{
    return QStringLiteral("%1/%2").arg(listPath).arg(index);
}

TextPlace PlantFilePlaces::placeOf(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    TextPlace place;
    place.line += before.count('\n');
    place.column += QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size();
    return place;
}

} // namespace simulator
