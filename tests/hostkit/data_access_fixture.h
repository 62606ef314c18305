#pragma once

#include "hostclient/dl_data_access.h"
#include "tests/support/recording_backend.h"

#include <QString>

#include <memory>

/// The access layer over a backend that the tests control, with controllers "other" and "c".
class DataAccessFixture
{
protected:
    void setUp()
    {
        backend = std::make_unique<RecordingBackend>();
        backend->setControllers(
            {{QStringLiteral("other"), QStringLiteral("Other")}, {C, QStringLiteral("C")}});
        dataAccess = std::make_unique<DlDataAccess>(*backend);
    }
    void tearDown()
    {
        dataAccess.reset();
        backend.reset();
    }

    void send(const QString &message) { backend->sendRawMessage(C, message); }

    static inline const QString A = QStringLiteral("a");
    static inline const QString B = QStringLiteral("b");
    static inline const QString C = QStringLiteral("c");

    std::unique_ptr<RecordingBackend> backend;
    std::unique_ptr<DlDataAccess> dataAccess;
};
