// The hand-off end to end on a real X server (Xvfb, started here on a free
// display): a desktop entry with Claude's identifier starts a small app with
// a text field, and with auto-paste on the prompt must arrive in that field
// through the real clipboard and a real XTest keystroke. Without the entry,
// the web client's address must reach the default browser.
//
// Skipped (exit code 77) only when Xvfb is not installed.

#include "AppState.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "platform/Accessibility.h"
#include "ui/detail/PromptDetailView.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSettings>
#include <QStandardPaths>
#include <QToolButton>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using TestFiles::at;
using TestFiles::read;
using TestFiles::write;

namespace {

// Xvfb on the first free display number, which it reports through -displayfd.
class Xvfb
{
public:
    bool start()
    {
        int fds[2];
        if (pipe(fds) != 0)
            return false;
        m_pid = fork();
        if (m_pid < 0)
            return false;
        if (m_pid == 0) {
            close(fds[0]);
            const int quiet = open("/dev/null", O_WRONLY);
            dup2(quiet, STDOUT_FILENO);
            dup2(quiet, STDERR_FILENO); // its keymap warnings
            const std::string fd = std::to_string(fds[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
                   static_cast<char *>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        std::string number;
        pollfd wait{fds[0], POLLIN, 0};
        while (number.find('\n') == std::string::npos && poll(&wait, 1, 20000) > 0) {
            char buffer[16];
            const ssize_t got = ::read(fds[0], buffer, sizeof buffer);
            if (got <= 0)
                break;
            number.append(buffer, size_t(got));
        }
        close(fds[0]);
        if (number.find('\n') == std::string::npos)
            return false;
        m_display = ':' + number.substr(0, number.find('\n'));
        return true;
    }

    void stop()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            waitpid(m_pid, nullptr, 0);
        }
    }

    const std::string &display() const { return m_display; }

private:
    pid_t m_pid = -1;
    std::string m_display;
};

const QByteArray promptText = "Summarise this thread — in three bullets, über-short.\nThen ask one question ✓";
// The body as the file holds it: the blank line after the front matter is its first line.
const QByteArray promptBody = "\n" + promptText;

} // namespace

class TestHandoffEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void pasteArrivesInTheDesktopApp();
    void missingAppOpensTheWebClientInTheBrowser();
    void waylandSessionSendsNoKeystroke();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    // The throwaway desktop entry: Claude's identifier, starting the target app.
    void installTarget()
    {
        write(path("data/applications/com.anthropic.claudefordesktop.desktop"),
              "[Desktop Entry]\nType=Application\nName=Claude\nExec=\"" + QByteArray(VESK_HANDOFF_TARGET)
                  + "\" --out \"" + m_received.toUtf8() + "\" %U\n");
    }
    void makeView();

    QTemporaryDir m_settingsDir;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_received;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<PromptDetailView> m_view;
};

void TestHandoffEndToEnd::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), u"xcb");
    QCoreApplication::setOrganizationName(QStringLiteral("VeskTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskHandoffEndToEnd"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestHandoffEndToEnd::init()
{
    QSettings().clear();
    m_dir = std::make_unique<QTemporaryDir>();
    m_received = path("received.txt");
    // XDG folders of the test's own: no installed app or browser of this
    // machine takes part.
    QDir().mkpath(path("data/applications"));
    QDir().mkpath(path("system"));
    QDir().mkpath(path("config"));
    qputenv("XDG_DATA_HOME", path("data").toUtf8());
    qputenv("XDG_DATA_DIRS", path("system").toUtf8());
    qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
    qputenv("XDG_SESSION_TYPE", "x11");
    write(path("prompts/Inbox/handoff.md"), "---\ntitle: Hand-off\n---\n\n" + promptText, at(1));
}

void TestHandoffEndToEnd::cleanup()
{
    m_view.reset();
    m_state.reset();
    m_library.reset();
    // Let a keystroke still due land before the next test's windows appear.
    QTest::qWait(600);
    const int target = read(m_received + u".pid").toInt();
    if (target > 0)
        kill(target, SIGTERM);
}

void TestHandoffEndToEnd::makeView()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(path("prompts")));
    m_state = std::make_unique<AppState>(m_library.get());
    m_view = std::make_unique<PromptDetailView>(m_state.get());
    m_view->setPrompt(*m_library->prompt(QStringLiteral("Inbox/handoff.md")));
    m_view->resize(700, 400);
    m_view->show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    QGuiApplication::clipboard()->setText(QStringLiteral("stale"));
}

