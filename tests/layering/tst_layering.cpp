#include "tests/layering/file_rules.h"
#include "tests/layering/include_rules.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

/// The rules, held against every source in the tree.
class TestLayering : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theTreeWasFound_data();
    void theTreeWasFound();
    void everyFileKeepsTheRules_data();
    void everyFileKeepsTheRules();

private:
    const QDir root{QStringLiteral(TERMINAL_SOURCE_DIR)};
    QStringList files;
};

void TestLayering::initTestCase()
{
    // Builds and hidden folders hold what tools made; everything else is ours, known to the table or not.
    static const QRegularExpression notOurs(QStringLiteral("^(build|\\.[^/]*)/"));
    QDirIterator found(root.path(),
                       {QStringLiteral("*.h"), QStringLiteral("*.cpp"), QStringLiteral("*.cc"),
                        QStringLiteral("*.hpp"), QStringLiteral("*.cxx")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QString path = root.relativeFilePath(found.next());
        if (!notOurs.match(path).hasMatch())
            files.append(path);
    }
    files.sort();
}

void TestLayering::theTreeWasFound_data()
{
    QTest::addColumn<QString>("folder");
    for (const char *folder :
         {"hostclient/", "hostsdk/", "orbclient/", "command_terminal/", "python_terminal/", "plugin/",
          "workbench/hostkit/", "workbench/simulator/", "workbench/rehearsal/", "workbench/app/", "tests/"})
        QTest::newRow(folder) << QString::fromLatin1(folder);
}

void TestLayering::theTreeWasFound()
{
    QFETCH(QString, folder);
    QVERIFY(!files.filter(QRegularExpression(QLatin1Char('^') + folder)).isEmpty());
}

void TestLayering::everyFileKeepsTheRules_data()
{
    QTest::addColumn<QString>("path");
    for (const QString &path : std::as_const(files))
        QTest::newRow(qPrintable(path)) << path;
}

void TestLayering::everyFileKeepsTheRules()
{
    QFETCH(QString, path);
    QFile file(root.filePath(path));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
    const QString text = QString::fromUtf8(file.readAll());
    QString header = path;
    header.replace(QRegularExpression(QStringLiteral("\\.cpp$")), QStringLiteral(".h"));
    const bool hasOwnHeader = header != path && root.exists(header);
    const QStringList violations =
        layering::includeViolations(path, text) + layering::fileViolations(path, text, hasOwnHeader);
    QVERIFY2(violations.isEmpty(), qPrintable(violations.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(TestLayering)
#include "tst_layering.moc"
