#include "PromptLibrary.h"
#include "TestFiles.h"

#include <QSignalSpy>

using TestFiles::at;
using TestFiles::write;

class TestLibraryLoading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void freshStartCreatesRootAndInbox();
    void loadsPromptsAndSkipsWhatIsNotAPrompt();
    void promptsArePinnedFirstThenNewest();
    void projectsFollowNameThenSectionOrder();
    void legacyProjectsOrderOnlyWhenSectionOrderIsEmpty();
    void orderFileFormat();
    void sortByOrderRule();
    void setPromptOrder();
    void removedRootEmptiesListsAndKeepsOrders();
    void reloadNotifiesPerListThenOnce();
    void everyReloadSeesEditsFromOtherPrograms();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestLibraryLoading::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestLibraryLoading::freshStartCreatesRootAndInbox()
{
    const QString root = path(QStringLiteral("deep/er/prompts"));
    PromptLibrary library(QUrl::fromLocalFile(root));
    QVERIFY(QFileInfo(root + u"/Inbox").isDir());
    QCOMPARE(library.projects().size(), 1);
    QCOMPARE(library.projects().first().name, u"Inbox");
    QCOMPARE(library.projects().first().promptCount, 0);
    QVERIFY(library.prompts().isEmpty());

    // A file named Inbox is left alone: start never replaces anything.
    const QString other = path(QStringLiteral("other"));
    write(other + u"/Inbox", "not a folder");
    PromptLibrary withFile(QUrl::fromLocalFile(other));
    QVERIFY(QFileInfo(other + u"/Inbox").isFile());
    QVERIFY(withFile.projects().isEmpty());
}

void TestLibraryLoading::loadsPromptsAndSkipsWhatIsNotAPrompt()
{
    write(path("Work/Weekly.md"), "---\ntitle: Weekly\ntags: [a]\n---\n\nBody\n", at(10));
    write(path("Work/UPPER.MD"), "no header", at(20));
    write(path("Work/long.Markdown"), "x", at(30));
    write(path("Work/notes.md.txt"), "not a prompt");
    write(path("Work/plain"), "not a prompt");
    write(path("Work/.hidden.md"), "hidden");
    write(path("Work/latin1.md"), "caf\xe9");           // not UTF-8: skipped
    write(path("Work/sub.md/inner.md"), "nested");      // folders are never descended
    write(path("root-level.md"), "files in the root are not prompts");
    write(path(".hiddenproject/a.md"), "hidden project");

    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QStringList ids;
    for (const Prompt &p : library.prompts())
        ids.append(p.id);
    QCOMPARE(ids, QStringList({"Work/long.Markdown", "Work/UPPER.MD", "Work/Weekly.md"}));

    const Prompt weekly = *library.prompt(QStringLiteral("Work/Weekly.md"));
    QCOMPARE(weekly.projectName, u"Work");
    QCOMPARE(weekly.filePath(), path("Work/Weekly.md"));
    QCOMPARE(weekly.frontMatter.title, u"Weekly");
    QCOMPARE(weekly.frontMatter.tags, QStringList{"a"});
    QCOMPARE(weekly.body, u"\nBody\n");
    QCOMPARE(weekly.modifiedAt, at(10));
    QCOMPARE(library.prompt(QStringLiteral("Work/UPPER.MD"))->body, u"no header");

    QCOMPARE(library.projects().size(), 2); // Inbox and Work
    QCOMPARE(library.project(QStringLiteral("Work"))->promptCount, 3);
}

void TestLibraryLoading::promptsArePinnedFirstThenNewest()
{
    write(path("A/old-pinned.md"), "---\npinned: true\n---\n", at(1));
    write(path("B/new-pinned.md"), "---\npinned: true\n---\n", at(5));
    write(path("A/newest.md"), "x", at(9));
    write(path("B/older.md"), "x", at(3));
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QStringList ids;
    for (const Prompt &p : library.prompts())
        ids.append(p.id);
    QCOMPARE(ids, QStringList({"B/new-pinned.md", "A/old-pinned.md", "A/newest.md", "B/older.md"}));
}

