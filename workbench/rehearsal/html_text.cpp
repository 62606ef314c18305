#include "workbench/rehearsal/html_text.h"

namespace rehearsal
{

QString html(const QString &text)
{
    QString shown = text;
    for (int i = 0; i < shown.size(); ++i) {
        const QChar character = shown.at(i);
        const bool isPair =
            character.isHighSurrogate() && i + 1 < shown.size() && shown.at(i + 1).isLowSurrogate();
        const bool isSpace = character == QLatin1Char('\n') || character == QLatin1Char('\t');
        const bool isControl = character.category() == QChar::Other_Control && !isSpace;
        // Marks of direction would turn the rest of a line round.
        const bool isDirection = character.unicode() >= 0x202a && character.unicode() <= 0x202e;
        if (isPair)
            ++i;
        else if (isControl || isDirection || character.isSurrogate())
            shown[i] = QChar(QChar::ReplacementCharacter);
    }
    return shown.toHtmlEscaped().replace(QLatin1Char('\''), QLatin1String("&#39;"));
}

} // namespace rehearsal
