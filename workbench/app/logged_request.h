#pragma once

#include <QString>
#include <QVector>

namespace workbench
{

/// A raw message that answered a request, or would have. Plain data.
struct LoggedAnswer
{
    double time = 0; ///< s on the plant's clock
    double delay = 0; ///< s after the request
    QString text;
    bool isLost = false;
};

/// A raw request and all that came of it; or a message of a pass-through, which has no answer. Plain data.
struct LoggedRequest
{
    enum Kind : quint8
    {
        Raw,
        ToScript,
        FromScript,
    };

    enum Outcome : quint8
    {
        Waiting, ///< no answer yet
        Answered, ///< and carried out
        Refused, ///< not taken, or answered with anything but success
        Lost, ///< the transport lost some of the answer
        Dropped, ///< the controller went away before it answered
        PassedThrough, ///< to a script or from it
    };

    Kind kind = Raw;
    quint64 number = 0; ///< of a message of a pass-through that of the request before it
    double time = 0; ///< s on the plant's clock
    QString controller;
    QString text;
    QString summary; ///< as requestSummary() gives it, made once
    QString refusal; ///< why it was not taken; empty when it was
    QVector<LoggedAnswer> answers;
    bool isDropped = false;

    Outcome outcome() const;
    /// s until the first message that came through; below 0 when none did.
    double latency() const;
};

/// What the request asks for, in short: "set 0.0.1 Control.voltageSet 1000 V"; a request that cannot be understood as it
/// stands.
QString requestSummary(const LoggedRequest &request);

/// What was answered, in short: the trigger's word, and the values that followed it; or why the request was not taken.
QString answerSummary(const LoggedRequest &request);

/// The outcome in words, with what else there is to say about it: "done", "lost", "done, came twice".
QString outcomeText(const LoggedRequest &request);

/// The whole of it to be read: request and answers, JSON indented, with times.
QString requestDetails(const LoggedRequest &request);

} // namespace workbench
