// Store benchmark: cold and warm reload, one save (with its reload) and one
// search, over a generated library; reading every file with cat is the floor.
//
//   bench_store [PROMPTS...]        default: 1000 10000

#include "LibraryGenerator.h"
#include "LibraryQueries.h"
#include "MemoryUsage.h"
#include "PromptLibrary.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {

// Empties the kernel's page cache so that "cold" means read from disk.
// Needs root and a writable /proc/sys; reports whether it worked.
bool dropPageCache()
{
    ::sync();
    QFile control(QStringLiteral("/proc/sys/vm/drop_caches"));
    return control.open(QIODevice::WriteOnly) && control.write("3\n") == 2 && control.flush();
}

double milliseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1e6;
}

double median(int runs, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(milliseconds(work));
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void catAll(const QString &root)
{
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QStringLiteral("find \"$0\" -type f -exec cat {} + > /dev/null"), root});
    shell.waitForFinished(-1);
}

int runOne(int promptCount)
{
    QTemporaryDir dir;
    const QString root = dir.path() + u"/prompts";
    QString error;
    if (!generateLibrary(root, {promptCount, 0, 42}, &error)) {
        std::fprintf(stderr, "bench_store: %s\n", qUtf8Printable(error));
        return 1;
    }
    // A real library was not written in the last seconds; files that were are
    // always read again (see PromptLibrary), which is not what is measured.
    QThread::msleep(3500);
    const long rssBefore = MemoryUsage::ownPeakResidentKiB();

    const bool cold = dropPageCache();
    const double catCold = milliseconds([&] { catAll(root); });
    dropPageCache();
    std::unique_ptr<PromptLibrary> library;
    const double reloadCold = milliseconds([&] { library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(root)); });

    const double catWarm = median(5, [&] { catAll(root); });
    const double reloadWarm = median(5, [&] { library->reload(); });

    int edit = 0;
    const double save = median(5, [&] {
        Prompt prompt = library->prompts().at(library->prompts().size() / 2);
        prompt.body += QString::number(++edit);
        library->save(prompt);
    });

    qsizetype hits = 0;
    const double searchTypical = median(21, [&] {
        hits = LibraryQueries::searchResults(library->prompts(), QStringLiteral("refactor")).size();
    });
    const double searchMiss = median(21, [&] {
        LibraryQueries::searchResults(library->prompts(), QStringLiteral("no such words")).size();
    });
    const long rssAfter = MemoryUsage::ownPeakResidentKiB();

    std::printf("\n%d prompts in %lld projects (page cache %s before the cold runs)\n", promptCount,
                static_cast<long long>(library->projects().size()), cold ? "dropped" : "NOT dropped: cold = first run");
    std::printf("  %-44s %9.1f ms\n", "cat of every file, cold (floor)", catCold);
    std::printf("  %-44s %9.1f ms\n", "reload(), cold (first load)", reloadCold);
    std::printf("  %-44s %9.1f ms\n", "cat of every file, warm (floor)", catWarm);
    std::printf("  %-44s %9.1f ms\n", "reload(), warm", reloadWarm);
    std::printf("  %-44s %9.1f ms\n", "save() of one prompt, with its reload", save);
    std::printf("  %-44s %9.1f ms  (%lld hits)\n", "search \"refactor\"", searchTypical, static_cast<long long>(hits));
    std::printf("  %-44s %9.1f ms\n", "search with no hit (full scan)", searchMiss);
    std::printf("  %-44s %9ld KiB (before loading: %ld KiB)\n", "peak resident memory", rssAfter, rssBefore);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList sizes = app.arguments().mid(1);
    if (sizes.isEmpty())
        sizes = {QStringLiteral("1000"), QStringLiteral("10000")};
    // Each size in its own process, so that peak memory is that size's own.
    if (sizes.size() > 1) {
        for (const QString &size : std::as_const(sizes)) {
            QProcess child;
            child.setProcessChannelMode(QProcess::ForwardedChannels);
            child.start(app.applicationFilePath(), {size});
            child.waitForFinished(-1);
            if (child.exitCode() != 0)
                return child.exitCode();
        }
        return 0;
    }
    bool ok = false;
    const int count = sizes.first().toInt(&ok);
    if (!ok || count <= 0) {
        std::fprintf(stderr, "usage: bench_store [PROMPTS...]\n");
        return 2;
    }
    return runOne(count);
}
