#include "tests/docs/guide_example.h"

#include <QRegularExpression>

namespace
{

const QChar Anything(0x2026); // …

struct Block
{
    int line = 0;
    QString language;
    QStringList lines;
};

QVector<Block> fencedBlocks(const QString &page, QString &error)
{
    QVector<Block> blocks;
    const QStringList lines = page.split(QLatin1Char('\n'));
    bool isInside = false;
    for (int i = 0; i < lines.size(); ++i) {
        const QString &line = lines.at(i);
        if (!line.startsWith(QLatin1String("```"))) {
            if (isInside)
                blocks.last().lines << line;
            else if (line.startsWith(QLatin1String("    ")) && i > 0 && lines.at(i - 1).isEmpty())
                error = QStringLiteral("line %1: nobody executes a block without a language").arg(i + 1);
            continue;
        }
        if (!isInside)
            blocks.append({i + 1, line.mid(3), {}});
        isInside = !isInside;
    }
    if (isInside)
        error = QStringLiteral("the block of line %1 does not end").arg(blocks.constLast().line);
    return blocks;
}

/// Executed by run_page.sh, or held against something else, or for machines that are not here.
bool isLeftToOthers(const QString &language, ShellBlocks shellBlocks)
{
    if (language == QLatin1String("sh") || language == QLatin1String("output"))
        return shellBlocks == ShellBlocks::Executed;
    static const QStringList languages{QStringLiteral("json"), QStringLiteral("console"),
                                       QStringLiteral("text"), QStringLiteral("bat")};
    return languages.contains(language);
}

bool lineMatches(const QString &line, const QString &expected)
{
    QStringList parts = expected.split(Anything);
    for (QString &part : parts)
        part = QRegularExpression::escape(part);
    const QString pattern = QRegularExpression::anchoredPattern(parts.join(QLatin1String(".*")));
    return QRegularExpression(pattern).match(line).hasMatch();
}

bool matchesFrom(const QStringList &lines, int line, const QStringList &expected, int at)
{
    if (at == expected.size())
        return line == lines.size();
    if (expected.at(at) == Anything) {
        for (int next = line; next <= lines.size(); ++next) {
            if (matchesFrom(lines, next, expected, at + 1))
                return true;
        }
        return false;
    }
    return line < lines.size() && lineMatches(lines.at(line), expected.at(at))
        && matchesFrom(lines, line + 1, expected, at + 1);
}

} // namespace

QVector<GuideExample> readGuide(const QString &page, ShellBlocks shellBlocks, QString &error)
{
    error.clear();
    QVector<GuideExample> examples;
    bool wantsTranscript = false;
    const QVector<Block> blocks = fencedBlocks(page, error);
    for (const Block &block : blocks) {
        const QString text = block.lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
        const bool isTranscript = block.language == QLatin1String("transcript");
        if (isTranscript != wantsTranscript) {
            error = QStringLiteral("line %1: a file and its transcript go together").arg(block.line);
            return examples;
        }
        if (isTranscript)
            examples.last().transcript = block.lines;
        else if (block.language == QLatin1String("commands"))
            examples.append({block.line, GuideExample::CommandFile, text, {}});
        else if (block.language == QLatin1String("python"))
            examples.append({block.line, GuideExample::PythonFile, text, {}});
        else if (block.language == QLatin1String("terminal"))
            examples.append({block.line, GuideExample::CommandSession, {}, block.lines});
        else if (block.language == QLatin1String("python-terminal"))
            examples.append({block.line, GuideExample::PythonSession, {}, block.lines});
        else if (isLeftToOthers(block.language, shellBlocks))
            continue;
        else {
            error =
                QStringLiteral("line %1: nobody executes a block \"%2\"").arg(block.line).arg(block.language);
            return examples;
        }
        wantsTranscript = !isTranscript && !examples.constLast().text.isEmpty();
    }
    if (wantsTranscript)
        error = QStringLiteral("line %1: a file without a transcript").arg(examples.constLast().line);
    return examples;
}

bool matches(const QStringList &lines, const QStringList &expected)
{
    return matchesFrom(lines, 0, expected, 0);
}
