#pragma once

#include "tests/workbench/service_fixture.h"

#include <QString>
#include <QStringList>

/// The simulated service without latency, the texts that it is sent, and those that it answers with.
class RequestFixture : protected ServiceFixture
{
protected:
    void setUp();

    /// One command at `place`, which is the line, the address and the channel with dots between them.
    static QString command(const char *name, const char *place, const char *item, const char *value = "",
                           const char *unit = "");
    static QString request(const QStringList &commands);

    /// Sends and waits for the trigger; and for the data when it is true.
    QStringList answerTo(const QString &text, int messages);

    static inline const QString True = QStringLiteral("[{\"trigger\":\"true\"}]");
    static inline const QString False = QStringLiteral("[{\"trigger\":\"false\"}]");
    static inline const QString Denied = QStringLiteral("[{\"trigger\":\"denied\"}]");
    static inline const QString NoData = QStringLiteral("[{\"trigger\":\"noData\"}]");
};
