#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "tests/support/recording_backend.h"

/// Two controllers, each with a crate (line 0, address 1000) that holds module 4 with two channels, and module 7 with
/// one channel on line 1 outside any crate.
class SmallSystem
{
public:
    SmallSystem();

    /// The first controller, or both, and whoever listens is told.
    void setControllers(int number);

    /// What an item reads, on both controllers.
    void setItem(const QString &path, const QString &value, const QString &unit = QString());

    RecordingBackend backend;
    DlDataAccess dataAccess;
    KdMainData mainData;
};
