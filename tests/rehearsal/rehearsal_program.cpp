#include "tests/rehearsal/rehearsal_program.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>

namespace
{

constexpr int LongestRun = 120000; // ms; how long a file takes is its own business

} // namespace

QString RehearsalProgram::write(const QString &name, const QByteArray &content) const
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

RehearsalProgram::Outcome RehearsalProgram::run(const QStringList &arguments)
{
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QStringLiteral(WORKBENCH), QStringList(QStringLiteral("rehearse")) + arguments);
    Outcome outcome;
    if (!process.waitForFinished(LongestRun) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
    } else {
        outcome.exitCode = process.exitCode();
    }
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.err = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

QVector<QJsonObject> RehearsalProgram::objects(const Outcome &outcome)
{
    QVector<QJsonObject> result;
    const QStringList lines = outcome.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError || !document.isObject())
            qFatal("not an object: %s", qPrintable(line));
        result.append(document.object());
    }
    return result;
}

QVector<QJsonObject> RehearsalProgram::objects(const Outcome &outcome, const char *type)
{
    QVector<QJsonObject> result;
    const QVector<QJsonObject> all = objects(outcome);
    for (const QJsonObject &object : all) {
        if (object.value(QLatin1String("type")).toString() == QLatin1String(type))
            result.append(object);
    }
    return result;
}

QJsonObject RehearsalProgram::readReport(const QString &reportDir)
{
    QFile file(QDir(reportDir).filePath(QStringLiteral("report.json")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}
