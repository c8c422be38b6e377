#include "PromptLibrary.h"
#include "TestFiles.h"
#include "TestMounts.h"
#include "platform/Trash.h"

#include <QRegularExpression>
#include <QElapsedTimer>
#include <QStorageInfo>
#include <QThread>
#include <QUrl>

#include <atomic>
#include <thread>

#include <sys/stat.h>

using TestFiles::read;
using TestFiles::write;

// Trashing as a new user would meet it: a fresh home with no ~/.local/share,
// a library on another mount, and a working directory somewhere unrelated.
// The items must land in the home Trash, restorable, and nowhere else.
class TestTrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void sameMount();
    void acrossMounts();
    void failureKeepsTheOriginal();
    void longNames();
    void specialFilesAcrossMounts();
    void failedMoveAcrossMountsChangesNothing();

private:
    QString trash() const { return m_home->path() + u"/.local/share/Trash"; }
    // The original path a .trashinfo records, and the time it gives.
    QString trashedFrom(const QString &name) const;
    void checkTrashed(const QString &original, const QString &name, const QByteArray &content);

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_cwd;
    QByteArray m_oldHome;
    QByteArray m_oldDataHome;
    QString m_oldCwd;
};

void TestTrash::init()
{
    m_oldHome = qgetenv("HOME");
    m_oldDataHome = qgetenv("XDG_DATA_HOME");
    m_oldCwd = QDir::currentPath();
    m_home = std::make_unique<QTemporaryDir>();
    m_cwd = std::make_unique<QTemporaryDir>();
    qputenv("HOME", QFile::encodeName(m_home->path()));
    qunsetenv("XDG_DATA_HOME");
    QVERIFY(QDir::setCurrent(m_cwd->path()));
    QVERIFY(!QFileInfo::exists(m_home->path() + u"/.local"));
}

