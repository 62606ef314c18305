#pragma once

#include <QString>
#include <QStringList>

namespace rehearsal
{

/// A raw request as people would say it: "set 0.2.1 Control.voltageSet to 1000 V", "get 0.2.1 Status.voltageMeasure",
/// several joined by "; ". The text itself, cut, when it is no request.
QString requestSummary(const QString &request);

/// The values that the answers bring: "499.8 V"; empty when they bring none.
QString answerSummary(const QStringList &answers);

} // namespace rehearsal
