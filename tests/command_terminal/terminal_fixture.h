#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "tests/support/recording_backend.h"
#include "tests/support/recording_observer.h"

/// What every part of a terminal needs to live: main data with a data access layer over a backend that records, and
/// an observer that records. Make it before the widgets under test, so that it outlives them. GUI thread only.
struct TerminalFixture
{
    RecordingBackend backend;
    DlDataAccess dataAccess{backend};
    KdMainData mainData{&dataAccess};
    RecordingObserver observer;
};