void TestLibraryLoading::projectsFollowNameThenSectionOrder()
{
    for (const char *name : {"beta", "Alpha", "gamma"})
        QVERIFY(QDir().mkpath(path(QString::fromLatin1(name))));
    QFile::link(path("gamma"), path("linked")); // a link to a folder is not a project

    const auto names = [](const PromptLibrary &library) {
        QStringList result;
        for (const Project &p : library.projects())
            result.append(p.name);
        return result;
    };
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QCOMPARE(names(library), QStringList({"Alpha", "beta", "gamma", "Inbox"}));

    // Trimmed entries match; the pinned key and stale names are ignored here.
    write(path(".vesk-sections-order"), "  gamma\t\n@pinned\ngone\n\nInbox\n");
    library.reload();
    QCOMPARE(names(library), QStringList({"gamma", "Inbox", "Alpha", "beta"}));
    QCOMPARE(library.sectionOrder(), QStringList({"gamma", "@pinned", "gone", "Inbox"}));
}

void TestLibraryLoading::legacyProjectsOrderOnlyWhenSectionOrderIsEmpty()
{
    for (const char *name : {"a", "b"})
        QVERIFY(QDir().mkpath(path(QString::fromLatin1(name))));
    write(path(".vesk-projects-order"), "b\n");
    write(path(".vesk-sections-order"), " \n\t\n");
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QCOMPARE(library.sectionOrder(), QStringList{"b"});
    QCOMPARE(library.projects().first().name, u"b");

    write(path(".vesk-sections-order"), "a\n");
    library.reload();
    QCOMPARE(library.sectionOrder(), QStringList{"a"});
}

void TestLibraryLoading::orderFileFormat()
{
    const QString file = path("order");
    PromptLibrary::writeOrderFile(file, {QStringLiteral(" a "), QString(), QStringLiteral("\t"), QStringLiteral("b")});
    QCOMPARE(TestFiles::read(file), "a\nb\n");
    QCOMPARE(PromptLibrary::readOrderFile(file), QStringList({"a", "b"}));

    PromptLibrary::writeOrderFile(file, {});
    QCOMPARE(TestFiles::read(file), "\n");
    QVERIFY(PromptLibrary::readOrderFile(file).isEmpty());

    QVERIFY(PromptLibrary::readOrderFile(path("missing")).isEmpty());

    // A CR LF pair is one character that is not a line feed: one entry.
    write(file, "a\r\nb\r\n");
    QCOMPARE(PromptLibrary::readOrderFile(file), QStringList{"a\r\nb\r\n"});
    // Duplicates are read as they are; the ordering rule rejects them later.
    write(file, "x\nx\n");
    QCOMPARE(PromptLibrary::readOrderFile(file), QStringList({"x", "x"}));

    // A write error (a folder where the file must go) is silent and harmless.
    QVERIFY(QDir().mkpath(path("blocked")));
    PromptLibrary::writeOrderFile(path("blocked"), {QStringLiteral("a")});
    QVERIFY(QFileInfo(path("blocked")).isDir());
}

void TestLibraryLoading::sortByOrderRule()
{
    const auto key = [](const QString &s) { return s.left(1); };
    const QStringList items{"c1", "a1", "b1", "a2", "d1"};
    QCOMPARE(PromptLibrary::sortByOrder(items, key, {}), items);
    // Listed keys first in list order (equal keys keep their order), the rest behind.
    QCOMPARE(PromptLibrary::sortByOrder(items, key, {"b", "zz", "a"}),
             QStringList({"b1", "a1", "a2", "c1", "d1"}));
    QCOMPARE(PromptLibrary::sortByOrder(QStringList{}, key, {"a"}), QStringList{});
}

void TestLibraryLoading::setPromptOrder()
{
    write(path("P/x.md"), "x");
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    library.setPromptOrder(QStringLiteral("P"), {QStringLiteral("x.md"), QStringLiteral("y.md")});
    QCOMPARE(TestFiles::read(path("P/.vesk-order")), "x.md\ny.md\n");
    QCOMPARE(library.promptOrderByProject().value(QStringLiteral("P")), QStringList({"x.md", "y.md"}));
    QCOMPARE(library.promptOrderByProject().value(QStringLiteral("Inbox")), QStringList{});

    library.setPromptOrder(QStringLiteral("p"), {QStringLiteral("x.md")}); // names match exactly
    library.setPromptOrder(QStringLiteral("Nope"), {QStringLiteral("x.md")});
    QVERIFY(!QFile::exists(path("Nope/.vesk-order")));
    QCOMPARE(TestFiles::read(path("P/.vesk-order")), "x.md\ny.md\n");
}

