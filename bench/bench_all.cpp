// Every responsiveness figure beside its floors, measured in the same run,
// for libraries of 1,000, 10,000 and 50,000 prompts (page cache warm):
//
//   floors   stat of every file; one process reading every file (open, read,
//            close, one after the other); `rg -i -F -l` when it is installed
//   app      launch to first paint, search keystroke to painted, autosave
//            cycle, resident memory (bench_ui, one process per size)
//   store    reload() with nothing changed
//   cli      vesk-cli search, vesk-cli list --json (time and peak memory)
//
// Median and worst of repeated runs, and each figure's ratio to its floor.
//
//   bench_all [--sizes 1000,10000,50000] [--runs 5] [--folder DIR]
// With --folder the generated libraries are kept there and reused.

#include "LibraryGenerator.h"
#include "MemoryUsage.h"
#include "PromptLibrary.h"
#include "VeskConst.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

const char *const query = "refactor";

struct Figure
{
    double median = 0;
    double worst = 0;
};

Figure figure(std::vector<double> values)
{
    if (values.empty())
        return {};
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.back()};
}

Figure repeat(int runs, const std::function<double()> &once)
{
    std::vector<double> values;
    for (int i = 0; i < runs; ++i)
        values.push_back(once());
    return figure(values);
}

double msOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1e6;
}

// The prompt files of a library, walked as the library does: project folders
// under the root, their visible files.
template<typename Visit>
qint64 walk(const QString &root, Visit visit)
{
    qint64 bytes = 0;
    DIR *top = ::opendir(QFile::encodeName(root).constData());
    if (!top)
        return 0;
    while (const dirent *project = ::readdir(top)) {
        if (project->d_name[0] == '.' || project->d_type != DT_DIR)
            continue;
        const QByteArray folder = QFile::encodeName(root) + '/' + project->d_name;
        DIR *dir = ::opendir(folder.constData());
        if (!dir)
            continue;
        while (const dirent *file = ::readdir(dir)) {
            if (file->d_name[0] != '.')
                bytes += visit(::dirfd(dir), file->d_name);
        }
        ::closedir(dir);
    }
    ::closedir(top);
    return bytes;
}

qint64 statWalk(const QString &root)
{
    return walk(root, [](int dirFd, const char *name) -> qint64 {
        struct stat st;
        return ::fstatat(dirFd, name, &st, 0) == 0 ? st.st_size : 0;
    });
}

qint64 readAll(const QString &root)
{
    static char buffer[1 << 16];
    return walk(root, [](int dirFd, const char *name) -> qint64 {
        const int fd = ::openat(dirFd, name, O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return 0;
        qint64 total = 0;
        for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;)
            total += n;
        ::close(fd);
        return total;
    });
}

struct ProcessRun
{
    double ms = 0;
    long peakKiB = 0;
    int status = -1;
    QByteArray out;
};

