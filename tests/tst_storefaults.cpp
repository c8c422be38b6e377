#include "FrontMatter.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "TestMounts.h"

#include <QProcess>
#include <QRegularExpression>
#include <QUrl>

#include <atomic>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <sys/stat.h>
#include <unistd.h>

using TestFiles::read;
using TestFiles::write;

// The store under faults a user's machine produces: a full disk, another
// process racing for the same name, files that are not files, leftovers of a
// killed save. Nothing the user had may be lost, and nothing may hang.
class TestStoreFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullDiskKeepsEveryFile();
    void racingMovesNeverReplaceAPrompt();
    void movesAcrossFileSystems();
    void onlyRegularFilesAreRead();
    void orderWritersNeverRepeatAnEntry();
    void staleTemporaryFilesAreCleared();
    void readOnlyFilesStayAsTheyAre();

private:
    struct Run
    {
        bool finished = false;
        int exitCode = -1;
        QByteArray out;
        QByteArray err;
    };
    static Run cli(const QString &root, const QStringList &args, const QString &home = {});
    static QStringList entries(const QString &folder);
};

TestStoreFaults::Run TestStoreFaults::cli(const QString &root, const QStringList &args, const QString &home)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{message}"));
    if (!home.isEmpty()) {
        env.insert(QStringLiteral("HOME"), home);
        env.remove(QStringLiteral("XDG_DATA_HOME"));
    }
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(VESK_CLI_PATH), QStringList{QStringLiteral("--root"), root} + args);
    Run run;
    run.finished = process.waitForFinished(20000);
    if (!run.finished) {
        process.kill();
        process.waitForFinished();
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// Every name in a folder, hidden ones included.
QStringList TestStoreFaults::entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

void TestStoreFaults::fullDiskKeepsEveryFile()
{
    ScratchMount disk(256 * 1024);
    SKIP_UNLESS_MOUNTED(disk);
    const QString root = disk.path() + u"/lib";
    const QByteArray original = "---\ntitle: Kept\n---\n\nThe words the user wrote.\n";
    write(root + u"/Inbox/a.md", original);
    write(root + u"/Inbox/.vesk-order", "a.md\n");
    write(root + u"/.vesk-pinned-order", "Inbox/a.md\n");
    PromptLibrary library(QUrl::fromLocalFile(root));

    // Fill the disk to the last block.
    {
        QFile filler(disk.path() + u"/filler");
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray block(4096, 'x');
        while (filler.write(block) == block.size()) {
        }
    }

    // A save under the size of any write buffer, a new prompt, order files.
    Prompt edited = *library.prompt(QStringLiteral("Inbox/a.md"));
    edited.body = u'\n' + QString(8000, u'y');
    QTest::ignoreMessage(QtWarningMsg, "Vesk: save failed for Inbox/a.md: No space left on device");
    library.save(edited);
    QTest::ignoreMessage(QtWarningMsg, "Vesk: create failed: No space left on device");
    QVERIFY(!library.createPrompt(*library.project(QStringLiteral("Inbox"))));
    library.setPromptOrder(QStringLiteral("Inbox"), {QStringLiteral("b.md"), QStringLiteral("a.md")});
    PromptLibrary::writeOrderFile(root + u"/.vesk-pinned-order", {QStringLiteral("Work/x.md")});

    QCOMPARE(read(root + u"/Inbox/a.md"), original);
    QCOMPARE(read(root + u"/Inbox/.vesk-order"), "a.md\n");
    QCOMPARE(read(root + u"/.vesk-pinned-order"), "Inbox/a.md\n");
    QCOMPARE(entries(root + u"/Inbox"), (QStringList{".vesk-order", "a.md"}));
    QCOMPARE(library.prompt(QStringLiteral("Inbox/a.md"))->frontMatter.title, u"Kept");

    // The command line says so and exits 1.
    const Run pin = cli(root, {QStringLiteral("pin"), QStringLiteral("Inbox/a.md")});
    QVERIFY(pin.finished);
    QCOMPARE(pin.exitCode, 1);
    QVERIFY2(pin.err.contains("No space left on device"), pin.err.constData());
    const Run created = cli(root, {QStringLiteral("new"), QStringLiteral("--title"), QStringLiteral("T")});
    QCOMPARE(created.exitCode, 1);
    QCOMPARE(read(root + u"/Inbox/a.md"), original);
    QCOMPARE(entries(root + u"/Inbox"), (QStringList{".vesk-order", "a.md"}));

    // With room again, the same save goes through.
    QVERIFY(QFile::remove(disk.path() + u"/filler"));
    library.save(edited);
    QCOMPARE(library.prompt(QStringLiteral("Inbox/a.md"))->body, edited.body);
}

void TestStoreFaults::racingMovesNeverReplaceAPrompt()
{
    // Two processes move a Note.md each into the same project at the same
    // moment. Whatever the interleaving, both notes must survive.
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    for (int round = 0; round < 300; ++round) {
        QDir(root).removeRecursively();
        write(root + u"/A/Note.md", "from A");
        write(root + u"/B/Note.md", "from B");
        QVERIFY(QDir().mkpath(root + u"/C"));
        PromptLibrary first(QUrl::fromLocalFile(root));
        PromptLibrary second(QUrl::fromLocalFile(root));
        const Prompt fromA = *first.prompt(QStringLiteral("A/Note.md"));
        const Prompt fromB = *second.prompt(QStringLiteral("B/Note.md"));
        const Project target = *first.project(QStringLiteral("C"));

        std::atomic<int> ready{0};
        auto move = [&](PromptLibrary *library, const Prompt &prompt) {
            ++ready;
            while (ready < 2) {
            }
            library->movePrompt(prompt, target);
        };
        std::thread a(move, &first, fromA);
        std::thread b(move, &second, fromB);
        a.join();
        b.join();

        QStringList contents;
        for (const QString &name : entries(root + u"/C"))
            contents.append(QString::fromUtf8(read(root + u"/C/" + name)));
        contents.sort();
        QCOMPARE(contents, (QStringList{"from A", "from B"}));
        QCOMPARE(entries(root + u"/C"), (QStringList{"Note 2.md", "Note.md"}));
    }
}

void TestStoreFaults::movesAcrossFileSystems()
{
    // A project folder that is a mount point of its own: moving into it
    // crosses file systems, as a file manager's move does.
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    write(root + u"/Inbox/a.md", "---\ntitle: A\n---\n\nbody\n", TestFiles::at(0));
    write(root + u"/Inbox/b.markdown", "b", TestFiles::at(10));
    QVERIFY(QDir().mkpath(root + u"/Other"));
    NestedMount other(root + u"/Other");
    if (!other.isMounted())
        QSKIP("cannot mount a tmpfs here (needs root)");
    write(root + u"/Other/b.markdown", "already there");
    PromptLibrary library(QUrl::fromLocalFile(root));

    const std::optional<Prompt> moved =
        library.movePrompt(*library.prompt(QStringLiteral("Inbox/a.md")), *library.project(QStringLiteral("Other")));
    QVERIFY(moved);
    QCOMPARE(moved->id, u"Other/a.md");
    QCOMPARE(moved->body, u"\nbody\n");
    QCOMPARE(moved->modifiedAt, TestFiles::at(0));
    QVERIFY(!QFileInfo::exists(root + u"/Inbox/a.md"));

    const std::optional<Prompt> numbered = library.movePrompt(*library.prompt(QStringLiteral("Inbox/b.markdown")),
                                                              *library.project(QStringLiteral("Other")));
    QVERIFY(numbered);
    QCOMPARE(numbered->id, u"Other/b 2.md");
    QCOMPARE(read(root + u"/Other/b.markdown"), "already there");
    QCOMPARE(entries(root + u"/Inbox"), QStringList{});
    QCOMPARE(entries(root + u"/Other"), (QStringList{"a.md", "b 2.md", "b.markdown"}));
}

void TestStoreFaults::onlyRegularFilesAreRead()
{
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    write(root + u"/Inbox/good.md", "---\ntitle: Good\n---\n");
    QVERIFY(QFile::link(QStringLiteral("good.md"), root + u"/Inbox/link.md"));
    QCOMPARE(::mkfifo(QFile::encodeName(root + u"/Inbox/fifo.md").constData(), 0644), 0);
    QCOMPARE(::mkfifo(QFile::encodeName(root + u"/Inbox/.vesk-order").constData(), 0644), 0);
    QCOMPARE(::mkfifo(QFile::encodeName(root + u"/.vesk-sections-order").constData(), 0644), 0);
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), root + u"/Inbox/zero.md"));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), root + u"/.vesk-pinned-order"));
    {
        // Sparse, so it costs no disk: far beyond any prompt a person writes.
        QFile huge(root + u"/Inbox/huge.md");
        QVERIFY(huge.open(QIODevice::WriteOnly));
        QVERIFY(huge.resize(qint64(3) << 30));
    }

    const Run run = cli(root, {QStringLiteral("list")});
    QVERIFY2(run.finished, "loading the library hung");
    QCOMPARE(run.exitCode, 0);
    QList<QByteArray> listed = run.out.split('\n');
    std::sort(listed.begin(), listed.end());
    QCOMPARE(listed, (QList<QByteArray>{"", "Inbox/good.md\tGood", "Inbox/link.md\tGood"}));
    const QList<QByteArray> logged = run.err.trimmed().split('\n');
    QCOMPARE(logged.size(), 1);
    QVERIFY2(logged.first().startsWith("Vesk: ") && logged.first().contains("huge.md"), run.err.constData());

    // The order files that are not files read as empty. The app writes a
    // real one in place of a pipe, but never through a link to a device.
    QTest::ignoreMessage(QtWarningMsg, "Vesk: skipped Inbox/huge.md: 3.0 GiB is more than a prompt file may hold "
                                       "(64.0 MiB)");
    PromptLibrary library(QUrl::fromLocalFile(root));
    QCOMPARE(library.sectionOrder(), QStringList{});
    QCOMPARE(library.pinnedOrder(), QStringList{});
    library.setPromptOrder(QStringLiteral("Inbox"), {QStringLiteral("link.md")});
    QCOMPARE(library.promptOrderByProject().value(QStringLiteral("Inbox")), QStringList{"link.md"});
    PromptLibrary::writeOrderFile(root + u"/.vesk-pinned-order", {QStringLiteral("Inbox/good.md")});
    QCOMPARE(QFileInfo(root + u"/.vesk-pinned-order").symLinkTarget(), u"/dev/zero");
    QVERIFY(QFileInfo(QStringLiteral("/dev/zero")).exists());
}

