#include "workbench/app/rehearse_options.h"

#include "workbench/app/text_file.h"
#include "workbench/simulator/plant_file.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cmath>

namespace workbench
{

namespace
{

constexpr double LongestSettleTime = 3600; // s

QString tr(const char *text)
{
    return QCoreApplication::translate("workbench::RehearseOptions", text);
}

const QLatin1String Controller("controller");
const QLatin1String Plant("plant");
const QLatin1String Seed("seed");
const QLatin1String Faults("faults");
const QLatin1String LimitName("limit");
const QLatin1String Report("report");
const QLatin1String FormatName("format");
const QLatin1String Settle("settle");
const QLatin1String Plugin("plugin");

/// Takes the options one after the other; each step is false with a complaint.
class Reader
{
public:
    Reader(const QCommandLineParser &parser_, RehearseOptions &options_, QString &complaint_)
        : parser(parser_), options(options_), complaint(complaint_)
    { }

    bool read()
    {
        return checkValues() && readFormat() && readSettleTime() && readPlant() && readController()
            && readLimits() && readFiles() && makeReportDir();
    }

private:
    bool refuse(const QString &text)
    {
        complaint = text;
        return false;
    }

    bool checkValues()
    {
        const QStringList names = parser.optionNames();
        for (const QString &name : names) {
            const QStringList values = parser.values(name);
            if (values.contains(QString()))
                return refuse(tr("--%1 needs a value.").arg(name));
            if (values.size() > 1 && name != LimitName)
                return refuse(
                    tr("--%1 is given %2 times; once is allowed.").arg(name, QString::number(values.size())));
        }
        options.pluginFile = parser.value(Plugin);
        return true;
    }

    bool readFormat()
    {
        if (!parser.isSet(FormatName))
            return true;
        const QString format = parser.value(FormatName);
        if (format == QLatin1String("json"))
            options.format = RehearseOptions::Format::Json;
        else if (format != QLatin1String("text"))
            return refuse(tr("--format \"%1\" is neither \"text\" nor \"json\".").arg(format));
        return true;
    }

    bool readSettleTime()
    {
        if (!parser.isSet(Settle))
            return true;
        bool isNumber = false;
        const double seconds = parser.value(Settle).toDouble(&isNumber);
        if (!isNumber || !(seconds >= 0 && seconds <= LongestSettleTime))
            return refuse(tr("--settle \"%1\" is not a number of seconds from 0 to %2.")
                              .arg(parser.value(Settle), QString::number(LongestSettleTime)));
        options.settleTime = seconds;
        return true;
    }

    bool readPlant()
    {
        options.plant = simulator::PlantLayout::rehearsal();
        options.plantFile = parser.value(Plant);
        QString error;
        if (!options.plantFile.isEmpty()
            && !simulator::PlantFile::read(options.plantFile, options.plant, error))
            return refuse(error);
        if (parser.isSet(Seed)) {
            bool isNumber = false;
            options.plant.seed = parser.value(Seed).toUInt(&isNumber);
            if (!isNumber)
                return refuse(
                    tr("--seed \"%1\" is not a whole number from 0 to 4294967295.").arg(parser.value(Seed)));
        }
        if (parser.isSet(Faults)
            && !simulator::PlantFile::readFaults(parser.value(Faults), options.plant, error))
            return refuse(error);
        return true;
    }

    bool readController()
    {
        options.controller = parser.value(Controller);
        QStringList known;
        for (const simulator::ControllerLayout &controller : options.plant.controllers) {
            known << controller.displayText;
            if (options.controller.isEmpty() || options.controller == controller.displayText
                || options.controller == controller.connectionName)
                return true;
        }
        return refuse(tr("There is no controller \"%1\". There are: %2.")
                          .arg(options.controller, known.join(QStringLiteral(", "))));
    }

