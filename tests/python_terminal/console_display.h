#pragma once

#include <QColor>
#include <QPlainTextEdit>
#include <QStringList>
#include <QTextBlock>

#include <algorithm>
#include <utility>

/// What a console shows, as texts that a test can compare: lines, and the colours in them.
class ConsoleDisplay
{
public:
    /// The display line by line, each stretch of one colour as "colour:text". An empty line is an empty text.
    static QStringList linesOf(const QPlainTextEdit &console)
    {
        QStringList lines;
        for (QTextBlock block = console.document()->begin(); block.isValid(); block = block.next())
            lines.append(coloured(block));
        return lines;
    }

    /// What differs between two displays, the formats of every character and of every line included; an empty text when
    /// nothing does.
    static QString difference(const QPlainTextEdit &one, const QPlainTextEdit &other)
    {
        const QTextDocument &first = *one.document();
        const QTextDocument &second = *other.document();
        const QString text = first.toRawText();
        const QString otherText = second.toRawText();
        const auto differing =
            std::mismatch(text.cbegin(), text.cend(), otherText.cbegin(), otherText.cend());
        if (differing.first != text.cend() || differing.second != otherText.cend())
            return QStringLiteral("text at %1").arg(differing.first - text.cbegin());
        QTextCursor here(one.document());
        QTextCursor there(other.document());
        for (int position = 0; position < first.characterCount(); ++position) {
            here.setPosition(position);
            there.setPosition(position);
            if (here.charFormat() != there.charFormat() || here.blockFormat() != there.blockFormat()
                || here.blockCharFormat() != there.blockCharFormat())
                return QStringLiteral("format at %1").arg(position);
        }
        if (one.textCursor().position() != other.textCursor().position())
            return QStringLiteral("cursor");
        return QString();
    }

private:
    static QString coloured(const QTextBlock &block)
    {
        QString line;
        QString last;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QString colour = nameOf(it.fragment().charFormat().foreground().color());
            if (colour != last)
                line += (last.isEmpty() ? QString() : QStringLiteral("|")) + colour + QLatin1Char(':');
            line += it.fragment().text();
            last = colour;
        }
        return line;
    }

    static QString nameOf(const QColor &colour)
    {
        for (const auto &[known, name] :
             {std::pair(Qt::white, "white"), std::pair(Qt::red, "red"), std::pair(Qt::green, "green")}) {
            if (colour == QColor(known))
                return QString::fromLatin1(name);
        }
        return colour.name();
    }
};
