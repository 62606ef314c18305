#include "tests/layering/source_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace layering
{

namespace
{

// Alternatives in the order in which they must be tried; what none of them matches is code.
const QString commentPattern = QStringLiteral(R"re((?<comment>//[^\n]*|/\*.*?(?:\*/|$)))re");
const QString rawStringPattern =
    QStringLiteral(R"re((?<raw>R"(?<delimiter>[^\s()\\]{0,16})\(.*?\)\k<delimiter>"))re");
// A quote between two digits separates digits and opens no character.
const QString literalPattern =
    QStringLiteral(R"re((?<literal>"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])*'))re");

QString blanked(const QString &text)
{
    QString result = text;
    for (QChar &character : result) {
        if (character != QLatin1Char('\n'))
            character = QLatin1Char(' ');
    }
    return result;
}

QString stripped(const QString &text, bool keepLiterals)
{
    static const QRegularExpression pattern(commentPattern + QLatin1Char('|') + rawStringPattern
                                                + QLatin1Char('|') + literalPattern,
                                            QRegularExpression::DotMatchesEverythingOption);
    QString result;
    result.reserve(text.size());
    int end = 0;
    auto matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += text.mid(end, match.capturedStart() - end);
        const bool keep = keepLiterals && !match.captured(QStringLiteral("literal")).isEmpty();
        result += keep ? match.captured() : blanked(match.captured());
        end = match.capturedEnd();
    }
    return result + text.mid(end);
}

} // namespace

QString withoutComments(const QString &text)
{
    return stripped(text, true);
}

QString codeOnly(const QString &text)
{
    return stripped(text, false);
}

QVector<Include> includesOf(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral(R"re(^\s*#\s*include\s*(["<])([^">]+)[">])re"));
    const QStringList lines = withoutComments(text).split(QLatin1Char('\n'));
    QVector<Include> includes;
    for (int i = 0; i < lines.size(); ++i) {
        const QRegularExpressionMatch match = pattern.match(lines.at(i));
        if (match.hasMatch())
            includes.append({i + 1, match.captured(2), match.captured(1) == QLatin1String("\"")});
    }
    return includes;
}

} // namespace layering
