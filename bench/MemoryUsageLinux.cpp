#include "MemoryUsage.h"

#include <QByteArray>
#include <QFile>

namespace MemoryUsage {

long peakResidentKiB(const rusage &usage)
{
    return usage.ru_maxrss; // kilobytes (getrusage(2))
}

long ownPeakResidentKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return peakResidentKiB(usage);
}

double residentMiB()
{
    // VmRSS in /proc/self/status, in kB.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

} // namespace MemoryUsage
