#include "LibraryQueries.h"
#include "PromptLibrary.h"
#include "TestFiles.h"

using TestFiles::at;
using TestFiles::ids;
using TestFiles::write;

class TestQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void search();
    void pinnedAndProjectLists();
    void sections();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestQueries::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestQueries::search()
{
    write(path("Inbox/body.md"), "---\ntitle: First\n---\nsome xFOOx text", at(5));
    write(path("Inbox/blank.md"), "---\ntitle:   \n---\nnothing", at(4));
    write(path("Inbox/tagged.md"), "---\ntitle: T\ntags: [Refactor, x]\n---\n", at(3));
    write(path("Inbox/model.md"), "---\ntitle: M\nmodel: claude-opus\n---\n", at(2));
    write(path("Secret/other.md"), "---\ntitle: Ünïcode Title\n---\n", at(1));
    write(path("Secret/kelvin.md"), "---\ntitle: K\n---\n4 \u212A", at(0)); // KELVIN SIGN lower-cases to k
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    const QList<Prompt> &all = library.prompts();

    QVERIFY(!LibraryQueries::isSearchQuery(QStringLiteral(" \n\t ")));
    QVERIFY(LibraryQueries::searchResults(all, QStringLiteral(" \n ")).isEmpty());
    QVERIFY(LibraryQueries::isSearchQuery(QStringLiteral(" x ")));

    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("  Foo \n"))), QStringList{"Inbox/body.md"});
    // A blank title is searched as its display title.
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("new p"))), QStringList{"Inbox/blank.md"});
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("fact"))), QStringList{"Inbox/tagged.md"});
    // Model and project name are not searched.
    QVERIFY(LibraryQueries::searchResults(all, QStringLiteral("opus")).isEmpty());
    QVERIFY(LibraryQueries::searchResults(all, QStringLiteral("secret")).isEmpty());
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("ÜNÏ"))), QStringList{"Secret/other.md"});
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("4 K"))), QStringList{"Secret/kelvin.md"});
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("Xt"))), QStringList{"Inbox/body.md"});
    QVERIFY(LibraryQueries::searchResults(all, QStringLiteral("sömé")).isEmpty());
    // Library order, no ranking; one literal substring, not words.
    QCOMPARE(ids(LibraryQueries::searchResults(all, QStringLiteral("t"))),
             QStringList({"Inbox/body.md", "Inbox/blank.md", "Inbox/tagged.md", "Secret/other.md"}));
    QVERIFY(LibraryQueries::searchResults(all, QStringLiteral("first text")).isEmpty());
}

void TestQueries::pinnedAndProjectLists()
{
    write(path("A/same.md"), "---\npinned: true\n---\n", at(1));
    write(path("B/same.md"), "---\npinned: true\n---\n", at(2));
    write(path("A/one.md"), "x", at(3));
    write(path("A/two.md"), "x", at(4));
    write(path("A/three.md"), "x", at(5));
    write(path("A/.vesk-order"), "two.md\nsame.md\ngone.md\n");
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));

    QCOMPARE(ids(LibraryQueries::pinnedPrompts(library)), QStringList({"B/same.md", "A/same.md"}));
    write(path(".vesk-pinned-order"), "A/same.md\n");
    library.reload();
    QCOMPARE(ids(LibraryQueries::pinnedPrompts(library)), QStringList({"A/same.md", "B/same.md"}));

    // Pinned prompts are not in their project's list; listed names first,
    // then the rest newest first.
    QCOMPARE(ids(LibraryQueries::promptsInProject(library, QStringLiteral("A"))),
             QStringList({"A/two.md", "A/three.md", "A/one.md"}));
    QVERIFY(LibraryQueries::promptsInProject(library, QStringLiteral("B")).isEmpty());
    QVERIFY(LibraryQueries::promptsInProject(library, QStringLiteral("Nope")).isEmpty());
}

void TestQueries::sections()
{
    const auto sectionIds = [](const PromptLibrary &library) {
        QStringList result;
        for (const SidebarSection &s : LibraryQueries::sidebarSections(library))
            result.append(s.id());
        return result;
    };
    for (const char *name : {"Zed", "alpha"})
        QVERIFY(QDir().mkpath(path(QString::fromLatin1(name))));
    PromptLibrary library(QUrl::fromLocalFile(m_dir->path()));
    QCOMPARE(sectionIds(library), QStringList({"@pinned", "Inbox", "alpha", "Zed"}));

    write(path(".vesk-sections-order"), "Zed\nghost\n@pinned\n");
    library.reload();
    QCOMPARE(sectionIds(library), QStringList({"Zed", "@pinned", "Inbox", "alpha"}));

    const QList<SidebarSection> sections = LibraryQueries::sidebarSections(library);
    QCOMPARE(sections[1].title(), u"Pinned");
    QCOMPARE(sections[2].title(), u"Recent Prompts");
    QCOMPARE(SidebarSection::fromId(QStringLiteral("@pinned")), SidebarSection::pinned());

    // Without projects only the pinned section is left.
    QVERIFY(QDir(m_dir->path()).removeRecursively());
    library.reload();
    QCOMPARE(sectionIds(library), QStringList{"@pinned"});
}

QTEST_GUILESS_MAIN(TestQueries)
#include "tst_queries.moc"
