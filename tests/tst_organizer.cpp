// The drop operations, called as the sidebar's drops and vesk-cli call them,
// over real folders.

#include "AppState.h"
#include "LibraryQueries.h"
#include "Organizer.h"
#include "PromptLibrary.h"
#include "TestFiles.h"

#include <QRegularExpression>

using TestFiles::at;
using TestFiles::ids;
using TestFiles::read;
using TestFiles::write;
using Kind = VeskDrag::Kind;

class TestOrganizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void insertBeforeRules();

    void sectionDroppedOnItselfWritesNothing();
    void pinnedDroppedOnProjectGoesDirectlyAboveIt();
    void firstSectionDropWritesEverySection();
    void storedSectionOrderIsCompletedBeforeInserting();
    void emptyDropsAndEmptySectionPayloadsDoNothing();

    void droppingOnPinnedHeaderPinsOnlyUnpinned();

    void promptDroppedOnItsOwnRowDoesNothing();
    void droppedWithOthersOnOneOfThemReordersTheOthers();
    void unpinnedDroppedOnPinnedRowIsPinnedBeforeIt();
    void pinnedDroppedOnRowOfAnotherProjectIsUnpinnedAndMoved();
    void firstDropInAProjectWithoutOrderFile();
    void rowOutsideEveryProjectTakesNoDrops();
    void numberedMoveNamesDifferBetweenRowAndHeaderDrops();
    void unknownIdsAreSkipped();

    void headerDropAppendsAndSelectsExactlyTheMoved();
    void headerDropOnVanishedProjectDoesNothing();
    void whenEveryMoveFailsTheSelectionStays();

    void batchMoveNeitherUnpinsNorOrders();
    void pendingEditIsWrittenBeforeTheFileMoves();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    Prompt prompt(const QString &id) const { return *m_library->prompt(id); }
    void open();
    QStringList sectionIds() const;
    QStringList projectRows(const QString &name) const { return ids(m_state->promptsInProject(name)); }
    QStringList pinnedRows() const { return ids(m_state->pinnedPrompts()); }
    QSet<QString> selection() const { return m_state->selectedPromptIDs(); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<Organizer> m_organizer;
};

void TestOrganizer::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    // Library order: pinned first, then newest first.
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\nbody a", at(50));
    write(path("Inbox/b.md"), "---\ntitle: B\n---\n\nbody b", at(40));
    write(path("Work/w1.md"), "---\ntitle: W1\n---\n\none", at(30));
    write(path("Work/w2.md"), "---\ntitle: W2\n---\n\ntwo", at(20));
    write(path("Work/w3.md"), "---\ntitle: W3\n---\n\nthree", at(10));
    write(path("Work/p1.md"), "---\ntitle: P1\npinned: true\n---\n\npinned one", at(5));
    write(path("Home/p2.md"), "---\ntitle: P2\npinned: true\n---\n\npinned two", at(4));
    m_library.reset();
}

void TestOrganizer::open()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_organizer = std::make_unique<Organizer>(m_state.get());
}

QStringList TestOrganizer::sectionIds() const
{
    QStringList result;
    for (const SidebarSection &section : LibraryQueries::sidebarSections(*m_library))
        result.append(section.id());
    return result;
}

void TestOrganizer::insertBeforeRules()
{
    const auto insert = &Organizer::insertBefore;
    QCOMPARE(insert({"x"}, {"a", "b", "c"}, "b"), QStringList({"a", "x", "b", "c"}));
    // The items leave their old places first.
    QCOMPARE(insert({"c", "a"}, {"a", "b", "c", "d"}, "d"), QStringList({"b", "c", "a", "d"}));
    // A target that is missing, or is itself moving, puts the items last.
    QCOMPARE(insert({"x"}, {"a", "b"}, "zz"), QStringList({"a", "b", "x"}));
    QCOMPARE(insert({"a", "b"}, {"a", "b", "c"}, "a"), QStringList({"c", "a", "b"}));
    QCOMPARE(insert({"x", "y"}, {}, "a"), QStringList({"x", "y"}));
    // Items keep their order, repeats included.
    QCOMPARE(insert({"y", "x", "y"}, {"a", "x"}, "a"), QStringList({"y", "x", "y", "a"}));
}

