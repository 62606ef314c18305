#include "orbclient/python_reference.h"
#include "orbclient/python_stub.h"

#include <QDir>
#include <QSaveFile>
#include <QTextStream>

// Writes what is made from the module's tables:
//   generate_reference stub DIRECTORY    orbClient.pyi and py.typed
//   generate_reference pages DIRECTORY   the pages of the reference
// The directory must exist. Returns 0, 1 when a file could not be written, 2 when it is called otherwise.

namespace
{

bool write(const QDir &directory, const QString &fileName, const QString &text)
{
    QSaveFile file(directory.filePath(fileName));
    const QByteArray bytes = text.toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    QTextStream(stderr) << file.fileName() << ": " << file.errorString() << '\n';
    return false;
}

bool writeStub(const QDir &directory)
{
    return write(directory, QStringLiteral("orbClient.pyi"), orbclient::pythonStub())
        && write(directory, QStringLiteral("py.typed"), QString());
}

bool writePages(const QDir &directory)
{
    const QVector<orbclient::ReferencePage> pages = orbclient::pythonReference();
    for (const orbclient::ReferencePage &page : pages) {
        if (!write(directory, page.fileName, page.text))
            return false;
    }
    return true;
}

} // namespace

int main(int argumentCount, char *arguments[])
{
    const QString what = argumentCount == 3 ? QString::fromLocal8Bit(arguments[1]) : QString();
    const QDir directory(QString::fromLocal8Bit(argumentCount == 3 ? arguments[2] : ""));
    if (what == QLatin1String("stub"))
        return writeStub(directory) ? 0 : 1;
    if (what == QLatin1String("pages"))
        return writePages(directory) ? 0 : 1;
    QTextStream(stderr) << "Usage: generate_reference stub|pages DIRECTORY\n";
    return 2;
}
