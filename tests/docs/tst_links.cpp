#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

/// The pages lead to each other, and nowhere else in the tree.
class TestLinks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leadSomewhere_data();
    void leadSomewhere();
    void everyPictureIsShown();
    void everyGuideIsOnTheFirstPage();
};

namespace
{

QDir root()
{
    return QDir(QStringLiteral(PROJECT_FOLDER));
}

/// Paths of the files in this folder and below it, from the root of the tree.
QStringList filesIn(const QString &folder, const QString &pattern)
{
    QStringList files;
    QDirIterator iterator(root().filePath(folder), {pattern}, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(root().relativeFilePath(iterator.next()));
    files.sort();
    return files;
}

QStringList pages()
{
    return QStringList{QStringLiteral("README.md"), QStringLiteral("CHANGES.md")}
    + filesIn(QStringLiteral("docs"), QStringLiteral("*.md"))
        + filesIn(QStringLiteral("examples"), QStringLiteral("*.md"));
}

QString textOf(const QString &page)
{
    QFile file(root().filePath(page));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(page), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

/// What stands between the parentheses of the page's links and pictures.
QStringList targetsOf(const QString &page)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^()\\s]+)\\)"));
    QStringList targets;
    QRegularExpressionMatchIterator matches = link.globalMatch(textOf(page));
    while (matches.hasNext())
        targets.append(matches.next().captured(1));
    return targets;
}

/// The file that a link of the page leads to, from the root of the tree.
QString fileOf(const QString &page, const QString &target)
{
    const QString path = target.section(QLatin1Char('#'), 0, 0);
    return path.isEmpty() ? page : QDir::cleanPath(page + QStringLiteral("/../") + path);
}

/// The names by which links lead to the headings of a page.
QSet<QString> anchorsOf(const QString &page)
{
    static const QRegularExpression heading(QStringLiteral("^#+ (.*)$"), QRegularExpression::MultilineOption);
    static const QRegularExpression leftOut(QStringLiteral("[^\\w -]"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    QSet<QString> anchors;
    QRegularExpressionMatchIterator matches = heading.globalMatch(textOf(page));
    while (matches.hasNext()) {
        QString anchor = matches.next().captured(1).toLower();
        anchors.insert(anchor.remove(leftOut).replace(QLatin1Char(' '), QLatin1Char('-')));
    }
    return anchors;
}

} // namespace

void TestLinks::leadSomewhere_data()
{
    QTest::addColumn<QString>("page");
    const QStringList all = pages();
    for (const QString &page : all)
        QTest::newRow(qUtf8Printable(page)) << page;
}

void TestLinks::leadSomewhere()
{
    QFETCH(QString, page);
    const QStringList targets = targetsOf(page);
    for (const QString &target : targets) {
        if (target.startsWith(QLatin1String("https://")))
            continue;
        const QString file = fileOf(page, target);
        QVERIFY2(QFileInfo::exists(root().filePath(file)), qUtf8Printable(target));
        const QString anchor = target.section(QLatin1Char('#'), 1);
        QVERIFY2(anchor.isEmpty() || anchorsOf(file).contains(anchor), qUtf8Printable(target));
    }
}

void TestLinks::everyPictureIsShown()
{
    QSet<QString> shown;
    const QStringList all = pages();
    for (const QString &page : all) {
        const QStringList targets = targetsOf(page);
        for (const QString &target : targets)
            shown.insert(fileOf(page, target));
    }
    const QStringList pictures = filesIn(QStringLiteral("docs/images"), QStringLiteral("*"));
    QVERIFY(!pictures.isEmpty());
    for (const QString &picture : pictures)
        QVERIFY2(shown.contains(picture), qUtf8Printable(picture));
}

void TestLinks::everyGuideIsOnTheFirstPage()
{
    const QStringList targets = targetsOf(QStringLiteral("README.md"));
    const QStringList guides = filesIn(QStringLiteral("docs"), QStringLiteral("*.md"));
    for (const QString &guide : guides) {
        const bool isPartOfAReference =
            guide.count(QLatin1Char('/')) > 1 && !guide.endsWith(QLatin1String("/README.md"));
        QVERIFY2(isPartOfAReference || targets.contains(guide), qUtf8Printable(guide));
    }
}

QTEST_GUILESS_MAIN(TestLinks)
#include "tst_links.moc"
