#include "command_terminal/console_text.h"

namespace command_terminal
{

namespace
{

bool isTrailingSpace(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QLatin1Char(' ')
        || c == QLatin1Char('\t');
}

bool isWordCharacter(QChar c)
{
    return c.isLetter() || c.isDigit() || c == QLatin1Char('.') || c == QLatin1Char('_');
}

} // namespace

QString handedOverLine(QString input)
{
    // The line feed is Return's own; without this an empty line would be handed over as a line feed.
    if (input.endsWith(QLatin1Char('\n')))
        input.chop(1);
    int length = input.size();
    while (length > 1 && isTrailingSpace(input.at(length - 1))) // stops at the first character: this is meant
        --length;
    input.truncate(length);
    return input;
}

int wordStart(const QString &input)
{
    for (int i = input.size() - 1; i > 0; --i) { // stops at the second character: this is meant
        if (!isWordCharacter(input.at(i)))
            return i + 1;
    }
    return 0;
}

} // namespace command_terminal