void TestStoreFaults::orderWritersNeverRepeatAnEntry()
{
    // Names that differ only in spaces around them, or that hold a line
    // break, would come back as a repeated line, which stops every start.
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    QVERIFY(QDir().mkpath(root + u"/Work"));
    QVERIFY(QDir().mkpath(root + u"/Work "));
    QVERIFY(QDir().mkpath(root + u"/Play\nWork"));
    PromptLibrary library(QUrl::fromLocalFile(root));
    QStringList ids;
    for (const Project &project : library.projects())
        ids.append(project.name);
    ids.prepend(QStringLiteral("@pinned"));
    PromptLibrary::writeOrderFile(library.orderFilePath(PromptLibrary::sectionOrderFileName), ids);
    library.reload();
    QCOMPARE(library.sectionOrder(), (QStringList{"@pinned", "Inbox", "Work"}));

    // The same for a project's order: the first of equal entries stays.
    const QString order = root + u"/Work/.vesk-order";
    PromptLibrary::writeOrderFile(order, {QStringLiteral("b.md"), QStringLiteral(" a.md"), QStringLiteral("b.md\t"),
                                          QStringLiteral("c.md\nb.md"), QStringLiteral("a.md")});
    QCOMPARE(PromptLibrary::readOrderFile(order), (QStringList{"b.md", "a.md"}));
}

