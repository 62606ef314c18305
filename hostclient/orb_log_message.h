#pragma once

#include <QDateTime>
#include <QString>

/// An entry of the service's log, handed to subscribers. A plain value; the plug-in never looks inside.
struct OrbLogMessage
{
    QDateTime time;
    int level = 0; ///< 0 information, 1 warning, 2 error
    QString text;
};
