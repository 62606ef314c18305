#include "workbench/app/options.h"

#include "workbench/app/translated_text.h"
#include "workbench/simulator/plant_file.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>

namespace workbench
{

namespace
{

constexpr int LatencyLimit = 60000;

/// The rules between options that the parser does not know; an empty text when they are kept.
QString complaint(const QCommandLineParser &parser)
{
    const QStringList names = parser.optionNames();
    for (const QString &name : names) {
        if (name != QLatin1String("quit-when-done") && parser.value(name).isEmpty())
            return tr("--%1 needs a value.").arg(name);
    }
    if (!parser.positionalArguments().isEmpty()) {
        return tr("Unexpected argument \"%1\". A file is given with --run-command-file or --run-python-file.")
            .arg(parser.positionalArguments().constFirst());
    }
    if (parser.isSet(QStringLiteral("controller")) && !parser.isSet(QStringLiteral("run-command-file")))
        return tr("--controller says where a command file's requests go and needs --run-command-file.");
    const QStringList files = {QStringLiteral("run-command-file"), QStringLiteral("run-python-file"),
                               QStringLiteral("editor-file")};
    const auto isSet = [&](const QString &option) { return parser.isSet(option); };
    if (std::count_if(files.begin(), files.end(), isSet) > 1)
        return tr("--run-command-file, --run-python-file and --editor-file each fill an editor; give one of "
                  "them.");
    const bool hasTask =
        parser.isSet(QStringLiteral("screenshot")) || std::any_of(files.begin(), files.end(), isSet);
    if (parser.isSet(QStringLiteral("quit-when-done")) && !hasTask)
        return tr("--quit-when-done needs something to do: --run-command-file, --run-python-file, "
                  "--editor-file or --screenshot.");
    return {};
}

/// Reads the plant that --plant and --seed ask for; what is wrong, or an empty text.
QString readPlant(const QCommandLineParser &parser, simulator::PlantLayout &plant)
{
    QString error;
    if (parser.isSet(QStringLiteral("plant"))
        && !simulator::PlantFile::read(parser.value(QStringLiteral("plant")), plant, error))
        return error;
    if (parser.isSet(QStringLiteral("seed"))) {
        const QString text = parser.value(QStringLiteral("seed"));
        bool isNumber = false;
        plant.seed = text.toUInt(&isNumber);
        if (!isNumber)
            return tr("--seed \"%1\" is not a whole number from 0 to 4294967295.").arg(text);
    }
    return {};
}

} // namespace

bool Options::hasTask() const
{
    return !file().isEmpty() || !screenshotFile.isEmpty();
}

QString Options::file() const
{
    if (!commandFile.isEmpty())
        return commandFile;
    return pythonFile.isEmpty() ? editorFile : pythonFile;
}

OptionsResult parseOptions(const QStringList &arguments, Options &options, QString &message)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Runs the terminals of the tarnControl console against a simulated high-voltage system. "
           "Nothing here reaches hardware.\n\n"
           "\"terminal-workbench rehearse --help\" tells how to rehearse files, and get a report of it."));
    const QString file = tr("file");
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, tr("Show this help."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     tr("Show the version."));
    parser.addOptions({
        help,
        version,
        {QStringLiteral("plugin"), tr("Load this plug-in instead of the one that belongs here."), file},
        {QStringLiteral("config-dir"), tr("Keep layout and settings in this folder."), tr("folder")},
        {QStringLiteral("run-command-file"), tr("Execute a command file and print the transcript."), file},
        {QStringLiteral("controller"), tr("Send the file's requests to this controller (the first)."),
         tr("name")},
        {QStringLiteral("run-python-file"),
         tr("Execute a Python file in the Python terminal and print the transcript."), file},
        {QStringLiteral("editor-file"), tr("Show a file in the command terminal's editor."), file},
        {QStringLiteral("screenshot"), tr("Save a picture of the window, after the file if there is one."),
         file},
        {QStringLiteral("quit-when-done"), tr("End the program once file and picture are done.")},
        {QStringLiteral("latency"), tr("Answering time of the simulated service, 0 to 60000 ms."), tr("ms")},
        {QStringLiteral("plant"), tr("Simulate the plant that this file describes."), file},
        {QStringLiteral("seed"), tr("Seed of noise, sparks and jitter (the plant's)."), tr("number")},
    });

    if (!parser.parse(arguments)) {
        message = parser.errorText();
        return OptionsResult::Refuse;
    }
    if (parser.isSet(help)) {
        message = parser.helpText();
        return OptionsResult::Inform;
    }
    if (parser.isSet(version)) {
        message =
            QCoreApplication::applicationName() + QLatin1Char(' ') + QCoreApplication::applicationVersion();
        return OptionsResult::Inform;
    }
    message = complaint(parser);
    if (!message.isEmpty())
        return OptionsResult::Refuse;

    options.pluginFile = parser.value(QStringLiteral("plugin"));
    options.configDir = parser.value(QStringLiteral("config-dir"));
    options.commandFile = parser.value(QStringLiteral("run-command-file"));
    options.controller = parser.value(QStringLiteral("controller"));
    options.pythonFile = parser.value(QStringLiteral("run-python-file"));
    options.editorFile = parser.value(QStringLiteral("editor-file"));
    options.screenshotFile = parser.value(QStringLiteral("screenshot"));
    options.quitWhenDone = parser.isSet(QStringLiteral("quit-when-done"));
    if (parser.isSet(QStringLiteral("latency"))) {
        const QString text = parser.value(QStringLiteral("latency"));
        bool isNumber = false;
        options.latency = text.toInt(&isNumber);
        if (!isNumber || options.latency < 0 || options.latency > LatencyLimit) {
            message = tr("--latency \"%1\" is not a number of ms from 0 to %2.").arg(text).arg(LatencyLimit);
            return OptionsResult::Refuse;
        }
    }
    message = readPlant(parser, options.plant);
    return message.isEmpty() ? OptionsResult::Run : OptionsResult::Refuse;
}

} // namespace workbench