void TestOrganizer::sectionDroppedOnItselfWritesNothing()
{
    open();
    m_organizer->handleDropOnSection({{Kind::Section, {"Work"}}}, QStringLiteral("Work"));
    QVERIFY(!QFile::exists(path(".vesk-sections-order")));
    m_organizer->handleDropOnSection({{Kind::Section, {"@pinned"}}}, QStringLiteral("@pinned"));
    QVERIFY(!QFile::exists(path(".vesk-sections-order")));
    QCOMPARE(sectionIds(), QStringList({"@pinned", "Inbox", "Home", "Work"}));
}

void TestOrganizer::pinnedDroppedOnProjectGoesDirectlyAboveIt()
{
    open();
    m_organizer->handleDropOnSection({{Kind::Section, {"@pinned"}}}, QStringLiteral("Work"));
    QCOMPARE(read(path(".vesk-sections-order")), "Inbox\nHome\n@pinned\nWork\n");
    QCOMPARE(sectionIds(), QStringList({"Inbox", "Home", "@pinned", "Work"}));
    // And back to the top, above Inbox.
    m_organizer->handleDropOnSection({{Kind::Section, {"@pinned"}}}, QStringLiteral("Inbox"));
    QCOMPARE(sectionIds(), QStringList({"@pinned", "Inbox", "Home", "Work"}));
}

void TestOrganizer::firstSectionDropWritesEverySection()
{
    QVERIFY(QDir().mkpath(path("Zeta")));
    open();
    m_organizer->reorderSection(QStringLiteral("Zeta"), QStringLiteral("Inbox"));
    QCOMPARE(read(path(".vesk-sections-order")), "@pinned\nZeta\nInbox\nHome\nWork\n");
}

void TestOrganizer::storedSectionOrderIsCompletedBeforeInserting()
{
    // A stale name stays where it is; sections the file lacks follow it in
    // the order they are shown.
    write(path(".vesk-sections-order"), "Gone\nWork\n");
    open();
    QCOMPARE(sectionIds(), QStringList({"Work", "@pinned", "Inbox", "Home"}));
    m_organizer->handleDropOnSection({{Kind::Section, {"Home"}}}, QStringLiteral("@pinned"));
    QCOMPARE(read(path(".vesk-sections-order")), "Gone\nWork\nHome\n@pinned\nInbox\n");
    QCOMPARE(sectionIds(), QStringList({"Work", "Home", "@pinned", "Inbox"}));
}

void TestOrganizer::emptyDropsAndEmptySectionPayloadsDoNothing()
{
    open();
    m_organizer->handleDropOnSection({}, QStringLiteral("Work"));
    m_organizer->handleDropOnSection({{Kind::Section, {}}}, QStringLiteral("Work"));
    QVERIFY(!QFile::exists(path(".vesk-sections-order")));
    // Only the first id of a section payload counts.
    m_organizer->handleDropOnSection({{Kind::Section, {"Work", "Home"}}}, QStringLiteral("Inbox"));
    QCOMPARE(sectionIds(), QStringList({"@pinned", "Work", "Inbox", "Home"}));
}

void TestOrganizer::droppingOnPinnedHeaderPinsOnlyUnpinned()
{
    write(path(".vesk-pinned-order"), "Home/p2.md\nWork/p1.md\n");
    open();
    const QByteArray p1Before = read(path("Work/p1.md"));
    const QDateTime p1Modified = QFileInfo(path("Work/p1.md")).lastModified();
    m_organizer->handleDropOnSection({{Kind::Prompts, {"Work/w2.md", "Work/p1.md", "Nope/x.md"}}},
                                     QStringLiteral("@pinned"));
    QCOMPARE(read(path("Work/w2.md")), "---\ntitle: W2\npinned: true\n---\n\ntwo");
    QCOMPARE(read(path("Work/p1.md")), p1Before);
    QCOMPARE(QFileInfo(path("Work/p1.md")).lastModified(), p1Modified); // not written at all
    QCOMPARE(read(path(".vesk-pinned-order")), "Home/p2.md\nWork/p1.md\n");
    // The newly pinned prompt follows the listed ones; it left its project's list.
    QCOMPARE(pinnedRows(), QStringList({"Home/p2.md", "Work/p1.md", "Work/w2.md"}));
    QCOMPARE(projectRows("Work"), QStringList({"Work/w1.md", "Work/w3.md"}));
    QVERIFY(selection().isEmpty());
}

