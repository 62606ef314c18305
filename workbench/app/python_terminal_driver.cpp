#include "workbench/app/python_terminal_driver.h"

#include <QMetaObject>
#include <QPlainTextEdit>

namespace workbench
{

QString PythonTerminalDriver::missingControl() const
{
    if (!console || activity().isEmpty())
        return QStringLiteral("console");
    return TerminalDriver::missingControl();
}

bool PythonTerminalDriver::isReady() const
{
    return activity() == QLatin1String("Idle");
}

bool PythonTerminalDriver::prepare(const QString &, QString &error)
{
    // A script names its connections itself.
    if (isReady())
        return true;
    error = tr("Python is not ready; its terminal is \"%1\".").arg(activity());
    return false;
}

bool PythonTerminalDriver::isBusy() const
{
    return activity() == QLatin1String("Running") || waitsForUser();
}

bool PythonTerminalDriver::waitsForUser() const
{
    return activity() == QLatin1String("WaitingForInput");
}

QString PythonTerminalDriver::obstacle() const
{
    if (activity() == QLatin1String("Failed"))
        return tr(
            "Python did not start. It needs the folder \"python-3.7.1\" beside the program, and there is one "
            "interpreter for all of its Python terminals.");
    if (activity() == QLatin1String("Stopped"))
        return tr("The interpreter was stopped before the script was over.");
    return {};
}

QString PythonTerminalDriver::activity() const
{
    // By its name: neither the class nor the numbers are known here.
    QString name;
    QMetaObject::invokeMethod(console, "activityName", Qt::DirectConnection, Q_RETURN_ARG(QString, name));
    return name;
}

} // namespace workbench
