// A prompt whose body is one very long line (a pasted log, minified JSON, a
// base64 blob): opening it to the first painted editor, a keystroke at its
// end to painted, and the autosave that follows.
//
//   bench_longline [MEGABYTES ...]     default 1 5

#include "AppState.h"
#include "PromptLibrary.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

class FirstPaint : public QObject
{
public:
    explicit FirstPaint(QWidget *widget) { widget->installEventFilter(this); }
    bool painted = false;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }
};

void settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

QByteArray oneLine(qsizetype bytes)
{
    // Words and punctuation as a pasted log line has them, no line break.
    static const QByteArray words[] = {"request", "id=4f2a", "status:", "200,", "latency", "12ms;", "user",
                                       "{\"k\":[1,2,3]}", "–", "naïve", "path=/v1/items"};
    QByteArray line;
    line.reserve(bytes + 32);
    for (size_t i = 0; line.size() < bytes; ++i)
        line += words[(i * 7) % std::size(words)] + ' ';
    line.truncate(bytes);
    return line;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("VeskBench"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskBench"));
    QTemporaryDir settingsDir;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
    QList<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.append(QByteArray(argv[i]).toInt());
    if (sizes.isEmpty())
        sizes = {1, 5};

    for (const int megabytes : sizes) {
        QTemporaryDir dir;
        const QString root = dir.path() + u"/prompts";
        QDir().mkpath(root + u"/Inbox");
        QFile file(root + u"/Inbox/long.md");
        if (!file.open(QIODevice::WriteOnly)
            || file.write("---\ntitle: Long line\n---\n\n" + oneLine(qsizetype(megabytes) << 20)) < 0)
            return 2;
        file.close();
        QThread::msleep(3100); // not "written a moment ago", which is always read again

        QElapsedTimer clock;
        clock.start();
        VeskApplication vesk(root);
        MainWindow *window = vesk.mainWindow();
        window->resize(1100, 760);
        vesk.state()->setSelectedPromptIDs({QStringLiteral("Inbox/long.md")});
        QPlainTextEdit *editor = window->promptDetail()->editor();
        FirstPaint firstPaint(editor->viewport());
        window->show();
        while (!firstPaint.painted)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        const double openMs = clock.nsecsElapsed() / 1e6;

        editor->setFocus();
        editor->moveCursor(QTextCursor::End);
        settle();
        std::vector<double> keys;
        for (int i = 0; i < 10; ++i) {
            const qint64 start = clock.nsecsElapsed();
            QTest::keyClick(editor, char('a' + i));
            settle();
            keys.push_back((clock.nsecsElapsed() - start) / 1e6);
        }
        const qint64 saveStart = clock.nsecsElapsed();
        vesk.state()->flushPendingSave();
        settle();
        const double saveMs = (clock.nsecsElapsed() - saveStart) / 1e6;
        std::sort(keys.begin(), keys.end());
        std::printf("%d MB on one line: open to painted %.1f ms; keystroke %.1f ms median, %.1f ms worst; "
                    "autosave %.1f ms\n",
                    megabytes, openMs, keys[keys.size() / 2], keys.back(), saveMs);
        std::fflush(stdout);
    }
    return 0;
}
