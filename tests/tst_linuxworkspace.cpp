#include "TestFiles.h"
#include "platform/DesktopEntry.h"
#include "platform/Workspace.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QVariantMap>

using TestFiles::read;
using TestFiles::write;

namespace {

const QString claudeID = QStringLiteral("com.anthropic.claudefordesktop");

// Stands in for a D-Bus activatable application: records each Activate.
class FakeApplicationService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    int activations = 0;

public Q_SLOTS:
    void Activate(const QVariantMap &platformData)
    {
        Q_UNUSED(platformData);
        ++activations;
    }
};

} // namespace

// How Linux finds and starts an assistant's desktop app: desktop entries in
// the XDG data folders, their Exec lines, D-Bus activation. Runs on a
// private session bus (dbus-run-session), with XDG folders of its own.
class TestLinuxWorkspace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void applicationFoldersFollowXdg();
    void readsTheDesktopEntryGroup();
    void execLineBecomesACommand();
    void execLineBecomesACommand_data();
    void findsTheFirstLaunchableEntry();
    void bundleIdentifierNamesTheEntry();
    void execEntryIsStartedThenReported();
    void dbusActivatableEntryIsActivated();
    void unansweredDBusNameFallsBackToExec();

private:
    QString home() const { return m_home->path(); }
    QString apps(const char *name) const { return home() + u"/applications/" + QString::fromLatin1(name); }
    // A script that writes its arguments, one per line, to `out`.
    QString recorder(const QString &out)
    {
        const QString script = home() + u"/record.sh";
        write(script, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"" + out.toUtf8() + ".tmp\"\n"
                      "mv \"" + out.toUtf8() + ".tmp\" \"" + out.toUtf8() + "\"\n");
        QFile::setPermissions(script, QFile::permissions(script) | QFileDevice::ExeOwner);
        return script;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_system;
};

void TestLinuxWorkspace::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    m_system = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", m_home->path().toUtf8());
    qputenv("XDG_DATA_DIRS", (m_system->path() + u"/one:" + m_system->path() + u"/two").toUtf8());
}

void TestLinuxWorkspace::applicationFoldersFollowXdg()
{
    QCOMPARE(DesktopEntry::applicationFolders(),
             (QStringList{home() + u"/applications", m_system->path() + u"/one/applications",
                          m_system->path() + u"/two/applications"}));
    // Unset, or relative (which the XDG base-directory rules ignore): the defaults.
    qputenv("XDG_DATA_HOME", "relative/share");
    qputenv("XDG_DATA_DIRS", "");
    QCOMPARE(DesktopEntry::applicationFolders(),
             (QStringList{QDir::homePath() + u"/.local/share/applications", QStringLiteral("/usr/local/share/applications"),
                          QStringLiteral("/usr/share/applications")}));
}

void TestLinuxWorkspace::readsTheDesktopEntryGroup()
{
    write(apps("a.desktop"), "# comment\n[Desktop Entry]\nType = Application\nName=Claude\nName[de]=Claudia\n"
                             "Comment=one\\stwo\\nthree\\\\four\nName=Second\n\n[Desktop Action new]\nExec=other\n");
    const std::optional<DesktopEntry> entry = DesktopEntry::read(apps("a.desktop"));
    QVERIFY(entry);
    QCOMPARE(entry->value(QStringLiteral("Type")), u"Application");
    QCOMPARE(entry->value(QStringLiteral("Name")), u"Claude"); // the first of a repeated key
    QCOMPARE(entry->value(QStringLiteral("Comment")), u"one two\nthree\\four");
    QVERIFY(entry->value(QStringLiteral("Exec")).isEmpty()); // the action's group is not the entry's
    QVERIFY(!entry->isLaunchable()); // no Exec, no D-Bus activation

    write(apps("none.desktop"), "[Desktop Action x]\nExec=x\n");
    QVERIFY(!DesktopEntry::read(apps("none.desktop")));
    QVERIFY(!DesktopEntry::read(apps("missing.desktop")));
}

