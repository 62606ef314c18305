#include "command_terminal/text_width.h"

#include <QtMath>

#include <algorithm>
#include <vector>

namespace command_terminal
{

TextWidth::TextWidth(const QFont &font) : metrics(font)
{
    if (font.kerning())
        return; // pairs of characters may then be wider than the two are alone
    const QFontMetricsF exact(font);
    for (char16_t c = 0x20; c < 0x7f; ++c) {
        advances.at(c) = exact.horizontalAdvance(QChar(c));
        overhangs.at(c) = std::max(0.0, -exact.rightBearing(QChar(c)));
    }
}

int TextWidth::measure(const QString &text) const
{
    return metrics.boundingRect(0, 0, 1000, 1000, Qt::AlignLeft | Qt::AlignTop, text).width();
}

int TextWidth::upperBound(const QString &text) const
{
    qreal sum = 0;
    QChar before;
    for (const QChar c : text) {
        const bool printable = c.unicode() < advances.size() && advances.at(c.unicode()) > 0;
        const bool mayBeLigature = before == QLatin1Char('f') && c.isLetter(); // one glyph of its own width
        if (!printable || mayBeLigature)
            return -1;
        sum += advances.at(c.unicode());
        before = c;
    }
    if (!text.isEmpty())
        sum += overhangs.at(text.back().unicode());
    return qCeil(sum);
}

int TextWidth::widest(const QStringList &texts) const
{
    if (texts.isEmpty())
        return 0;
    std::vector<int> bounds;
    bounds.reserve(static_cast<std::size_t>(texts.size()));
    for (const QString &text : texts)
        bounds.push_back(upperBound(text));
    // The one that seems widest first: it rules out most of the others.
    const auto seemsWidest = std::max_element(bounds.cbegin(), bounds.cend());
    int result = measure(texts.at(static_cast<int>(seemsWidest - bounds.cbegin())));
    for (int i = 0; i < texts.size(); ++i) {
        const int bound = bounds.at(static_cast<std::size_t>(i));
        if (bound < 0 || bound > result)
            result = std::max(result, measure(texts.at(i)));
    }
    return result;
}

} // namespace command_terminal
