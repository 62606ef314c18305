#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QStringList>

#include <array>

namespace command_terminal
{

/// How wide texts are in a font without kerning. Measuring a text means shaping it, some microseconds each; the
/// characters' own advances tell at once that most of a long list cannot be the widest.
class TextWidth
{
public:
    explicit TextWidth(const QFont &font);

    /// Width of the widest text's bounding rectangle, in pixels; 0 for an empty list.
    int widest(const QStringList &texts) const;

    /// At least the width of the text's bounding rectangle, in pixels; -1 when only measuring tells.
    int upperBound(const QString &text) const;

    /// The width of the text's bounding rectangle, in pixels.
    int measure(const QString &text) const;

private:
    QFontMetrics metrics;
    std::array<qreal, 128> advances = {}; ///< of the printable characters of ASCII, 0 for the others
    std::array<qreal, 128> overhangs = {}; ///< how far each of them reaches out behind its advance
};

} // namespace command_terminal