void TestLinuxWorkspace::execLineBecomesACommand_data()
{
    QTest::addColumn<QByteArray>("exec");
    QTest::addColumn<QStringList>("command");
    QTest::newRow("plain") << QByteArray("claude-desktop") << QStringList{QStringLiteral("claude-desktop")};
    QTest::newRow("files and addresses dropped")
        << QByteArray("claude-desktop %U --flag %f %F %u") << QStringList{QStringLiteral("claude-desktop"), QStringLiteral("--flag")};
    QTest::newRow("deprecated codes dropped") << QByteArray("app %d %D %n %N %v %m") << QStringList{QStringLiteral("app")};
    QTest::newRow("code inside a word") << QByteArray("app --open=%u x") << QStringList{QStringLiteral("app"), QStringLiteral("--open="), QStringLiteral("x")};
    QTest::newRow("percent") << QByteArray("app 100%%") << QStringList{QStringLiteral("app"), QStringLiteral("100%")};
    QTest::newRow("name and icon")
        << QByteArray("app %c %i") << QStringList{QStringLiteral("app"), QStringLiteral("Claude"), QStringLiteral("--icon"), QStringLiteral("claude-icon")};
    QTest::newRow("quoted")
        << QByteArray("\"/opt/My App/run\" \"a b\" \"\" \"say \\\\\"hi\\\\\"\"")
        << QStringList{QStringLiteral("/opt/My App/run"), QStringLiteral("a b"), QString(), QStringLiteral("say \"hi\"")};
    QTest::newRow("escaped space") << QByteArray("env A=1\\s/usr/bin/app") << QStringList{QStringLiteral("env"), QStringLiteral("A=1"), QStringLiteral("/usr/bin/app")};
    QTest::newRow("extra spaces") << QByteArray("  app   x  ") << QStringList{QStringLiteral("app"), QStringLiteral("x")};
}

void TestLinuxWorkspace::execLineBecomesACommand()
{
    QFETCH(QByteArray, exec);
    QFETCH(QStringList, command);
    write(apps("e.desktop"), "[Desktop Entry]\nType=Application\nName=Claude\nIcon=claude-icon\nExec=" + exec + "\n");
    const std::optional<DesktopEntry> entry = DesktopEntry::read(apps("e.desktop"));
    QVERIFY(entry);
    QCOMPARE(entry->command(), command);

    // %k is the entry's own path.
    write(apps("k.desktop"), "[Desktop Entry]\nType=Application\nExec=app %k\n");
    QCOMPARE(DesktopEntry::read(apps("k.desktop"))->command(), (QStringList{QStringLiteral("app"), apps("k.desktop")}));
}

