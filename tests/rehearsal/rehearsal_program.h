#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

/// Runs `terminal-workbench rehearse` as a user does, with files of the test's own. WORKBENCH says where it is.
class RehearsalProgram
{
public:
    struct Outcome
    {
        int exitCode = -1; ///< -1 when it did not end by itself
        QString out;
        QString err;
    };

    /// Writes a file into a folder of its own; its path.
    QString write(const QString &name, const QByteArray &content) const;
    QString path(const QString &name) const { return dir.filePath(name); }

    /// With these arguments behind "rehearse".
    static Outcome run(const QStringList &arguments);

    /// The objects that "--format json" printed.
    static QVector<QJsonObject> objects(const Outcome &outcome);
    /// Those of one type.
    static QVector<QJsonObject> objects(const Outcome &outcome, const char *type);
    /// A report of the JSON kind.
    static QJsonObject readReport(const QString &reportDir);

private:
    QTemporaryDir dir;
};
