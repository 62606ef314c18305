#include "tests/python_terminal/evaluator_under_test.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>
#include <cwchar>

namespace
{

/// Writes a line to standard output as one that has never heard of the interpreter does it.
void write(const QString &kind, const QString &line)
{
    if (kind == QLatin1String("wide")) {
        std::fputws(line.toStdWString().c_str(), stdout);
        std::fputws(L"\n", stdout);
    } else if (kind == QLatin1String("narrow")) {
        std::puts(line.toUtf8().constData());
    }
}

} // namespace

// A program that starts an interpreter, for what cannot be tried in the test's own process: which runtime lies beside
// it, what its standard output was used for before, what a signal does to it.
//
//     start_program <report> <before> <after> <line>...
//
// <before> and <after> are "narrow", "wide" or "none": how it writes to standard output at these times. Each line is
// typed at the prompt. What the host had to say goes to the file <report>, as a JSON list of texts.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    constexpr int FirstLine = 4;
    if (arguments.size() < FirstLine)
        return 2;
    write(arguments.at(2), QStringLiteral("before"));
    QStringList signalTexts;
    {
        EvaluatorUnderTest evaluator;
        signalTexts = evaluator.init();
        signalTexts += evaluator.type(arguments.mid(FirstLine));
        signalTexts += evaluator.exit();
    }
    write(arguments.at(3), QStringLiteral("after"));
    QFile report(arguments.at(1));
    if (!report.open(QIODevice::WriteOnly))
        return 3;
    report.write(QJsonDocument(QJsonArray::fromStringList(signalTexts)).toJson());
    return 0;
}
