#include "python_terminal/python_runtime.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace python_terminal
{

namespace
{

void logMissing(const QString &path)
{
    qDebug().noquote() << QStringLiteral("the directory \"%1\" does not exist.").arg(path);
}

bool hasModule(const QString &libraryPath, const QString &name)
{
    const QString path = libraryPath + QLatin1Char('/') + name;
    return QFileInfo::exists(path + QLatin1String(".py")) || QFileInfo::exists(path + QLatin1String(".pyc"));
}

/// What Py_Initialize imports, and aborts or exits the process over when it cannot.
bool hasEssentialModules(const QString &libraryPath)
{
#ifdef Q_OS_WIN
    const QString pathModule = QStringLiteral("ntpath");
#else
    const QString pathModule = QStringLiteral("posixpath");
#endif
    const QStringList names = {QStringLiteral("encodings/__init__"),
                               QStringLiteral("encodings/utf_8"),
                               QStringLiteral("encodings/latin_1"),
                               QStringLiteral("encodings/aliases"),
                               QStringLiteral("codecs"),
                               QStringLiteral("io"),
                               QStringLiteral("abc"),
                               QStringLiteral("site"),
                               QStringLiteral("os"),
                               QStringLiteral("stat"),
                               pathModule,
                               QStringLiteral("genericpath"),
                               QStringLiteral("_collections_abc"),
                               QStringLiteral("_sitebuiltins")};
    const auto isThere = [&](const QString &name) { return hasModule(libraryPath, name); };
    // The encoding of its streams comes from the one, or is the other when the one is missing.
    const bool hasStreamEncoding =
        isThere(QStringLiteral("_bootlocale")) || isThere(QStringLiteral("encodings/ascii"));
    return hasStreamEncoding && std::all_of(names.cbegin(), names.cend(), isThere);
}

} // namespace

PythonRuntime PythonRuntime::beside(const QString &applicationFile)
{
    const QString directory = QFileInfo(applicationFile).absolutePath();
    PythonRuntime runtime;
    runtime.home = directory + QStringLiteral("/python-3.7.1");
    const bool hasHome = QFileInfo::exists(runtime.home);
    if (!hasHome)
        logMissing(runtime.home);
    // A library right beside the application will do as well.
    if (!hasHome && QFileInfo::exists(directory + QStringLiteral("/lib")))
        runtime.home = directory;
    // On a case-sensitive file system these are two names: "lib" is looked for, "Lib" is searched.
    const QString lookedFor = runtime.home + QStringLiteral("/lib");
    runtime.libraryPath = runtime.home + QStringLiteral("/Lib");
    const bool hasLibrary = QFileInfo::exists(lookedFor);
    if (!hasLibrary)
        logMissing(lookedFor);
    const QFileInfo interpreter(runtime.home + QStringLiteral("/bin/python3.7"));
    if (interpreter.isExecutable())
        runtime.interpreter = interpreter.absoluteFilePath();
    runtime.wanted = hasHome || hasLibrary; // either one is enough, which is meant
    runtime.usable = runtime.wanted && hasEssentialModules(runtime.libraryPath);
    if (runtime.wanted && !runtime.usable)
        qDebug().noquote() << QStringLiteral(
                                  "Python cannot start: \"%1\" lacks modules of the standard library.")
                                  .arg(runtime.libraryPath);
    return runtime;
}

} // namespace python_terminal
