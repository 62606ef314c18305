#include "command_terminal/terminal_font.h"

#include <QFontDatabase>
#include <QFontMetrics>

namespace command_terminal
{

QFont terminalFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Not by what the font says of itself, which is often wrong.
    const QFontMetrics metrics(font);
    if (metrics.horizontalAdvance(QLatin1Char('i')) != metrics.horizontalAdvance(QLatin1Char('W'))) {
        font.setFamily(QStringLiteral("DejaVu Sans Mono"));
        font.setStyleHint(QFont::Monospace);
    }
    return font;
}

} // namespace command_terminal
