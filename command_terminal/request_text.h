#pragma once

#include <QString>

namespace command_terminal
{

/// What a request is made of, each as typed; nothing is checked or escaped.
struct RequestFields
{
    QString command; ///< "getItem" or "setItem"
    QString line;
    QString address;
    QString channel;
    QString item;
    QString value;
    QString unit;
};

/// The request as one line of text. Every field is always there, an empty one as an empty text, and none is escaped:
/// a quotation mark in a value makes the request invalid. The session id stays a placeholder.
QString requestText(const RequestFields &fields);

} // namespace command_terminal
