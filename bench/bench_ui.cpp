// Responsiveness of the app over a generated library: launch to the first
// painted window, a keystroke in the search field to painted results, a
// keystroke in the editor, and the autosave cycle (save, reload, sidebar and
// editor refreshed and painted).
//
//   bench_ui [PROMPTS]     default 10000; runs on any Qt platform (offscreen in CI)

#include "AppState.h"
#include "LibraryGenerator.h"
#include "MemoryUsage.h"
#include "PromptLibrary.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace {

// Stops a clock at the first paint of a widget.
class FirstPaint : public QObject
{
public:
    FirstPaint(QWidget *widget, const QElapsedTimer &clock) : m_clock(clock) { widget->installEventFilter(this); }
    qint64 elapsedNs = -1;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && elapsedNs < 0)
            elapsedNs = m_clock.nsecsElapsed();
        return false;
    }

private:
    const QElapsedTimer &m_clock;
};

struct Stats
{
    double median;
    double worst;
};

Stats stats(std::vector<double> ms)
{
    std::sort(ms.begin(), ms.end());
    return {ms[ms.size() / 2], ms.back()};
}

// What a keystroke leaves to do, done: the events it posted, then the
// repaint of every widget it changed (as the event loop would, not a repaint
// of the whole window).
class PaintCounter : public QObject
{
public:
    int paints = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

void paintPending()
{
    static PaintCounter *counter = [] {
        auto *c = new PaintCounter;
        qApp->installEventFilter(c);
        return c;
    }();
    const int before = counter->paints;
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    if (qEnvironmentVariableIsSet("VESK_BENCH_COUNT_PAINTS"))
        std::fprintf(stderr, "paints %d\n", counter->paints - before);
}

double msSince(const QElapsedTimer &clock, qint64 startNs)
{
    return (clock.nsecsElapsed() - startNs) / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer clock;
    clock.start();
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("VeskBench"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskBench"));
    QTemporaryDir settingsDir;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : 10000;

    // A folder of an earlier run may be given, to measure the same library again.
    QTemporaryDir dir;
    const QString root = argc > 2 ? QString::fromLocal8Bit(argv[2]) : dir.path() + u"/prompts";
    if (!QFileInfo::exists(root)) {
        QString error;
        if (count <= 0 || !generateLibrary(root, {count, 0, 42}, &error)) {
            std::fprintf(stderr, "bench_ui: %s\n",
                         count <= 0 ? "usage: bench_ui [PROMPTS [FOLDER]]" : qUtf8Printable(error));
            return 2;
        }
        // A real library was not written in the last seconds (those files are
        // always read again, see PromptLibrary).
        QThread::msleep(3500);
    }

    // Launch: from here (the library generated, the toolkit up) to the first paint.
    const qint64 launchStart = clock.nsecsElapsed();
    VeskApplication vesk(root);
    MainWindow *window = vesk.mainWindow();
    FirstPaint firstPaint(window, clock);
    window->resize(1100, 760);
    window->show();
    while (firstPaint.elapsedNs < 0)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    const double launchMs = (firstPaint.elapsedNs - launchStart) / 1e6;
    const double processLaunchMs = firstPaint.elapsedNs / 1e6;
    if (qEnvironmentVariableIsSet("VESK_BENCH_LAUNCH_ONLY")) { // for profiling the launch alone
        std::printf("launch_ms %.3f\n", launchMs);
        return 0;
    }
    QTest::qWait(100);

    // Each keystroke of a query, to the results painted.
    std::vector<double> search;
    window->searchField()->setFocus();
    const int searchRounds = qMax(1, qEnvironmentVariableIntValue("VESK_BENCH_SEARCH_ROUNDS"));
    for (int round = 1; round < searchRounds; ++round) { // extra rounds, for profiling
        for (const QChar c : QStringLiteral("refactor")) {
            QTest::keyClick(window->searchField(), c.toLatin1());
            paintPending();
        }
        window->searchField()->clear();
    }
    for (const QChar c : QStringLiteral("refactor")) {
        const qint64 start = clock.nsecsElapsed();
        QTest::keyClick(window->searchField(), c.toLatin1());
        paintPending();
        search.push_back(msSince(clock, start));
    }
    std::vector<double> clearing;
    for (int i = 0; i < 8; ++i) {
        const qint64 start = clock.nsecsElapsed();
        QTest::keyClick(window->searchField(), Qt::Key_Backspace);
        paintPending();
        clearing.push_back(msSince(clock, start));
    }

    // Typing in the editor of a prompt in the middle of the library.
    const QString id = vesk.library()->prompts().at(count / 2).id;
    vesk.state()->setSelectedPromptIDs({id});
    QPlainTextEdit *editor = window->promptDetail()->editor();
    editor->setFocus();
    editor->moveCursor(QTextCursor::End);
    std::vector<double> typing;
    for (int i = 0; i < 20; ++i) {
        const qint64 start = clock.nsecsElapsed();
        QTest::keyClick(editor, 'a' + i % 26);
        paintPending();
        typing.push_back(msSince(clock, start));
    }

    // The autosave: what the 400 ms timer runs, then the repaint it causes.
    std::vector<double> autosave;
    const int autosaves = qEnvironmentVariableIntValue("VESK_BENCH_AUTOSAVES");
    for (int i = 0; i < (autosaves > 0 ? autosaves : 7); ++i) {
        QTest::keyClick(editor, 'x');
        const qint64 start = clock.nsecsElapsed();
        vesk.state()->flushPendingSave();
        paintPending();
        autosave.push_back(msSince(clock, start));
    }

    if (qEnvironmentVariableIsSet("VESK_BENCH_MACHINE")) {
        // One "key value" line per measurement, for bench_all.
        std::printf("launch_ms %.3f\n", launchMs);
        for (const double ms : search)
            std::printf("search_ms %.3f\n", ms);
        for (const double ms : clearing)
            std::printf("search_ms %.3f\n", ms);
        for (const double ms : typing)
            std::printf("typing_ms %.3f\n", ms);
        for (const double ms : autosave)
            std::printf("autosave_ms %.3f\n", ms);
        std::printf("rss_mib %.1f\n", MemoryUsage::residentMiB());
        return 0;
    }

    const Stats s = stats(search), c = stats(clearing), t = stats(typing), a = stats(autosave);
    std::printf("%d prompts, platform %s\n", count, qPrintable(QGuiApplication::platformName()));
    std::printf("  %-46s %8.1f ms (process start: %.1f ms)\n", "launch to first painted window", launchMs,
                processLaunchMs);
    std::printf("  %-46s %8.1f ms median, %.1f ms worst\n", "search keystroke to results painted", s.median, s.worst);
    std::printf("  %-46s %8.1f ms median, %.1f ms worst\n", "deleting query keystroke to painted", c.median, c.worst);
    std::printf("  %-46s %8.1f ms median, %.1f ms worst\n", "editor keystroke to painted", t.median, t.worst);
    std::printf("  %-46s %8.1f ms median, %.1f ms worst\n", "autosave: save, reload, refresh, paint", a.median, a.worst);
    std::printf("  %-46s %8.1f MiB\n", "resident memory", MemoryUsage::residentMiB());
    return 0;
}
