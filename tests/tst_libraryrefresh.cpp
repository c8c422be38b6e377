#include "PromptLibrary.h"
#include "RecordingTrash.h"
#include "TestFiles.h"

#include <QRandomGenerator>
#include <QUrl>

#include <sys/stat.h>

using TestFiles::write;

// The refresh after the app's own writes looks only at what the change
// notification reports. Whatever the app and other programs do, its lists
// must equal those of a library loaded from scratch.
class TestLibraryRefresh : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matchesALoadFromScratch();
    void otherProgramsAreSeenAtTheNextReload();

private:
    static void compareWithFreshLoad(const PromptLibrary &library, const QString &root, const QString &after);
    RecordingTrash m_trash; // trashing never reaches the account's own Trash
};

void TestLibraryRefresh::compareWithFreshLoad(const PromptLibrary &library, const QString &root, const QString &after)
{
    const PromptLibrary fresh(QUrl::fromLocalFile(root));
    const QByteArray context = after.toUtf8();
    QVERIFY2(library.projects() == fresh.projects(), context.constData());
    QVERIFY2(library.sectionOrder() == fresh.sectionOrder(), context.constData());
    QVERIFY2(library.pinnedOrder() == fresh.pinnedOrder(), context.constData());
    QVERIFY2(library.promptOrderByProject() == fresh.promptOrderByProject(), context.constData());
    if (library.prompts() != fresh.prompts()) {
        QStringList mine = TestFiles::ids(library.prompts()), theirs = TestFiles::ids(fresh.prompts());
        QFAIL(qPrintable(after + u"\n  refreshed: " + mine.join(u' ') + u"\n  fresh:     " + theirs.join(u' ')));
    }
}

void TestLibraryRefresh::matchesALoadFromScratch()
{
    for (quint32 seed = 1; seed <= 12; ++seed) {
        QRandomGenerator random(seed);
        QTemporaryDir dir;
        const QString root = dir.path() + u"/lib";
        for (const char *project : {"Alpha", "Beta", "Inbox"}) {
            for (int i = 0; i < 4; ++i)
                write(root + u'/' + QLatin1String(project) + u"/p" + QString::number(i) + u".md",
                      "---\ntitle: T" + QByteArray::number(i) + "\n---\n\nbody", TestFiles::at(i));
        }
        PromptLibrary library(QUrl::fromLocalFile(root));
        auto anyPrompt = [&]() -> Prompt {
            return library.prompts().at(random.bounded(int(library.prompts().size())));
        };
        auto anyProject = [&]() -> Project {
            return library.projects().at(random.bounded(int(library.projects().size())));
        };
        for (int step = 0; step < 60; ++step) {
            QString what;
            const int op = random.bounded(14);
            if (library.prompts().size() < 3 && op < 10) {
                library.createPrompt(anyProject());
                what = QStringLiteral("create");
            } else if (op < 3) {
                Prompt edited = anyPrompt();
                edited.body += QString::number(step);
                edited.frontMatter.pinned = random.bounded(3) == 0;
                library.save(edited);
                what = u"save " + edited.id;
            } else if (op == 3) {
                const Prompt moved = anyPrompt();
                library.movePrompt(moved, anyProject());
                what = u"move " + moved.id;
            } else if (op == 4) {
                const Prompt trashed = anyPrompt();
                library.deletePrompt(trashed);
                what = u"trash " + trashed.id;
            } else if (op == 5) {
                const Project project = anyProject();
                QStringList names;
                for (const Prompt &p : library.prompts())
                    names.prepend(p.fileName());
                library.setPromptOrder(project.name, names);
                what = u"order " + project.name;
            } else if (op == 6) {
                QStringList ids{QStringLiteral("@pinned")};
                for (const Project &p : library.projects())
                    ids.prepend(p.name);
                PromptLibrary::writeOrderFile(library.orderFilePath(PromptLibrary::sectionOrderFileName), ids);
                PromptLibrary::writeOrderFile(library.orderFilePath(PromptLibrary::pinnedOrderFileName),
                                              {anyPrompt().id, anyPrompt().id});
                library.refresh();
                what = QStringLiteral("section and pinned order");
            } else if (op == 7) {
                const Project project = anyProject();
                if (project.name != u"Inbox")
                    library.renameProject(project, project.name + u'x');
                else
                    library.createProject(u"New " + QString::number(step));
                what = u"rename or create project " + project.name;
            } else {
                // Another program, then any write of the app's own.
                const Prompt target = anyPrompt();
                const QString folder = QFileInfo(target.filePath()).path();
                switch (op) {
                case 8: // rewritten in place, same size, right away
                    write(target.filePath(), QByteArray(QFileInfo(target.filePath()).size(), 'z'));
                    break;
                case 9:
                    QFile::remove(target.filePath());
                    break;
                case 10:
                    write(folder + u"/ext" + QString::number(step) + u".md", "---\ntitle: Ext\n---\n", TestFiles::at(2));
                    break;
                case 11:
                    QFile::rename(target.filePath(), folder + u"/renamed" + QString::number(step) + u".MD");
                    break;
                case 12:
                    write(folder + u"/.vesk-order", target.fileName().toUtf8() + "\n");
                    break;
                default:
                    QVERIFY(QDir().mkpath(root + u"/Made elsewhere " + QString::number(step)));
                    write(root + u"/Made elsewhere " + QString::number(step) + u"/m.md", "made", TestFiles::at(1));
                    break;
                }
                Prompt edited = anyPrompt();
                edited.body += u'!';
                library.save(edited);
                what = u"other program (" + QString::number(op) + u") and save " + edited.id;
            }
            compareWithFreshLoad(library, root, QStringLiteral("seed %1 step %2: %3").arg(seed).arg(step).arg(what));
            if (QTest::currentTestFailed())
                return;
        }
    }
}

