#pragma once

#include "workbench/simulator/request_command.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <limits>

namespace simulator
{

/// A raw request on its way to being carried out. Plain data.
struct PendingRequest
{
    quint64 number = 0;
    QString connection; ///< by which it came
    QVector<RequestCommand> commands;
    double askedAt = 0; ///< s on the plant's clock
    double due = 0; ///< s on the plant's clock
    /// Not before that; the clock's earliest time when it waits for nothing but the plant's clock.
    std::chrono::steady_clock::time_point release = std::chrono::steady_clock::time_point::min();

    bool waitsInRealTime() const { return release != std::chrono::steady_clock::time_point::min(); }
};

/// The answer to a request that was carried out. Plain data.
struct ReadyAnswer
{
    quint64 request = 0;
    QString connection;
    double askedAt = 0; ///< s on the plant's clock
    QStringList messages;
};

} // namespace simulator
