#include "workbench/app/text_file.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

namespace workbench
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("workbench::TextFile", text);
}

} // namespace

bool readTextFile(const QString &path, QString &text, QString &error)
{
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        error = tr("it is a folder");
        return false;
    }
    if (file.exists() && !QFileInfo(path).isFile()) {
        error = tr("it is not a file"); // a pipe could keep the run waiting for ever
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    text = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("UTF-8"))->toUnicode(bytes);
    error = file.errorString();
    return file.error() == QFileDevice::NoError;
}

} // namespace workbench