void TestTrash::cleanup()
{
    QDir::setCurrent(m_oldCwd);
    qputenv("HOME", m_oldHome);
    if (m_oldDataHome.isNull())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", m_oldDataHome);
    // Nothing may appear in the working directory.
    QVERIFY(QDir(m_cwd->path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

QString TestTrash::trashedFrom(const QString &name) const
{
    const QString info = QString::fromUtf8(read(trash() + u"/info/" + name + u".trashinfo"));
    static const QRegularExpression format(QStringLiteral(
        "^\\[Trash Info\\]\nPath=([^\n]+)\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n$"));
    const QRegularExpressionMatch match = format.match(info);
    return match.hasMatch() ? QUrl::fromPercentEncoding(match.captured(1).toUtf8()) : u"<bad info> " + info;
}

void TestTrash::checkTrashed(const QString &original, const QString &name, const QByteArray &content)
{
    QVERIFY(!QFileInfo::exists(original));
    QCOMPARE(read(trash() + u"/files/" + name), content);
    QCOMPARE(trashedFrom(name), original);
}

void TestTrash::sameMount()
{
    const QString root = m_home->path() + u"/Prompts with space%";
    write(root + u"/Inbox/a.md", "first");
    PromptLibrary library(QUrl::fromLocalFile(root));
    library.deletePrompt(*library.prompt(QStringLiteral("Inbox/a.md")));
    QVERIFY(!library.prompt(QStringLiteral("Inbox/a.md")));
    checkTrashed(root + u"/Inbox/a.md", QStringLiteral("a.md"), "first");

    // The Trash is private to the user, as the desktop creates it.
    for (const QString &folder : QStringList{m_home->path() + u"/.local", trash(), trash() + u"/files"}) {
        struct stat st;
        QCOMPARE(::stat(QFile::encodeName(folder).constData(), &st), 0);
        QCOMPARE(st.st_mode & 0777, 0700u);
    }

    // A second item of the same name gets a name of its own.
    write(root + u"/Inbox/a.md", "second");
    library.reload();
    library.deletePrompt(*library.prompt(QStringLiteral("Inbox/a.md")));
    checkTrashed(root + u"/Inbox/a.md", QStringLiteral("a 2.md"), "second");
    QCOMPARE(read(trash() + u"/files/a.md"), "first");

    // Restoring is moving the item back to the recorded path.
    QVERIFY(QFile::rename(trash() + u"/files/a.md", trashedFrom(QStringLiteral("a.md"))));
    library.reload();
    QCOMPARE(library.prompt(QStringLiteral("Inbox/a.md"))->body, u"first");
}

void TestTrash::acrossMounts()
{
    // /dev/shm is a separate tmpfs on Linux machines; the home is not on it.
    const QString shm = QStringLiteral("/dev/shm");
    if (!QFileInfo(shm).isDir() || QStorageInfo(shm) == QStorageInfo(m_home->path()))
        QSKIP("No second mount to trash from");
    const QStringList before = QDir(shm).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);

    QTemporaryDir other(shm + u"/vesk-trash-XXXXXX");
    QVERIFY(other.isValid());
    const QString root = other.path() + u"/prompts";
    write(root + u"/Work/a.md", "prompt", TestFiles::at(0));
    write(root + u"/Work/.vesk-order", "a.md\n");
    write(root + u"/Work/nested/deep.txt", "deep");
    QVERIFY(QFile::link(QStringLiteral("a.md"), root + u"/Work/link.md"));
    write(root + u"/Inbox/b.md", "single");
    PromptLibrary library(QUrl::fromLocalFile(root));

    library.deletePrompt(*library.prompt(QStringLiteral("Inbox/b.md")));
    checkTrashed(root + u"/Inbox/b.md", QStringLiteral("b.md"), "single");

    library.deleteProject(*library.project(QStringLiteral("Work")));
    QVERIFY(!library.project(QStringLiteral("Work")));
    QVERIFY(!QFileInfo::exists(root + u"/Work"));
    const QString work = trash() + u"/files/Work";
    QCOMPARE(trashedFrom(QStringLiteral("Work")), root + u"/Work");
    QCOMPARE(read(work + u"/a.md"), "prompt");
    QCOMPARE(QFileInfo(work + u"/a.md").lastModified(), TestFiles::at(0));
    QCOMPARE(read(work + u"/.vesk-order"), "a.md\n");
    QCOMPARE(read(work + u"/nested/deep.txt"), "deep");
    QCOMPARE(QFileInfo(work + u"/link.md").symLinkTarget(), work + u"/a.md");

    // No per-volume trash folder appears on the other mount.
    QStringList after = QDir(shm).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    after.removeAll(QFileInfo(other.path()).fileName());
    QCOMPARE(after, before);
    QCOMPARE(QDir(other.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"prompts"});
}

void TestTrash::failureKeepsTheOriginal()
{
    // ~/.local/share is a file: the Trash cannot be made, even by root.
    write(m_home->path() + u"/.local/share", "in the way");
    const QString root = m_home->path() + u"/lib";
    write(root + u"/Inbox/a.md", "kept");
    PromptLibrary library(QUrl::fromLocalFile(root));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: delete failed for Inbox/a\\.md: .+")));
    library.deletePrompt(*library.prompt(QStringLiteral("Inbox/a.md")));
    QCOMPARE(read(root + u"/Inbox/a.md"), "kept");
    QVERIFY(library.prompt(QStringLiteral("Inbox/a.md")));

    QString error;
    QVERIFY(!Trash::moveToTrash(root + u"/missing.md", &error));
    QVERIFY(!error.isEmpty());
}

void TestTrash::longNames()
{
    // The longest names a file system allows: the Trash entry and its
    // ".trashinfo" must still fit, so the entry gets a shorter name.
    const QString root = m_home->path() + u"/lib";
    const QString ascii = QString(252, u'a') + u".md";          // 255 bytes
    const QString wide = QString(125, QChar(0xE9)) + u".md";   // 253 bytes, two per letter
    const QString folder = QString(255, u'w');
    write(root + u"/Inbox/" + ascii, "ascii");
    write(root + u"/Inbox/" + wide, "wide");
    write(root + u"/" + folder + u"/p.md", "in a long folder");
    PromptLibrary library(QUrl::fromLocalFile(root));

    library.deletePrompt(*library.prompt(u"Inbox/" + ascii));
    library.deletePrompt(*library.prompt(u"Inbox/" + wide));
    library.deleteProject(*library.project(folder));
    QVERIFY(library.prompts().isEmpty());
    QCOMPARE(library.projects().size(), 1);

    // A second item of the same long name gets a name of its own as well.
    write(root + u"/Inbox/" + ascii, "again");
    library.reload();
    library.deletePrompt(*library.prompt(u"Inbox/" + ascii));
    QVERIFY(!QFileInfo::exists(root + u"/Inbox/" + ascii));

    const QStringList trashed = QDir(trash() + u"/files").entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    QCOMPARE(trashed.size(), 4);
    QMap<QString, QByteArray> contentByOrigin;
    for (const QString &name : trashed) {
        QVERIFY2(QFile::encodeName(name + u".trashinfo").size() <= 255, qPrintable(name));
        const QString origin = trashedFrom(name);
        const QString path = trash() + u"/files/" + name;
        const QByteArray content = QFileInfo(path).isDir() ? read(path + u"/p.md") : read(path);
        contentByOrigin[origin] += content + ';';
    }
    QCOMPARE(contentByOrigin.value(root + u"/Inbox/" + wide), "wide;");
    QCOMPARE(contentByOrigin.value(root + u"/" + folder), "in a long folder;");
    const QByteArray both = contentByOrigin.value(root + u"/Inbox/" + ascii);
    QVERIFY2(both == "ascii;again;" || both == "again;ascii;", both.constData());
}

void TestTrash::specialFilesAcrossMounts()
{
    // A folder holding a named pipe, trashed from another mount: copying it
    // must not wait for a writer that never comes.
    ScratchMount disk(1 << 20);
    SKIP_UNLESS_MOUNTED(disk);
    const QString root = disk.path() + u"/lib";
    write(root + u"/Work/a.md", "prompt");
    QCOMPARE(::mkfifo(QFile::encodeName(root + u"/Work/pipe").constData(), 0600), 0);
    PromptLibrary library(QUrl::fromLocalFile(root));

    std::atomic<bool> done{false};
    std::thread watchdog([&] {
        for (int i = 0; i < 200 && !done; ++i)
            QThread::msleep(50);
        QFile writer(root + u"/Work/pipe");
        if (!done) // unblock the copy so the failure is reported, not a hang
            (void)writer.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    });
    QElapsedTimer timer;
    timer.start();
    library.deleteProject(*library.project(QStringLiteral("Work")));
    done = true;
    watchdog.join();
    QVERIFY2(timer.elapsed() < 5000, "trashing a folder with a pipe in it hung");
    QVERIFY(!QFileInfo::exists(root + u"/Work"));
    QCOMPARE(read(trash() + u"/files/Work/a.md"), "prompt");
    struct stat st;
    QCOMPARE(::lstat(QFile::encodeName(trash() + u"/files/Work/pipe").constData(), &st), 0);
    QVERIFY(S_ISFIFO(st.st_mode));
}

void TestTrash::failedMoveAcrossMountsChangesNothing()
{
    // Either the whole folder reaches the Trash, or the original stays whole
    // and the Trash gains nothing, however often the user tries.
    ScratchMount disk(1 << 20);
    SKIP_UNLESS_MOUNTED(disk);
    const QString root = disk.path() + u"/lib";
    write(root + u"/Work/a.md", "first");
    write(root + u"/Work/z.md", "last");
    write(root + u"/Work/.vesk-order", "z.md\na.md\n");
    QVERIFY(QDir().mkpath(root + u"/Work/inner"));
    PromptLibrary library(QUrl::fromLocalFile(root));
    auto trashIsEmpty = [&] {
        return QDir(trash() + u"/files").isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
            && QDir(trash() + u"/info").isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    };
    auto originalIsWhole = [&] {
        return read(root + u"/Work/a.md") == "first" && read(root + u"/Work/z.md") == "last"
            && read(root + u"/Work/.vesk-order") == "z.md\na.md\n";
    };

    // A mount point inside the folder cannot be removed: found only after
    // the files around it are gone.
    write(root + u"/Work/inner/deep.md", "deep");
    {
        NestedMount busy(root + u"/Work/inner");
        QVERIFY(busy.isMounted());
        write(root + u"/Work/inner/on-the-mount.md", "mounted");
        for (int attempt = 0; attempt < 2; ++attempt) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: deleteProject failed: .+")));
            library.deleteProject(*library.project(QStringLiteral("Work")));
            QVERIFY(originalIsWhole());
            QCOMPARE(read(root + u"/Work/inner/on-the-mount.md"), "mounted");
            QVERIFY(trashIsEmpty());
            QCOMPARE(library.project(QStringLiteral("Work"))->promptCount, 2);
        }
    }
    QCOMPARE(read(root + u"/Work/inner/deep.md"), "deep");

    // A read-only file system: nothing can be removed at all.
    QVERIFY(disk.setReadOnly(true));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: deleteProject failed: .+")));
    library.deleteProject(*library.project(QStringLiteral("Work")));
    QVERIFY(originalIsWhole());
    QVERIFY(trashIsEmpty());
    QVERIFY(disk.setReadOnly(false));

    // And when nothing is in the way, all of it goes.
    library.deleteProject(*library.project(QStringLiteral("Work")));
    QVERIFY(!QFileInfo::exists(root + u"/Work"));
    QCOMPARE(read(trash() + u"/files/Work/z.md"), "last");
    QCOMPARE(read(trash() + u"/files/Work/inner/deep.md"), "deep");
}

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_trash.moc"
