#include "tests/rehearsal/browser.h"

#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace
{

constexpr int LongestStart = 120000; // ms, of a browser on a busy machine

} // namespace

void browser::show(const QString &page, int width, Shown &shown, const QStringList &arguments)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    QVERIFY2(!program.isEmpty(), "there is no chromium; tools/bootstrap installs it");
    QTemporaryDir profile;
    QProcess process;
    process.start(program,
                  QStringList{QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                              QStringLiteral("--disable-gpu"), QStringLiteral("--disable-dev-shm-usage"),
                              QStringLiteral("--no-first-run"),
                              QStringLiteral("--disable-background-networking"),
                              QStringLiteral("--enable-logging=stderr"),
                              QStringLiteral("--user-data-dir=") + profile.path(),
                              QStringLiteral("--window-size=%1,900").arg(width)}
                      + (arguments.isEmpty() ? QStringList{QStringLiteral("--dump-dom")} : arguments)
                      + QStringList{QStringLiteral("file://") + page});
    QVERIFY(process.waitForFinished(LongestStart));
    QCOMPARE(process.exitCode(), 0);
    shown.dom = QString::fromUtf8(process.readAllStandardOutput());
    const QStringList lines = QString::fromUtf8(process.readAllStandardError()).split(QLatin1Char('\n'));
    shown.messages = lines.filter(QStringLiteral("CONSOLE")).join(QLatin1Char('\n'));
}

QByteArray browser::framed(QByteArray report, const QByteArray &script, int width, int height)
{
    const QByteArray keep = R"(
const result = document.createElement('pre');
result.id = 'measured';
result.textContent = btoa(unescape(encodeURIComponent(JSON.stringify(seen))));
parent.document.body.append(result);
)";
    report.replace("<meta http-equiv=\"Content-Security-Policy\"", "<meta name=\"x\"");
    report.replace("</body>", "<script>" + script + keep + "</script></body>");
    return QStringLiteral("<!DOCTYPE html><body style=\"margin:0\"><iframe style=\"border:0\" width=\"%1\" "
                          "height=\"%2\" srcdoc=\"%3\"></iframe></body>")
        .arg(QString::number(width), QString::number(height), QString::fromUtf8(report).toHtmlEscaped())
        .toUtf8();
}

QJsonObject browser::seen(const Shown &shown)
{
    const QString coded =
        shown.dom.section(QStringLiteral("<pre id=\"measured\">"), 1).section(QLatin1Char('<'), 0, 0);
    return QJsonDocument::fromJson(QByteArray::fromBase64(coded.toLatin1())).object();
}