void TestOrganizer::promptDroppedOnItsOwnRowDoesNothing()
{
    open();
    const QByteArray before = read(path("Work/w2.md"));
    m_organizer->reorderPrompts({"Work/w2.md"}, prompt("Work/w2.md"));
    QCOMPARE(read(path("Work/w2.md")), before);
    QVERIFY(!QFile::exists(path("Work/.vesk-order")));
    m_organizer->reorderPrompts({"Work/p1.md"}, prompt("Work/p1.md"));
    QVERIFY(!QFile::exists(path(".vesk-pinned-order")));
}

void TestOrganizer::droppedWithOthersOnOneOfThemReordersTheOthers()
{
    write(path("Work/.vesk-order"), "w1.md\nw2.md\nw3.md\n");
    open();
    // w1 and w3 dropped together with w2 on w2's row: they land before w2,
    // w2 itself stays where the others leave it.
    m_organizer->reorderPrompts({"Work/w3.md", "Work/w2.md", "Work/w1.md"}, prompt("Work/w2.md"));
    QCOMPARE(read(path("Work/.vesk-order")), "w3.md\nw1.md\nw2.md\n");
    QCOMPARE(projectRows("Work"), QStringList({"Work/w3.md", "Work/w1.md", "Work/w2.md"}));
}

void TestOrganizer::unpinnedDroppedOnPinnedRowIsPinnedBeforeIt()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/b.md")});
    // No pinned order yet: the pinned rows as listed (p1, then p2) are the base.
    m_organizer->reorderPrompts({"Inbox/b.md"}, prompt("Home/p2.md"));
    QCOMPARE(read(path("Inbox/b.md")), "---\ntitle: B\npinned: true\n---\n\nbody b");
    QCOMPARE(read(path(".vesk-pinned-order")), "Work/p1.md\nInbox/b.md\nHome/p2.md\n");
    QCOMPARE(pinnedRows(), QStringList({"Work/p1.md", "Inbox/b.md", "Home/p2.md"}));
    // Reordering inside the pinned list keeps the stored order as the base.
    m_organizer->reorderPrompts({"Home/p2.md"}, prompt("Work/p1.md"));
    QCOMPARE(read(path(".vesk-pinned-order")), "Home/p2.md\nWork/p1.md\nInbox/b.md\n");
    QCOMPARE(selection(), QSet<QString>{QStringLiteral("Inbox/b.md")}); // never changed by a row drop
}

void TestOrganizer::pinnedDroppedOnRowOfAnotherProjectIsUnpinnedAndMoved()
{
    write(path("Work/.vesk-order"), "w3.md\nw2.md\nw1.md\n");
    open();
    m_organizer->reorderPrompts({"Home/p2.md"}, prompt("Work/w2.md"));
    QVERIFY(!QFile::exists(path("Home/p2.md")));
    QCOMPARE(read(path("Work/p2.md")), "---\ntitle: P2\n---\n\npinned two");
    QCOMPARE(read(path("Work/.vesk-order")), "w3.md\np2.md\nw2.md\nw1.md\n");
    QCOMPARE(projectRows("Work"), QStringList({"Work/w3.md", "Work/p2.md", "Work/w2.md", "Work/w1.md"}));
    QCOMPARE(pinnedRows(), QStringList{"Work/p1.md"});
    QVERIFY(selection().isEmpty());
}