    bool readLimits()
    {
        const QStringList texts = parser.values(LimitName);
        for (const QString &text : texts) {
            rehearsal::Limit limit;
            QString error;
            if (!rehearsal::parseLimit(text, limit, error))
                return refuse(error);
            if (!limit.holdsIn(options.plant))
                return refuse(tr("The limit \"%1\" is for no channel of the plant.").arg(limit.text));
            options.limits.append(limit);
        }
        return true;
    }

    bool readFiles()
    {
        const QStringList names = parser.positionalArguments();
        if (names.isEmpty())
            return refuse(
                tr("There is nothing to rehearse: give one or more command files or Python files."));
        for (const QString &name : names) {
            RehearsalFile file;
            QString error;
            file.name = name;
            file.isScript = QFileInfo(name).suffix().compare(QLatin1String("py"), Qt::CaseInsensitive) == 0;
            TextFile content;
            if (!readTextFile(name, content, error))
                return refuse(
                    tr("The file \"%1\" cannot be read: %2.").arg(QDir::toNativeSeparators(name), error));
            file.text = content.text;
            file.foreignLine = content.foreignLine;
            options.files.push_back(std::move(file));
        }
        return true;
    }

    /// Now, and not at the end of a long rehearsal.
    bool makeReportDir()
    {
        const QString dir = parser.value(Report);
        if (dir.isEmpty())
            return true;
        if (!QDir().mkpath(dir))
            return refuse(
                tr("The report's folder \"%1\" cannot be made.").arg(QDir::toNativeSeparators(dir)));
        QTemporaryFile trial(QDir(dir).filePath(QStringLiteral("report-XXXXXX")));
        if (!trial.open())
            return refuse(tr("Nothing can be written to the report's folder \"%1\": %2.")
                              .arg(QDir::toNativeSeparators(dir), trial.errorString()));
        options.reportDir = dir;
        return true;
    }

    const QCommandLineParser &parser;
    RehearseOptions &options;
    QString &complaint;
};

} // namespace

OptionsResult parseRehearseOptions(const QStringList &arguments, RehearseOptions &options, QString &message)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(tr(
        "Executes command files and Python files (.py), one after the other, in the real terminals against a "
        "simulated high-voltage system, and tells what they did to it. Nothing here reaches hardware.\n\n"
        "The exit code is 0 when nothing failed; 1 when a request failed or timed out, a limit was crossed, "
        "a channel tripped or reported an error, or a script failed; 2 when the arguments are unusable; 130 "
        "after Ctrl+C."));
    const QString file = tr("file");
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, tr("Show this help."));
    parser.addPositionalArgument(QStringLiteral("file"), tr("Command files and Python files."),
                                 tr("FILE..."));
    parser.addOptions({
        help,
        {Controller, tr("Send the command files' requests to this controller (the first)."), tr("name")},
        {Plant, tr("Rehearse against the plant that this file describes."), file},
        {Seed, tr("Seed of noise, sparks and jitter (the plant's)."), tr("number")},
        {Faults, tr("Let the faults happen that this file lists."), file},
        {LimitName,
         tr("Fail when a channel goes beyond: '0.2.*.voltage<=1500 V', '*.current<=2 mA'. May be repeated."),
         tr("limit")},
        {Report, tr("Write report.html and report.json to this folder."), tr("folder")},
        {FormatName, tr("\"text\" for people (the default), or \"json\": one object a line."), tr("format")},
        {Settle, tr("After the last file watch ramps for up to so many seconds (10)."), tr("s")},
        {Plugin, tr("Load this plug-in instead of the one that belongs here."), file},
    });
    if (!parser.parse(QStringList(QStringLiteral("terminal-workbench rehearse")) + arguments)) {
        message = parser.errorText();
        return OptionsResult::Refuse;
    }
    if (parser.isSet(help)) {
        message = parser.helpText();
        return OptionsResult::Inform;
    }
    return Reader(parser, options, message).read() ? OptionsResult::Run : OptionsResult::Refuse;
}

} // namespace workbench
