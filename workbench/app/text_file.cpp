#include "workbench/app/text_file.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>

namespace workbench
{

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("workbench::TextFile", text);
}

bool readsAs(const QTextCodec &codec, const QByteArray &bytes, QString &text)
{
    QTextCodec::ConverterState state;
    text = codec.toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

bool isUtf8(const QByteArray &bytes)
{
    QString text;
    return readsAs(*QTextCodec::codecForName("UTF-8"), bytes, text);
}

int firstForeignLine(const QByteArray &bytes)
{
    const QList<QByteArray> lines = bytes.split('\n');
    const auto foreign = std::find_if_not(lines.begin(), lines.end(), isUtf8);
    return static_cast<int>(foreign - lines.begin()) + 1;
}

TextFile decode(const QByteArray &bytes)
{
    const QTextCodec *const codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("UTF-8"));
    QString text;
    if (readsAs(*codec, bytes, text))
        return {text, 0};
    return {QString::fromLatin1(bytes.constData(), bytes.size()), firstForeignLine(bytes)};
}

} // namespace

bool readTextFile(const QString &path, TextFile &content, QString &error)
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
    content = decode(file.readAll());
    error = file.errorString();
    return file.error() == QFileDevice::NoError;
}

} // namespace workbench
