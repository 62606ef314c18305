#pragma once

#include "workbench/app/rehearse_options.h"
#include "workbench/rehearsal/recording.h"

#include <QTextStream>

class QIODevice;
class QJsonObject;

namespace workbench
{

/// Prints a rehearsal as it happens: lines of text for people, or one JSON object a line.
class RehearseOutput
{
public:
    /// The device is open, kept, and outlives this object.
    RehearseOutput(QIODevice &device, RehearseOptions::Format format);

    void begin(const rehearsal::FileRecord &file, const QString &controller);
    void transcript(const QString &file, double time, rehearsal::TranscriptLine::Kind kind,
                    const QString &text);
    void finding(const rehearsal::Finding &finding);
    /// `page` is the report's; empty for none.
    void result(const rehearsal::Recording &recording, const QString &page);

    /// Whether all of it could be written.
    bool isWhole() const { return out.status() == QTextStream::Ok; }

private:
    void printObject(const QJsonObject &object);
    void printFinding(const rehearsal::Finding &finding);
    void printResult(const rehearsal::Recording &recording, const QString &page);

    QTextStream out;
    const bool isJson;
};

} // namespace workbench