void TestLinuxWorkspace::findsTheFirstLaunchableEntry()
{
    const QString one = m_system->path() + u"/one/applications/";
    const QString two = m_system->path() + u"/two/applications/";
    QCOMPARE(DesktopEntry::find({QStringLiteral("x.desktop")}), QString());

    write(two + u"x.desktop", "[Desktop Entry]\nType=Application\nExec=x\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("x.desktop")}), QString(two + u"x.desktop"));
    write(one + u"x.desktop", "[Desktop Entry]\nType=Application\nExec=x-one\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("x.desktop")}), QString(one + u"x.desktop"));
    // The user's hidden entry hides the system's: not installed as far as the desktop goes.
    write(apps("x.desktop"), "[Desktop Entry]\nType=Application\nExec=x\nHidden=true\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("x.desktop")}), QString());
    // ...and the next name is tried.
    write(two + u"y.desktop", "[Desktop Entry]\nType=Application\nExec=y\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("x.desktop"), QStringLiteral("y.desktop")}), QString(two + u"y.desktop"));

    // Not an application, or its TryExec program missing: not launchable.
    write(one + u"link.desktop", "[Desktop Entry]\nType=Link\nURL=https://claude.ai/\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("link.desktop")}), QString());
    write(one + u"try.desktop", "[Desktop Entry]\nType=Application\nExec=x\nTryExec=vesk-no-such-program\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("try.desktop")}), QString());
    write(one + u"try.desktop", "[Desktop Entry]\nType=Application\nExec=x\nTryExec=sh\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("try.desktop")}), QString(one + u"try.desktop"));
    // D-Bus activation alone is enough.
    write(one + u"org.example.App.desktop", "[Desktop Entry]\nType=Application\nDBusActivatable=true\n");
    QCOMPARE(DesktopEntry::find({QStringLiteral("org.example.App.desktop")}), QString(one + u"org.example.App.desktop"));
}

void TestLinuxWorkspace::bundleIdentifierNamesTheEntry()
{
    Workspace::Applications &workspace = Workspace::Applications::current();
    QVERIFY(workspace.urlForApplication(claudeID).isEmpty());
    QVERIFY(workspace.urlForApplication(QStringLiteral("com.openai.chat")).isEmpty());

    // The names Claude's Linux packages use count as Claude.
    const QString system = m_system->path() + u"/one/applications/";
    write(system + u"claude-desktop.desktop", "[Desktop Entry]\nType=Application\nExec=claude-desktop %u\n");
    QCOMPARE(workspace.urlForApplication(claudeID), QUrl::fromLocalFile(system + u"claude-desktop.desktop"));
    write(system + u"com.anthropic.Claude.desktop", "[Desktop Entry]\nType=Application\nExec=claude-desktop %u\n");
    QCOMPARE(workspace.urlForApplication(claudeID), QUrl::fromLocalFile(system + u"com.anthropic.Claude.desktop"));
    // The identifier itself, as Flatpak names entries, comes first.
    write(apps("com.anthropic.claudefordesktop.desktop"), "[Desktop Entry]\nType=Application\nExec=flatpak run x\n");
    QCOMPARE(workspace.urlForApplication(claudeID), QUrl::fromLocalFile(apps("com.anthropic.claudefordesktop.desktop")));
    QVERIFY(workspace.urlForApplication(QStringLiteral("com.openai.chat")).isEmpty());

    write(apps("com.openai.chat.desktop"), "[Desktop Entry]\nType=Application\nExec=chat\n");
    QCOMPARE(workspace.urlForApplication(QStringLiteral("com.openai.chat")),
             QUrl::fromLocalFile(apps("com.openai.chat.desktop")));
}

void TestLinuxWorkspace::execEntryIsStartedThenReported()
{
    const QString out = home() + u"/args.txt";
    const QString script = recorder(out);
    const QString workDir = home() + u"/work";
    QDir().mkpath(workDir);
    write(apps("com.anthropic.claudefordesktop.desktop"),
          "[Desktop Entry]\nType=Application\nName=Claude\nPath=" + workDir.toUtf8() + "\nExec=\"" + script.toUtf8()
              + "\" --from-desktop %U \"two words\"\n");
    Workspace::Applications &workspace = Workspace::Applications::current();
    const QUrl location = workspace.urlForApplication(claudeID);
    QVERIFY(!location.isEmpty());
    int completions = 0;
    workspace.openApplication(location, [&completions] { ++completions; });
    QCOMPARE(completions, 1); // reported once the launch has started
    QTRY_COMPARE(read(out), QByteArray("--from-desktop\ntwo words\n"));

    // A broken entry still reports back: the paste step runs regardless.
    workspace.openApplication(QUrl::fromLocalFile(apps("gone.desktop")), [&completions] { ++completions; });
    QCOMPARE(completions, 2);
}

void TestLinuxWorkspace::dbusActivatableEntryIsActivated()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        QSKIP("No session bus: run under dbus-run-session, as CTest does");
    FakeApplicationService service;
    QVERIFY(bus.registerObject(QStringLiteral("/org/example/Claude_App"), &service, QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.example.Claude-App")));

    const QString out = home() + u"/args.txt";
    write(apps("org.example.Claude-App.desktop"), "[Desktop Entry]\nType=Application\nDBusActivatable=true\nExec=\""
                                                      + recorder(out).toUtf8() + "\" exec-ran\n");
    const std::optional<DesktopEntry> entry = DesktopEntry::read(apps("org.example.Claude-App.desktop"));
    QCOMPARE(entry->dbusName(), u"org.example.Claude-App");
    QCOMPARE(entry->dbusObjectPath(), u"/org/example/Claude_App");

    int completions = 0;
    Workspace::Applications::current().openApplication(QUrl::fromLocalFile(entry->path()),
                                                       [&completions] { ++completions; });
    QCOMPARE(completions, 0); // not before the application answers
    QTRY_COMPARE(completions, 1);
    QCOMPARE(service.activations, 1);
    QTest::qWait(200);
    QCOMPARE(read(out), QByteArray("<missing>")); // the Exec line was not needed
    bus.unregisterService(QStringLiteral("org.example.Claude-App"));
    bus.unregisterObject(QStringLiteral("/org/example/Claude_App"));
}

void TestLinuxWorkspace::unansweredDBusNameFallsBackToExec()
{
    if (!QDBusConnection::sessionBus().isConnected())
        QSKIP("No session bus: run under dbus-run-session, as CTest does");
    const QString out = home() + u"/args.txt";
    write(apps("org.example.Nobody.desktop"),
          "[Desktop Entry]\nType=Application\nDBusActivatable=true\nExec=\"" + recorder(out).toUtf8() + "\" exec-ran\n");
    int completions = 0;
    Workspace::Applications::current().openApplication(QUrl::fromLocalFile(apps("org.example.Nobody.desktop")),
                                                       [&completions] { ++completions; });
    QTRY_COMPARE(completions, 1);
    QTRY_COMPARE(read(out), QByteArray("exec-ran\n"));
}

QTEST_GUILESS_MAIN(TestLinuxWorkspace)
#include "tst_linuxworkspace.moc"
