#pragma once

#include <sys/resource.h>

// Memory figures of the benchmarks, in the same units on every platform.
// One implementation per platform, chosen by CMake.
namespace MemoryUsage {

// The peak resident set size a getrusage()/wait4() result reports, in KiB.
// (The kernels disagree on ru_maxrss: Linux counts kilobytes, macOS bytes.)
long peakResidentKiB(const rusage &usage);

// This process's own peak so far, in KiB.
long ownPeakResidentKiB();

// The memory this process holds now (its resident set), in MiB; 0 where the
// system does not say.
double residentMiB();

} // namespace MemoryUsage