void TestLibraryRefresh::otherProgramsAreSeenAtTheNextReload()
{
    // Changes no notification reaches (a link's target elsewhere) and changes
    // made while nothing of the app's own was written: reload() sees them all.
    QTemporaryDir dir;
    const QString root = dir.path() + u"/lib";
    write(dir.path() + u"/elsewhere.md", "---\ntitle: Before\n---\n");
    write(root + u"/Inbox/a.md", "a", TestFiles::at(0));
    QVERIFY(QFile::link(dir.path() + u"/elsewhere.md", root + u"/Inbox/linked.md"));
    PromptLibrary library(QUrl::fromLocalFile(root));
    QCOMPARE(library.prompt(QStringLiteral("Inbox/linked.md"))->frontMatter.title, u"Before");

    write(dir.path() + u"/elsewhere.md", "---\ntitle: After, and longer\n---\n");
    write(root + u"/Inbox/a.md", "b", TestFiles::at(0)); // same size, same time
    write(root + u"/Inbox/b.md", "new");
    library.reload();
    QCOMPARE(library.prompt(QStringLiteral("Inbox/linked.md"))->frontMatter.title, u"After, and longer");
    QCOMPARE(library.prompt(QStringLiteral("Inbox/a.md"))->body, u"b");
    QVERIFY(library.prompt(QStringLiteral("Inbox/b.md")));

    // A link's target changed elsewhere is seen by the refresh after a save
    // too, also of a prompt in another folder.
    write(root + u"/Work/w.md", "w");
    library.reload();
    write(dir.path() + u"/elsewhere.md", "---\ntitle: Third\n---\n");
    Prompt edited = *library.prompt(QStringLiteral("Work/w.md"));
    edited.body = QStringLiteral("edited");
    library.save(edited);
    QCOMPARE(library.prompt(QStringLiteral("Inbox/linked.md"))->frontMatter.title, u"Third");
    compareWithFreshLoad(library, root, QStringLiteral("after the save"));
}

QTEST_GUILESS_MAIN(TestLibraryRefresh)
#include "tst_libraryrefresh.moc"
