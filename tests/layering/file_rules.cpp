#include "tests/layering/file_rules.h"

#include "tests/layering/source_text.h"

#include <QRegularExpression>
#include <QVector>

namespace layering
{

namespace
{

struct ForbiddenWord
{
    QString folder; ///< Empty for everywhere.
    QRegularExpression word;
    QString instead;
};

QVector<ForbiddenWord> makeForbiddenWords()
{
    const auto row = [](const char *folder, const char *word, const char *instead) {
        return ForbiddenWord{QString::fromLatin1(folder), QRegularExpression(QString::fromLatin1(word)),
                             QString::fromLatin1(instead)};
    };
    return {
        row("", R"(\b(SIGNAL|SLOT)\s*\()", "connect by pointer to member"),
        row("", R"((?<!=)(?<!= )\bdelete\b)", "an owner: a parent, a value or a unique_ptr"),
        row("", R"(\bQ_FOREACH\b|\bforeach\s*\()", "a range-based for"),
        row("tests/", R"(\bQSKIP\b)", "a test that runs"),
        row("tests/", R"(\b(qWait|qSleep|msleep|usleep|sleep_for)\s*\()", "QTRY_* or QSignalSpy::wait"),
    };
}

QString wrongWords(const QString &path, const QString &line)
{
    static const QVector<ForbiddenWord> words = makeForbiddenWords();
    for (const ForbiddenWord &word : words) {
        const QRegularExpressionMatch match =
            path.startsWith(word.folder) ? word.word.match(line) : QRegularExpressionMatch();
        if (match.hasMatch())
            return QStringLiteral("\"%1\" has no place here; use %2")
                .arg(match.captured().trimmed(), word.instead);
    }
    return {};
}

bool isHeader(const QString &path)
{
    return path.endsWith(QLatin1String(".h"));
}

/// The groups in the order in which a file lists them.
enum class Group
{
    Own,
    Project,
    Qt,
    Standard
};

Group groupOf(const Include &include, const QString &ownHeader)
{
    static const QRegularExpression qt(QStringLiteral("^(Qt?[A-Z]|q[a-z]+\\.h|qwt_)"));
    if (include.quoted)
        return include.path == ownHeader ? Group::Own : Group::Project;
    return qt.match(include.path).hasMatch() ? Group::Qt : Group::Standard;
}

QStringList orderViolations(const QString &path, const QString &text, bool hasOwnHeader)
{
    QString ownHeader = path;
    ownHeader.replace(QRegularExpression(QStringLiteral("\\.cpp$")), QStringLiteral(".h"));
    const QStringList lines = text.split(QLatin1Char('\n'));
    const QVector<Include> includes = includesOf(text);
    QStringList violations;
    const Include *previous = nullptr;
    for (const Include &include : includes) {
        // What moc made stands at the end of the file and belongs to no group.
        if (include.quoted && !include.path.contains(QLatin1Char('/')))
            continue;
        const QString where = QStringLiteral("%1:%2: %3: ").arg(path).arg(include.line).arg(include.path);
        const Group group = groupOf(include, ownHeader);
        if (!previous && hasOwnHeader && !isHeader(path) && group != Group::Own)
            violations.append(where + QStringLiteral("the own header comes first"));
        if (previous) {
            const Group before = groupOf(*previous, ownHeader);
            const bool gap = lines.at(include.line - 2).trimmed().isEmpty();
            if (group < before)
                violations.append(where
                                  + QStringLiteral("the order is own header, project, Qt, standard library"));
            else if (group != before && !gap)
                violations.append(where + QStringLiteral("a blank line stands between two groups"));
        }
        previous = &include;
    }
    return violations;
}

QStringList nameViolations(const QString &path)
{
    static const QRegularExpression snakeCase(QStringLiteral(R"(^[a-z][a-z0-9]*(_[a-z0-9]+)*\.(h|cpp)$)"));
    QStringList violations;
    if (!snakeCase.match(path.section(QLatin1Char('/'), -1)).hasMatch())
        violations.append(path + QStringLiteral(": the name is the class's in snake case, .h or .cpp"));
    const bool contract =
        path.startsWith(QLatin1String("hostclient/")) || path.startsWith(QLatin1String("hostsdk/"));
    if (contract && !isHeader(path))
        violations.append(path
                          + QStringLiteral(": the contract is declarations only; the host implements it"));
    return violations;
}

} // namespace

QStringList fileViolations(const QString &path, const QString &text, bool hasOwnHeader)
{
    QStringList violations = nameViolations(path) + orderViolations(path, text, hasOwnHeader);

    const int length = text.count(QLatin1Char('\n'));
    if (length > maximumLines)
        violations.append(QStringLiteral("%1: %2 lines, at most %3").arg(path).arg(length).arg(maximumLines));

    const QString code = codeOnly(text);
    if (isHeader(path) && !code.trimmed().startsWith(QLatin1String("#pragma once")))
        violations.append(path + QStringLiteral(": a header begins with #pragma once"));

    const QStringList lines = code.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString wrong = wrongWords(path, lines.at(i));
        if (!wrong.isEmpty())
            violations.append(QStringLiteral("%1:%2: %3").arg(path).arg(i + 1).arg(wrong));
    }
    return violations;
}

} // namespace layering
