#pragma once

#include <ctime>

/// Processor time that this process has used so far, in seconds: what other processes do does not count.
inline double processorTime()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}