void TestStoreFaults::staleTemporaryFilesAreCleared()
{
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    const QDateTime twoDaysAgo = QDateTime::currentDateTimeUtc().addDays(-2);
    write(root + u"/Inbox/.vesk-tmp-a1b2c3d4e5", "killed save", twoDaysAgo);
    write(root + u"/Work/.vesk-tmp-z9y8x7w6v5", "killed save", twoDaysAgo);
    write(root + u"/Work/.vesk-tmp-fresh00000", "a save under way");
    write(root + u"/Work/.keep", "not ours", twoDaysAgo);
    write(root + u"/Work/a.md", "prompt", twoDaysAgo);
    write(root + u"/.vesk-tmp-q1w2e3r4t5", "order file", twoDaysAgo);

    PromptLibrary library(QUrl::fromLocalFile(root));
    QCOMPARE(entries(root + u"/Inbox"), QStringList{});
    QCOMPARE(entries(root + u"/Work"), (QStringList{".keep", ".vesk-tmp-fresh00000", "a.md"}));
    QCOMPARE(entries(root), (QStringList{"Inbox", "Work"}));

    // A save leaves nothing beside the prompt but the prompt.
    Prompt edited = *library.prompt(QStringLiteral("Work/a.md"));
    edited.body = QStringLiteral("new");
    library.save(edited);
    QCOMPARE(entries(root + u"/Work"), (QStringList{".keep", ".vesk-tmp-fresh00000", "a.md"}));
}

