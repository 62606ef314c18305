#include "command_terminal/terminal_font.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace command_terminal
{

QFont terminalFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (!QFontInfo(font).fixedPitch()) {
        font.setFamily(QStringLiteral("DejaVu Sans Mono"));
        font.setStyleHint(QFont::Monospace);
    }
    return font;
}

} // namespace command_terminal
