// Vesk quits however it is asked to, in a process of its own, and the words
// typed just before are on disk: within the 400 ms before the delayed save,
// a quit, a closed window, a signal and a deactivation each write them.
#include "TestFiles.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace TestFiles;

class TestQuitting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void pendingWordsAreWrittenOnQuit_data();
    void pendingWordsAreWrittenOnQuit();
    void deactivationWritesThePendingWords();
    void secondStartHandsOverToTheFirst();

private:
    QString promptPath() const { return m_dir->path() + u"/Inbox/note.md"; }
    bool start(QProcess &process, const QString &mode);

    std::unique_ptr<QTemporaryDir> m_dir;
    const QString typed = QStringLiteral(" and the last words");
};

void TestQuitting::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    write(promptPath(), "---\ntitle: Note\n---\n\nFirst line.");
}

bool TestQuitting::start(QProcess &process, const QString &mode)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("HOME"), m_dir->path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir->path() + u"/config");
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(VESK_QUIT_TARGET), {m_dir->path(), QStringLiteral("Inbox/note.md"), typed, mode});
    if (!process.waitForStarted(5000))
        return false;
    QByteArray out;
    while (!out.contains("typed\n") && process.waitForReadyRead(10000))
        out += process.readAllStandardOutput();
    return out.contains("typed\n");
}

void TestQuitting::pendingWordsAreWrittenOnQuit_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl+Q") << QStringLiteral("ctrl-q") << 0;
    QTest::newRow("closing the window") << QStringLiteral("close") << 0;
    QTest::newRow("SIGTERM (logout)") << QStringLiteral("signal") << int(SIGTERM);
    QTest::newRow("SIGHUP (closed terminal)") << QStringLiteral("signal") << int(SIGHUP);
    QTest::newRow("SIGINT (Ctrl+C)") << QStringLiteral("signal") << int(SIGINT);
}

void TestQuitting::pendingWordsAreWrittenOnQuit()
{
    QFETCH(QString, mode);
    QFETCH(int, signal);
    QProcess vesk;
    QVERIFY(start(vesk, mode));
    if (signal)
        QCOMPARE(::kill(pid_t(vesk.processId()), signal), 0);
    QVERIFY2(vesk.waitForFinished(10000), "Vesk did not quit");
    QCOMPARE(vesk.exitStatus(), QProcess::NormalExit);
    QCOMPARE(vesk.exitCode(), 0);
    QCOMPARE(read(promptPath()), QByteArray("---\ntitle: Note\n---\n\nFirst line." + typed.toUtf8()));
}

void TestQuitting::deactivationWritesThePendingWords()
{
    QProcess vesk;
    QVERIFY(start(vesk, QStringLiteral("deactivate")));
    QByteArray out;
    while (!out.contains("deactivated") && vesk.waitForReadyRead(5000))
        out += vesk.readAllStandardOutput();
    QVERIFY(out.contains("deactivated"));
    // Killed outright: only what deactivation wrote can be there.
    vesk.kill();
    QVERIFY(vesk.waitForFinished(5000));
    QCOMPARE(read(promptPath()), QByteArray("---\ntitle: Note\n---\n\nFirst line." + typed.toUtf8()));
}

void TestQuitting::secondStartHandsOverToTheFirst()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("HOME"), m_dir->path());
    env.insert(QStringLiteral("XDG_DATA_HOME"), m_dir->path() + u"/data");
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir->path() + u"/config");
    QDir().mkpath(m_dir->path() + u"/runtime");
    QFile::setPermissions(m_dir->path() + u"/runtime", QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir->path() + u"/runtime");
    const QString channel = m_dir->path() + u"/runtime/io.vesk.Vesk.instance";
    const auto launch = [&](QProcess &process) {
        process.setProcessEnvironment(env);
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QStringLiteral(VESK_APP_PATH), {});
        return process.waitForStarted(5000);
    };

    QProcess first;
    QVERIFY(launch(first));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(channel), 10000);

    // The second start gives way at once; the first keeps running.
    QProcess second;
    QVERIFY(launch(second));
    QVERIFY2(second.waitForFinished(10000), "the second Vesk did not give way");
    QCOMPARE(second.exitCode(), 0);
    QCOMPARE(first.state(), QProcess::Running);

    // A Vesk that crashed leaves its channel behind: the next start takes it over.
    first.kill();
    QVERIFY(first.waitForFinished(5000));
    QVERIFY(QFileInfo::exists(channel));
    QProcess next;
    QVERIFY(launch(next));
    QTest::qWait(1500);
    QCOMPARE(next.state(), QProcess::Running);
    QProcess another;
    QVERIFY(launch(another));
    QVERIFY(another.waitForFinished(10000));
    QCOMPARE(another.exitCode(), 0);
    QCOMPARE(next.state(), QProcess::Running);
    ::kill(pid_t(next.processId()), SIGTERM);
    QVERIFY(next.waitForFinished(10000));
    QCOMPARE(next.exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestQuitting)
#include "tst_quitting.moc"