void TestOrganizer::firstDropInAProjectWithoutOrderFile()
{
    // Every loaded project has a stored order, empty without a file, and that
    // is the base: the dropped names alone make the new order.
    open();
    m_organizer->reorderPrompts({"Inbox/a.md"}, prompt("Work/w3.md"));
    QCOMPARE(read(path("Work/.vesk-order")), "a.md\n");
    QCOMPARE(projectRows("Work"), QStringList({"Work/a.md", "Work/w1.md", "Work/w2.md", "Work/w3.md"}));
    // The next drop has a target that is listed.
    m_organizer->reorderPrompts({"Work/w3.md"}, prompt("Work/a.md"));
    QCOMPARE(read(path("Work/.vesk-order")), "w3.md\na.md\n");
}

void TestOrganizer::rowOutsideEveryProjectTakesNoDrops()
{
    open();
    Prompt outside = prompt("Work/w1.md");
    outside.projectName = QStringLiteral("Elsewhere");
    outside.id = QStringLiteral("Elsewhere/w1.md");
    m_organizer->reorderPrompts({"Inbox/a.md", "Work/p1.md"}, outside);
    QVERIFY(QFile::exists(path("Inbox/a.md")));
    QCOMPARE(read(path("Work/p1.md")), "---\ntitle: P1\npinned: true\n---\n\npinned one");
    QVERIFY(!QFile::exists(path("Work/.vesk-order")));
    QVERIFY(!QFile::exists(path("Elsewhere")));
}

void TestOrganizer::numberedMoveNamesDifferBetweenRowAndHeaderDrops()
{
    write(path("Home/w1.md"), "---\ntitle: Home W1\n---\n\nhome one", at(3));
    write(path("Home/w2.md"), "---\ntitle: Home W2\n---\n\nhome two", at(2));
    write(path("Work/.vesk-order"), "w3.md\nw1.md\nw2.md\n");
    open();

    // On a row: the move numbers the file "w1 2.md", but the order gets the
    // dropped name "w1.md", which is the other file's; the moved prompt is
    // unlisted and follows the listed ones.
    m_organizer->reorderPrompts({"Home/w1.md"}, prompt("Work/w3.md"));
    QCOMPARE(read(path("Work/w1 2.md")), "---\ntitle: Home W1\n---\n\nhome one");
    QCOMPARE(read(path("Work/.vesk-order")), "w1.md\nw3.md\nw2.md\n");
    QCOMPARE(projectRows("Work").last(), u"Work/w1 2.md");

    // On the header: the order gets the moved prompt's own new name, last.
    const QStringList moved = m_organizer->movePrompts({"Home/w2.md"}, QStringLiteral("Work"));
    QCOMPARE(moved, QStringList{"Work/w2 2.md"});
    QCOMPARE(read(path("Work/.vesk-order")), "w1.md\nw3.md\nw2.md\nw2 2.md\n");
    QCOMPARE(selection(), QSet<QString>{QStringLiteral("Work/w2 2.md")});
}

void TestOrganizer::unknownIdsAreSkipped()
{
    write(path("Work/.vesk-order"), "w1.md\nw2.md\n");
    open();
    // An unknown id moves nothing, but its name still enters the order.
    m_organizer->reorderPrompts({"Gone/ghost.md", "Inbox/b.md", "/"}, prompt("Work/w2.md"));
    QCOMPARE(read(path("Work/.vesk-order")), "w1.md\nghost.md\nb.md\nw2.md\n");
    QVERIFY(QFile::exists(path("Work/b.md")));
    QVERIFY(!QFile::exists(path("Work/ghost.md")));
}