void TestLibraryLoading::removedRootEmptiesListsAndKeepsOrders()
{
    const QString root = path(QStringLiteral("lib"));
    write(root + u"/P/x.md", "x");
    write(root + u"/.vesk-pinned-order", "P/x.md\n");
    PromptLibrary library(QUrl::fromLocalFile(root));
    QCOMPARE(library.prompts().size(), 1);

    QVERIFY(QDir(root).removeRecursively());
    library.reload();
    QVERIFY(library.projects().isEmpty());
    QVERIFY(library.prompts().isEmpty());
    QCOMPARE(library.pinnedOrder(), QStringList{"P/x.md"});
    QVERIFY(!QFileInfo::exists(root)); // nothing is recreated until the next start
}

void TestLibraryLoading::reloadNotifiesPerListThenOnce()
{
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QStringList order;
    const auto record = [&](const char *name) { return [&order, name] { order.append(QString::fromLatin1(name)); }; };
    connect(&library, &PromptLibrary::sectionOrderChanged, this, record("sectionOrder"));
    connect(&library, &PromptLibrary::pinnedOrderChanged, this, record("pinnedOrder"));
    connect(&library, &PromptLibrary::promptOrderByProjectChanged, this, record("promptOrderByProject"));
    connect(&library, &PromptLibrary::projectsChanged, this, record("projects"));
    connect(&library, &PromptLibrary::promptsChanged, this, record("prompts"));
    connect(&library, &PromptLibrary::changed, this, record("changed"));
    library.reload();
    QCOMPARE(order, QStringList()); // nothing changed, nothing announced

    write(m_dir->path() + u"/.vesk-sections-order", "P\n");
    write(m_dir->path() + u"/.vesk-pinned-order", "P/x.md\n");
    write(m_dir->path() + u"/P/.vesk-order", "x.md\n");
    write(m_dir->path() + u"/P/x.md", "x");
    library.reload();
    QCOMPARE(order, QStringList({"sectionOrder", "pinnedOrder", "promptOrderByProject", "projects", "prompts",
                                 "changed"}));

    // Only what changed is announced, still in that order.
    order.clear();
    write(m_dir->path() + u"/.vesk-pinned-order", "P/y.md\n");
    write(m_dir->path() + u"/P/y.md", "y");
    library.reload();
    QCOMPARE(order, QStringList({"pinnedOrder", "projects", "prompts", "changed"}));
}

void TestLibraryLoading::everyReloadSeesEditsFromOtherPrograms()
{
    // Unchanged files are not read again, so edits must show in size or times:
    // a same-size rewrite right away, and one long after the file was read.
    write(path("P/a.md"), "---\ntitle: one\n---\n");
    write(path("P/b.md"), "old");
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    write(path("P/a.md"), "---\ntitle: two\n---\n");
    library.reload();
    QCOMPARE(library.prompt(QStringLiteral("P/a.md"))->frontMatter.title, u"two");

    QTest::qWait(4100);
    library.reload(); // read long after the last write: from now on reused
    library.reload();
    QCOMPARE(library.prompt(QStringLiteral("P/b.md"))->body, u"old");
    QFile inPlace(path("P/b.md"));
    QVERIFY(inPlace.open(QIODevice::ReadWrite));
    QCOMPARE(inPlace.write("new"), 3);
    inPlace.close();
    write(path("P/c.md"), "added");
    QVERIFY(QFile::remove(path("P/a.md")));
    library.reload();
    QCOMPARE(library.prompt(QStringLiteral("P/b.md"))->body, u"new");
    QCOMPARE(library.prompt(QStringLiteral("P/c.md"))->body, u"added");
    QVERIFY(!library.prompt(QStringLiteral("P/a.md")));
    QCOMPARE(library.project(QStringLiteral("P"))->promptCount, 2);
}

QTEST_GUILESS_MAIN(TestLibraryLoading)
#include "tst_libraryloading.moc"
