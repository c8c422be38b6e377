#include "PromptLibrary.h"
#include "TestFiles.h"
#include "platform/Trash.h"

#include <QRegularExpression>
#include <QStorageInfo>
#include <QUrl>

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

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_trash.moc"
