#pragma once

// The processor time this process has used so far, user and system, for the
// measurement programs' CPU shares.

#include <sys/resource.h>

namespace halvex::bench {

inline double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

}  // namespace halvex::bench