void TestHandoffEndToEnd::pasteArrivesInTheDesktopApp()
{
    QVERIFY(Accessibility::current().isTrusted()); // X11 with XTest
    installTarget();
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    makeView();

    m_view->handoffButton()->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening Claude");
    // Started by its desktop entry, brought to the front, pasted into.
    QTRY_COMPARE_WITH_TIMEOUT(read(m_received), promptBody, 15000);
    QCOMPARE(m_view->editor()->toPlainText(), QString::fromUtf8(promptBody)); // not pasted into Vesk
}

void TestHandoffEndToEnd::missingAppOpensTheWebClientInTheBrowser()
{
    // The browser is a script that records the address it is given, set as
    // the desktop's default for web addresses and as $BROWSER.
    const QString visited = path("visited.txt");
    const QString browser = path("browser.sh");
    write(browser, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> \"" + visited.toUtf8() + "\"\n");
    QFile::setPermissions(browser, QFile::permissions(browser) | QFileDevice::ExeOwner);
    write(path("data/applications/recording-browser.desktop"),
          // Unquoted: xdg-open's own launcher takes the first word as it is.
          "[Desktop Entry]\nType=Application\nName=Browser\nExec=" + browser.toUtf8() + " %u\n"
          "MimeType=x-scheme-handler/http;x-scheme-handler/https;\n");
    write(path("config/mimeapps.list"), "[Default Applications]\nx-scheme-handler/https=recording-browser.desktop\n"
                                        "x-scheme-handler/http=recording-browser.desktop\n");
    qputenv("BROWSER", browser.toUtf8());

    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("chatgpt"));
    makeView();
    m_view->handoffButton()->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening ChatGPT");
    QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromUtf8(promptBody));
    QTRY_COMPARE_WITH_TIMEOUT(read(visited), QByteArray("https://chatgpt.com/\n"), 15000);

    // Claude's entry is missing too: its web client.
    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("claude"));
    m_view->handoffButton()->click();
    QTRY_COMPARE_WITH_TIMEOUT(read(visited), QByteArray("https://chatgpt.com/\nhttps://claude.ai/\n"), 15000);
    qunsetenv("BROWSER");
}

void TestHandoffEndToEnd::waylandSessionSendsNoKeystroke()
{
    qputenv("XDG_SESSION_TYPE", "wayland");
    QVERIFY(!Accessibility::current().isTrusted());
    installTarget();
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    makeView();
    m_view->handoffButton()->click();
    // The app starts (it writes its pid) but nothing is pasted into it.
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_received + u".pid"), 15000);
    QTest::qWait(1500);
    QCOMPARE(read(m_received), QByteArray("<missing>"));
}

int main(int argc, char *argv[])
{
    if (QStandardPaths::findExecutable(QStringLiteral("Xvfb")).isEmpty()) {
        std::printf("SKIP: Xvfb is not installed (scripts/setup.sh installs it), so the end-to-end hand-off did not run\n");
        return 77;
    }
    Xvfb server;
    if (!server.start()) {
        std::fprintf(stderr, "FAIL: Xvfb did not start\n");
        server.stop();
        return 1;
    }
    qputenv("DISPLAY", QByteArray::fromStdString(server.display()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("XDG_CURRENT_DESKTOP"); // the desktop's own launchers stay out of it
    int status = 0;
    {
        QApplication app(argc, argv);
        TestHandoffEndToEnd test;
        status = QTest::qExec(&test, argc, argv);
    }
    server.stop();
    return status;
}

#include "tst_handoff_e2e.moc"