void TestOrganizer::headerDropAppendsAndSelectsExactlyTheMoved()
{
    write(path("Work/.vesk-order"), "w2.md\nw1.md\n");
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md"), QStringLiteral("Work/w3.md")});
    m_organizer->handleDropOnSection({{Kind::Prompts, {"Inbox/a.md", "Work/w3.md", "Home/p2.md", "No/such.md"}}},
                                     QStringLiteral("Work"));
    QVERIFY(!QFile::exists(path("Inbox/a.md")));
    QVERIFY(!QFile::exists(path("Home/p2.md")));
    QCOMPARE(read(path("Work/p2.md")), "---\ntitle: P2\n---\n\npinned two"); // unpinned on the way
    // w3 was already in Work: it is listed but does not join the selection.
    QCOMPARE(read(path("Work/.vesk-order")), "w2.md\nw1.md\na.md\nw3.md\np2.md\n");
    QCOMPARE(selection(), QSet<QString>({QStringLiteral("Work/a.md"), QStringLiteral("Work/p2.md")}));
    QCOMPARE(projectRows("Work"),
             QStringList({"Work/w2.md", "Work/w1.md", "Work/a.md", "Work/w3.md", "Work/p2.md"}));
}

void TestOrganizer::headerDropOnVanishedProjectDoesNothing()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QCOMPARE(m_organizer->movePrompts({"Inbox/a.md", "Work/p1.md"}, QStringLiteral("Nowhere")), QStringList());
    QVERIFY(QFile::exists(path("Inbox/a.md")));
    QCOMPARE(read(path("Work/p1.md")), "---\ntitle: P1\npinned: true\n---\n\npinned one");
    QCOMPARE(selection(), QSet<QString>{QStringLiteral("Inbox/a.md")});
}

void TestOrganizer::whenEveryMoveFailsTheSelectionStays()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    // The folder goes away behind the library's back: every move fails.
    QVERIFY(QDir(path("Home")).removeRecursively());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: move failed: ")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: move failed: ")));
    QCOMPARE(m_organizer->movePrompts({"Inbox/a.md", "Inbox/b.md"}, QStringLiteral("Home")), QStringList());
    QCOMPARE(selection(), QSet<QString>{QStringLiteral("Inbox/a.md")});
    QVERIFY(QFile::exists(path("Inbox/a.md")));

    m_library->reload();
    QVERIFY(QDir().mkpath(path("Gone")));
    m_library->reload();
    const Project gone = *m_library->project(QStringLiteral("Gone"));
    QVERIFY(QDir(path("Gone")).removeRecursively());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: move failed: ")));
    QCOMPARE(m_organizer->batchMove({prompt("Inbox/b.md")}, gone), QStringList());
    QCOMPARE(selection(), QSet<QString>{QStringLiteral("Inbox/a.md")});
}

void TestOrganizer::batchMoveNeitherUnpinsNorOrders()
{
    write(path("Home/.vesk-order"), "p2.md\n");
    open();
    const QList<Prompt> selected{prompt("Work/p1.md"), prompt("Inbox/a.md"), prompt("Home/p2.md")};
    const QStringList moved = m_organizer->batchMove(selected, *m_library->project(QStringLiteral("Home")));
    QCOMPARE(moved, QStringList({"Home/p1.md", "Home/a.md"}));
    QCOMPARE(read(path("Home/p1.md")), "---\ntitle: P1\npinned: true\n---\n\npinned one");
    QCOMPARE(read(path("Home/.vesk-order")), "p2.md\n");
    QCOMPARE(selection(), QSet<QString>({QStringLiteral("Home/p1.md"), QStringLiteral("Home/a.md")}));
    QCOMPARE(pinnedRows(), QStringList({"Home/p1.md", "Home/p2.md"}));
}

void TestOrganizer::pendingEditIsWrittenBeforeTheFileMoves()
{
    open();
    Prompt edited = prompt("Inbox/a.md");
    edited.body = QStringLiteral("\nedited before the drop");
    m_state->scheduleSave(edited);
    m_organizer->handleDropOnSection({{Kind::Prompts, {"Inbox/a.md"}}}, QStringLiteral("Work"));
    QCOMPARE(read(path("Work/a.md")), "---\ntitle: A\n---\n\nedited before the drop");
    // The delayed save never comes back to write the old path.
    QTest::qWait(AppState::saveDelayMs + 200);
    QVERIFY(!QFile::exists(path("Inbox/a.md")));
}

QTEST_GUILESS_MAIN(TestOrganizer)
#include "tst_organizer.moc"