void TestStoreFaults::readOnlyFilesStayAsTheyAre()
{
    // Root may write anything, so the check runs as an ordinary user: a
    // child process that gives up root (CI runs as root).
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    write(root + u"/Inbox/locked.md", "---\ntitle: Locked\n---\n\nkept\n");
    write(root + u"/Inbox/open.md", "---\ntitle: Open\n---\n\nold\n");
    QVERIFY(QFile::setPermissions(root + u"/Inbox/locked.md", QFile::ReadOwner | QFile::ReadOther | QFile::ReadGroup));
    for (const QString &path : QStringList{dir.path(), root, root + u"/Inbox"})
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x7777)));
    const uid_t nobody = 65534;
    QCOMPARE(::chown(QFile::encodeName(root + u"/Inbox/locked.md").constData(), nobody, nobody), 0);
    QCOMPARE(::chown(QFile::encodeName(root + u"/Inbox/open.md").constData(), nobody, nobody), 0);
    if (::geteuid() != 0)
        QSKIP("needs root to act as another user");

    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(nobody) != 0 || ::setuid(nobody) != 0)
            ::_exit(10);
        PromptLibrary library(QUrl::fromLocalFile(root));
        for (const char *id : {"Inbox/locked.md", "Inbox/open.md"}) {
            Prompt edited = *library.prompt(QString::fromLatin1(id));
            edited.body = QStringLiteral("\nnew\n");
            library.save(edited);
        }
        ::_exit(0);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    QCOMPARE(read(root + u"/Inbox/locked.md"), "---\ntitle: Locked\n---\n\nkept\n");
    QCOMPARE(read(root + u"/Inbox/open.md"), "---\ntitle: Open\n---\n\nnew\n");
    QCOMPARE(QFileInfo(root + u"/Inbox/open.md").ownerId(), nobody);
}

QTEST_GUILESS_MAIN(TestStoreFaults)
#include "tst_storefaults.moc"
