#include "workbench/simulator/refusal_text.h"

namespace simulator
{

QString quoted(const QString &text)
{
    constexpr int LongestText = 60;
    QString shown = text.left(LongestText);
    for (QChar &character : shown) {
        if (!character.isPrint() && !character.isSurrogate())
            character = QChar(QChar::ReplacementCharacter);
    }
    // Through UTF-8 and back, which replaces what is half a character.
    shown = QString::fromUtf8(shown.toUtf8());
    if (text.size() > LongestText)
        shown += QStringLiteral("...");
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

} // namespace simulator
