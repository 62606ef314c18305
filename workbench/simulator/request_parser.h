#pragma once

#include "workbench/simulator/request_command.h"

#include <QJsonObject>
#include <QVector>

namespace simulator
{

/// Reads a raw request:
///
///     {"i":"<session_id>","t":"request",
///      "c":[{"c":"getItem","p":{"p":{"l":"0","a":"4","c":"1"},"i":"Status.voltageMeasure","v":"","u":""}}],
///      "r":"websocket"}
///
/// "i" is any text. "c" holds one or more commands, "getItem" or "setItem". "l", "a" and "c" are numbers from 0 on, as
/// text or as JSON numbers; they are empty from the right: none is the system, "l" a line, "l" and "a" a module, or a
/// crate from address 1000 on, all three a channel. "v" is a text, a number or a bool. The fields "i" and "r", the
/// three of the place, "u", and "v" of a get may be missing. Any other field is refused, so that a misspelt one is not
/// overlooked.
class RequestParser
{
public:
    /// Longest request that is looked at, in UTF-16 code units.
    static constexpr int LongestRequest = 1 << 20;

    /// True, with one or more commands; or false, with a text that says where the request is wrong and what is allowed.
    static bool parse(const QString &request, QVector<RequestCommand> &commands, QString &error);

private:
    explicit RequestParser(QString &errorText) : error(errorText) { }

    bool parseDocument(const QString &request, QVector<RequestCommand> &commands);
    bool parseRequest(const QJsonObject &request, QVector<RequestCommand> &commands);
    bool parseCommand(const QJsonObject &object, const QString &field, RequestCommand &command);
    bool parseItem(const QJsonObject &object, const QString &field, RequestCommand &command);
    bool parsePlace(const QJsonObject &object, const QString &field, ObjectAddress &place);
    bool parseIndex(const QJsonValue &value, const QString &field, quint32 maximum, bool &isGiven,
                    quint32 &index);
    bool parseText(const QJsonValue &value, const QString &field, QString &text);
    bool parseObject(const QJsonValue &value, const QString &field, QJsonObject &object);
    bool hasOnly(const QJsonObject &object, const QString &field, const QString &allowed);
    bool refuse(const QString &field, const QString &found, const QString &allowed);

    QString &error;
};

} // namespace simulator
