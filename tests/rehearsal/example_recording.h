#pragma once

#include "workbench/rehearsal/recording.h"

/// A recording with something in every list: a command file with a refused request, a script that raised, one channel
/// that ramped, crossed a limit and tripped, and one of negative polarity that was only looked at.
rehearsal::Recording exampleRecording();

/// The address of a channel.
simulator::ObjectAddress channelAddress(quint32 line, quint32 module, qint32 channel);
