#include "MemoryUsage.h"

#include <mach/mach.h>

namespace MemoryUsage {

long peakResidentKiB(const rusage &usage)
{
    return usage.ru_maxrss / 1024; // bytes on macOS (XNU fills it from the task's resident size)
}

long ownPeakResidentKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return peakResidentKiB(usage);
}

double residentMiB()
{
    // There is no /proc: the task's basic info has the resident size in bytes.
    mach_task_basic_info_data_t info{};
    mach_msg_type_number_t count = MACH_TASK_BASIC_INFO_COUNT;
    if (task_info(mach_task_self(), MACH_TASK_BASIC_INFO, reinterpret_cast<task_info_t>(&info), &count)
        != KERN_SUCCESS)
        return 0;
    return double(info.resident_size) / (1024.0 * 1024.0);
}

} // namespace MemoryUsage