// Runs a program to its end, its output to a file (or /dev/null), and
// measures its wall time and peak memory.
ProcessRun runProcess(const QStringList &command, const QString &outputFile = QStringLiteral("/dev/null"))
{
    std::vector<QByteArray> args;
    for (const QString &arg : command)
        args.push_back(QFile::encodeName(arg));
    std::vector<char *> argv;
    for (QByteArray &arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, QFile::encodeName(outputFile).constData(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    ProcessRun run;
    QElapsedTimer timer;
    timer.start();
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
        int status = 0;
        rusage usage{};
        ::wait4(pid, &status, 0, &usage);
        run.ms = timer.nsecsElapsed() / 1e6;
        run.peakKiB = MemoryUsage::peakResidentKiB(usage);
        run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    if (outputFile != u"/dev/null") {
        QFile out(outputFile);
        if (out.open(QIODevice::ReadOnly))
            run.out = out.readAll();
    }
    return run;
}

QString sibling(const char *program)
{
    return QCoreApplication::applicationDirPath() + u'/' + QString::fromLatin1(program);
}

QString cliPath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../src/cli/vesk-cli");
}

// bench_ui's "key value" lines, several runs.
QHash<QString, std::vector<double>> runUiBench(int size, const QString &root, int runs)
{
    QHash<QString, std::vector<double>> values;
    QTemporaryDir scratch;
    for (int i = 0; i < runs; ++i) {
        const QString output = scratch.path() + u"/ui.txt";
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("VESK_BENCH_MACHINE", "1");
        const ProcessRun run = runProcess({sibling("bench_ui"), QString::number(size), root}, output);
        for (const QByteArray &line : run.out.split('\n')) {
            const QList<QByteArray> parts = line.split(' ');
            if (parts.size() == 2)
                values[QString::fromLatin1(parts[0])].push_back(parts[1].toDouble());
        }
    }
    return values;
}

void row(const char *what, const Figure &f, const char *unit, const Figure *floor = nullptr,
         const char *floorName = nullptr)
{
    std::printf("  %-48s %9.1f %s (worst %.1f)", what, f.median, unit, f.worst);
    if (floor && floor->median > 0)
        std::printf("   %5.2fx %s", f.median / floor->median, floorName);
    std::printf("\n");
}

int runSize(int size, const QString &folder, int runs)
{
    const QString root = folder + u"/lib" + QString::number(size);
    if (!QFileInfo::exists(root)) {
        QString error;
        if (!generateLibrary(root, {size, 0, 42}, &error)) {
            std::fprintf(stderr, "bench_all: %s\n", qUtf8Printable(error));
            return 1;
        }
        QThread::msleep(3500); // not written in the last seconds, as a real library
    }
    const double textMiB = statWalk(root) / 1048576.0;
    readAll(root); // warm the page cache
    std::printf("\n%d prompts, %.1f MiB of text (page cache warm, %d runs)\n", size, textMiB, runs);

    const Figure statFloor = repeat(runs, [&] { return msOf([&] { statWalk(root); }); });
    const Figure readFloor = repeat(runs, [&] { return msOf([&] { readAll(root); }); });
    row("floor: stat of every file", statFloor, "ms");
    row("floor: one process reading every file", readFloor, "ms");
    Figure rg;
    const bool haveRg = !QStandardPaths::findExecutable(QStringLiteral("rg")).isEmpty();
    if (haveRg) {
        rg = repeat(runs, [&] {
            return runProcess({QStringLiteral("rg"), QStringLiteral("-i"), QStringLiteral("-F"), QStringLiteral("-l"),
                               QString::fromLatin1(query), root}).ms;
        });
        row("rg -i -F -l (whole process)", rg, "ms");
    } else {
        std::printf("  rg is not installed: no comparison with it\n");
    }

    const QHash<QString, std::vector<double>> ui = runUiBench(size, root, runs);
    const Figure launch = figure(ui.value(QStringLiteral("launch_ms")));
    row("launch to first paint", launch, "ms", &readFloor, "read-all");
    row("search keystroke to painted", figure(ui.value(QStringLiteral("search_ms"))), "ms");
    row("autosave cycle (save, lists, sidebar, editor, paint)", figure(ui.value(QStringLiteral("autosave_ms"))), "ms");
    row("editor keystroke to painted", figure(ui.value(QStringLiteral("typing_ms"))), "ms");
    const Figure rss = figure(ui.value(QStringLiteral("rss_mib")));
    const Figure memoryGoal{2 * textMiB + 40, 2 * textMiB + 40};
    row("app resident memory", rss, "MiB", &memoryGoal, "of 2x text + 40 MiB");


    const Figure search = repeat(runs, [&] {
        return runProcess({cliPath(), QStringLiteral("--root"), root, QStringLiteral("search"),
                           QString::fromLatin1(query)}).ms;
    });
    row("vesk-cli search (whole process)", search, "ms", haveRg ? &rg : nullptr, "rg");
    std::vector<double> listMs, listMiB;
    for (int i = 0; i < runs; ++i) {
        const ProcessRun run = runProcess({cliPath(), QStringLiteral("--root"), root, QStringLiteral("list"),
                                           QStringLiteral("--json")});
        listMs.push_back(run.ms);
        listMiB.push_back(run.peakKiB / 1024.0);
    }
    row("vesk-cli list --json (whole process)", figure(listMs), "ms", &readFloor, "read-all");
    row("vesk-cli list --json, peak memory", figure(listMiB), "MiB");

    // Last, in this process: a child's peak memory counts what its parent
    // held when it started, so nothing large is loaded here before.
    {
        PromptLibrary library(QUrl::fromLocalFile(root));
        const Figure reload = repeat(runs * 2, [&] { return msOf([&] { library.reload(); }); });
        row("reload() with nothing changed", reload, "ms", &statFloor, "stat walk");
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QList<int> sizes{1000, 10000, 50000};
    int runs = 5;
    QString folder;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == u"--sizes") {
            sizes.clear();
            for (const QString &size : args[i + 1].split(u','))
                sizes.append(size.toInt());
        } else if (args[i] == u"--runs") {
            runs = qMax(1, args[i + 1].toInt());
        } else if (args[i] == u"--folder") {
            folder = args[i + 1];
        }
    }
    QTemporaryDir scratch;
    if (folder.isEmpty())
        folder = scratch.path();
    QDir().mkpath(folder);
    std::printf("bench_all: %d cores, query \"%s\"\n", QThread::idealThreadCount(), query);
    for (const int size : std::as_const(sizes)) {
        if (const int failed = runSize(size, folder, runs))
            return failed;
        std::fflush(stdout);
    }
    return 0;
}
