#pragma once

#include "workbench/rehearsal/limit.h"
#include "workbench/rehearsal/trace.h"
#include "workbench/simulator/object_address.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <limits>
#include <vector>

namespace rehearsal
{

/// Of what has no time.
constexpr double NoTime = std::numeric_limits<double>::quiet_NaN();

/// Something that must not be, or that an author seldom means. Plain data.
struct Finding
{
    enum Kind : quint8
    {
        Request, ///< a request or a write was refused or denied, or there is no such item
        TimeOut, ///< a request was not answered in time
        LimitCrossed,
        Trip, ///< a protection switched a channel off: its own, another channel's, its module's or its crate's
        Error, ///< a channel reports an error, and was not switched off by it
        Script, ///< a script does not compile, raised, exited with a code, or waits for a line
        Run, ///< the rehearsal itself could not go on
        Warning,
    };

    Kind kind = Warning;
    double time = NoTime; ///< s since the first file began
    QString file; ///< empty for none
    int line = 0; ///< of the file, from 1 on; 0 for none
    QString channel; ///< "local/0.1.2"; empty for none
    int limit = -1; ///< that was crossed, among the recording's
    QString text; ///< a sentence; of a script several lines
};

/// "request", "timeout", "limit", "trip", "error", "script", "run", "warning".
QString findingName(Finding::Kind kind);

/// Something that happened to a channel, to be marked in its picture. Plain data.
struct Mark
{
    enum Kind : quint8
    {
        Command, ///< a write; `request` is its index among the requests, or -1 when it is not listed
        Event,
        Error,
        Fault,
        LimitCrossed,
    };

    Kind kind = Event;
    double time = 0; ///< s
    int request = -1;
    QString text;
};

/// A time in which a channel's voltage ramped. Plain data.
struct Ramp
{
    double begin = 0; ///< s
    double end = NoTime; ///< s; NoTime when it was not over
    double from = 0; ///< V
    double to = 0; ///< V
};

/// The most of a quantity, by its magnitude. Plain data.
struct Peak
{
    double value = 0; ///< V or A, with its sign
    double time = 0; ///< s
};

/// How often a channel crossed a limit, and how far it came. Plain data.
struct Crossings
{
    int limit = 0; ///< among the recording's
    int count = 0; ///< one more after each return to within the limit
    double first = NoTime; ///< s
    double highest = 0; ///< V or A with its sign, by its magnitude
};

/// A channel that was touched: named by a write, or hit by an event, a fault or a new course. Plain data.
struct ChannelRecord
{
    ChannelRecord(int mostPoints, double voltageNominal, double currentNominal);

    QString controller; ///< connection name
    QString controllerText; ///< display text
    simulator::ObjectAddress address;
    double voltageNominal = 0; ///< V
    double currentNominal = 0; ///< A
    double voltageLimit = 0; ///< V; the plant's own, at the end
    double currentLimit = 0; ///< A
    Trace trace;
    Peak voltage;
    Peak current;
    std::vector<Ramp> ramps;
    int rampsLeftOut = 0;
    std::vector<Mark> marks;
    int marksLeftOut = 0;
    QVector<int> limits; ///< indices of those that hold for it
    std::vector<Crossings> crossings; ///< of those that it crossed
    bool tripped = false; ///< switched off by a protection
    bool reportedError = false; ///< that did not switch it off
    bool crossed = false; ///< any limit
    QString endState; ///< "on", "off", "ramping", at the end

    /// "local/0.1.2"
    QString name() const;
};

/// A raw request, or a write by a script. Plain data.
struct RequestRecord
{
    double time = 0; ///< s
    QString controller;
    QString file; ///< that ran at the time; empty for none
    int line = 0; ///< of a command file, from 1 on; 0 for none
    bool isWrite = false; ///< by a script: there is no raw request, and `text` reads "0.1.2 Control.on 1"
    bool isTaken = true; ///< false for a raw request that was refused at once, and was never on its way
    QString text;
    QStringList answers;
    double latency = NoTime; ///< s until the last answer
    QString
        outcome; ///< "done", "refused", "denied", "no such item", "not connected", "not answered"; empty while open
};

/// Anything else that happened. Plain data.
struct EventRecord
{
    double time = 0; ///< s
    QString place; ///< "local/0.1.2"
    QString text;
};

/// A file that was rehearsed. Plain data.
struct FileRecord
{
    QString name; ///< as it was given
    bool isScript = false; ///< Python, else a command file
    double begin = NoTime; ///< s; NoTime when it did not begin
    double end = NoTime;
    QString outcome; ///< "done", "stopped", "failed", or "not run"
};

/// A line of a terminal. Plain data.
struct TranscriptLine
{
    enum Kind : quint8
    {
        Input, ///< echoed, or the terminal's own
        Output,
        Error,
    };

    double time = 0; ///< s
    Kind kind = Input;
    QString text;
};

/// Everything that a rehearsal saw. Plain data.
struct Recording
{
    QString programVersion;
    QString plant; ///< the plant file; empty for the built-in plant
    quint32 seed = 1;
    QDateTime startedAt;
    double duration = 0; ///< s
    int exitCode = 0;
    QString interruption; ///< why it was ended early; empty when it was not
    QVector<Limit> limits;
    std::vector<FileRecord> files;
    std::vector<ChannelRecord> channels; ///< in the order in which they were touched
    std::vector<RequestRecord> requests;
    std::vector<EventRecord> events;
    std::vector<Finding> failures;
    std::vector<Finding> warnings;
    std::vector<TranscriptLine> transcript;
    // What came when the lists were full.
    int requestsLeftOut = 0;
    int eventsLeftOut = 0;
    int failuresLeftOut = 0;
    int transcriptLeftOut = 0;
};

} // namespace rehearsal
