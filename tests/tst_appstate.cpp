#include "AppState.h"
#include "LibraryQueries.h"
#include "ProjectNamePrompter.h"
#include "PromptLibrary.h"
#include "FakeAlerts.h"
#include "TestFiles.h"

#include <QElapsedTimer>
#include <QSignalSpy>

using TestFiles::at;
using TestFiles::ids;
using TestFiles::read;
using TestFiles::write;

namespace {

class AnsweringPrompter : public ProjectNamePrompter
{
public:
    std::optional<QString> answer;
    int asked = 0;
    std::optional<QString> askForProjectName() override
    {
        ++asked;
        return answer;
    }
};


} // namespace

class TestAppState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void debouncedSaveWritesOnceAfterTheLastEdit();
    void searchFollowsTypingAndTheLibrary();
    void newPromptRightAfterTypingInABlankOne();
    void laterPromptReplacesThePendingOne();
    void flushWritesAtOnceAndCancelsTheTimer();
    void createNewPromptReusesABlankOne();
    void createNewPromptTarget();
    void blankPromptFilledElsewhereIsNotReused();
    void aFileInPlaceOfTheLibrarySaysSo();
    void newProjectDialog();
    void selectionRules();
    void libraryChangesAreRelayed();
    void everySelectionChangeWritesThePendingEditFirst();
    void saveNowCarriesThePendingEdit();
    void anotherProgramsChangeIsMergedOrKept();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    Prompt prompt(const char *id) const { return *m_library->prompt(QString::fromUtf8(id)); }
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
};

void TestAppState::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\nbody a", at(2));
    write(path("Work/b.md"), "---\ntitle: B\n---\n\nbody b", at(1));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
}

void TestAppState::debouncedSaveWritesOnceAfterTheLastEdit()
{
    QSignalSpy reloads(m_library.get(), &PromptLibrary::changed);
    Prompt edited = prompt("Inbox/a.md");
    QElapsedTimer clock;
    clock.start();
    for (int i = 1; i <= 3; ++i) {
        edited.body = u"\nedit " + QString::number(i);
        m_state->scheduleSave(edited);
        if (i < 3)
            QTest::qWait(100);
    }
    const qint64 lastCall = clock.elapsed();
    QVERIFY(m_state->hasPendingSave());
    QTest::qWait(300);
    QCOMPARE(reloads.size(), 0); // not yet: 400 ms after the last call
    QTRY_COMPARE_WITH_TIMEOUT(reloads.size(), 1, 2000);
    QVERIFY(clock.elapsed() - lastCall >= AppState::saveDelayMs);
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\n---\n\nedit 3");
    QVERIFY(!m_state->hasPendingSave());
    QTest::qWait(500);
    QCOMPARE(reloads.size(), 1);
}

void TestAppState::laterPromptReplacesThePendingOne()
{
    Prompt a = prompt("Inbox/a.md");
    Prompt b = prompt("Work/b.md");
    a.body = QStringLiteral("\nchanged a");
    b.body = QStringLiteral("\nchanged b");
    m_state->scheduleSave(a);
    m_state->scheduleSave(b);
    QTRY_COMPARE_WITH_TIMEOUT(read(path("Work/b.md")), QByteArray("---\ntitle: B\n---\n\nchanged b"), 2000);
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\n---\n\nbody a");
}

void TestAppState::flushWritesAtOnceAndCancelsTheTimer()
{
    QSignalSpy reloads(m_library.get(), &PromptLibrary::changed);
    m_state->flushPendingSave(); // nothing pending: nothing happens
    QCOMPARE(reloads.size(), 0);

    Prompt a = prompt("Inbox/a.md");
    a.frontMatter.title = QStringLiteral("Flushed");
    m_state->scheduleSave(a);
    m_state->flushPendingSave();
    QCOMPARE(reloads.size(), 1);
    QCOMPARE(m_library->prompt(a.id)->frontMatter.title, u"Flushed");

    // The cancelled timer never writes again, even after the file changes.
    write(path("Inbox/a.md"), "external edit");
    QTest::qWait(600);
    QCOMPARE(reloads.size(), 1);
    QCOMPARE(read(path("Inbox/a.md")), "external edit");
}

void TestAppState::createNewPromptReusesABlankOne()
{
    write(path("Work/blank.md"), "---\ntitle:  \n---\n \n");
    m_library->reload();
    m_state->setSearchQuery(QStringLiteral("body"));
    QSignalSpy focus(m_state.get(), &AppState::pendingEditorFocusIDChanged);

    m_state->createNewPromptInRecent();
    const QStringList inbox = QDir(path("Inbox")).entryList(QDir::Files);
    QCOMPARE(inbox.size(), 2); // the blank one in Work is not reused
    const QString createdId = *m_state->pendingEditorFocusID();
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{createdId});
    QVERIFY(createdId.startsWith(u"Inbox/"));
    QCOMPARE(focus.size(), 1);

    m_state->setPendingEditorFocusID(std::nullopt);
    m_state->setSelectedPromptIDs({});
    m_state->createNewPromptInRecent();
    QCOMPARE(QDir(path("Inbox")).entryList(QDir::Files).size(), 2); // reused, not made again
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{createdId});
    QCOMPARE(m_state->pendingEditorFocusID(), createdId);
    QCOMPARE(m_state->searchQuery(), u"body");
}

void TestAppState::blankPromptFilledElsewhereIsNotReused()
{
    write(path("Inbox/blank.md"), "---\ntitle: \n---\n\n", at(5));
    m_library->reload();
    // Another device fills it in; the sync tool writes it before Vesk looks again.
    write(path("Inbox/blank.md"), "---\ntitle: From the laptop\n---\n\nWritten elsewhere.", at(9));

    m_state->createNewPromptInRecent();
    const QString chosen = *m_state->pendingEditorFocusID();
    QVERIFY(chosen != u"Inbox/blank.md");
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{chosen});
    QCOMPARE(m_library->prompt(QStringLiteral("Inbox/blank.md"))->frontMatter.title, u"From the laptop");
    QCOMPARE(read(path("Inbox/blank.md")), "---\ntitle: From the laptop\n---\n\nWritten elsewhere.");
}

void TestAppState::aFileInPlaceOfTheLibrarySaysSo()
{
    const QString root = path("notafolder");
    write(root, "just a file");
    PromptLibrary library(QUrl::fromLocalFile(root));
    AppState state(&library);
    ScriptedAlerts alerts;
    state.setAlerts(&alerts);
    QVERIFY(library.projects().isEmpty());

    state.createNewPromptInRecent();
    QCOMPARE(alerts.shown.size(), 1);
    QCOMPARE(alerts.shown.first().message, u"Vesk can't use its prompts folder");
    QVERIFY(alerts.shown.first().informative.contains(u"“" + root + u"” is a file, not a folder"));
    QCOMPARE(read(root), "just a file");

    // A usable folder says nothing.
    QVERIFY(!m_state->explainUnusableLibraryFolder());
}

void TestAppState::createNewPromptTarget()
{
    // Without "Inbox", the first project in display order receives it.
    QVERIFY(QDir(path("Inbox")).removeRecursively());
    m_library->reload();
    m_state->createNewPromptInRecent();
    QCOMPARE(QDir(path("Work")).entryList(QDir::Files).size(), 2);

    // A failed creation changes neither selection nor focus request.
    Prompt made = *m_state->selectedPrompt();
    made.frontMatter.title = QStringLiteral("no longer blank");
    m_library->save(made);
    m_state->setSelectedPromptIDs({QStringLiteral("Work/b.md")});
    m_state->setPendingEditorFocusID(std::nullopt);
    QVERIFY(QDir(path("Work")).removeRecursively());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Vesk: create failed: ")));
    m_state->createNewPromptInRecent();
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Work/b.md")});
    QVERIFY(!m_state->pendingEditorFocusID());

    // No projects: nothing happens.
    QVERIFY(QDir(m_dir->path()).removeRecursively());
    m_library->reload();
    m_state->createNewPromptInRecent();
    QVERIFY(!QFileInfo::exists(m_dir->path()));
}

void TestAppState::newProjectDialog()
{
    AnsweringPrompter prompter;
    m_state->showNewProjectDialog(); // no prompter: nothing to ask
    m_state->setProjectNamePrompter(&prompter);

    prompter.answer = QStringLiteral("  Ideas\n");
    m_state->showNewProjectDialog();
    QVERIFY(m_library->project(QStringLiteral("Ideas")));
    QVERIFY(m_state->selectedPromptIDs().isEmpty()); // not selected

    const qsizetype projects = m_library->projects().size();
    prompter.answer = QStringLiteral(" \n ");
    m_state->showNewProjectDialog();
    prompter.answer = std::nullopt; // Cancel
    m_state->showNewProjectDialog();
    QCOMPARE(m_library->projects().size(), projects);
    QCOMPARE(prompter.asked, 3);
}

void TestAppState::selectionRules()
{
    write(path("Work/c.md"), "---\ntitle: C\n---\n", at(0));
    m_library->reload();
    QVERIFY(!m_state->selectedPrompt());

    // A section id beside one prompt id still selects that prompt.
    m_state->setSelectedPromptIDs({QStringLiteral("Work/b.md"), QStringLiteral("@pinned"), QStringLiteral("Work")});
    QCOMPARE(m_state->selectedPrompt()->id, u"Work/b.md");

    // Several prompts come in library order, whatever order they were picked in.
    m_state->setSelectedPromptIDs({QStringLiteral("Work/c.md"), QStringLiteral("Inbox/a.md")});
    QVERIFY(!m_state->selectedPrompt());
    QCOMPARE(ids(m_state->selectedPrompts()), QStringList({"Inbox/a.md", "Work/c.md"}));

    // A vanished prompt stays selected but no longer matches.
    m_state->setSelectedPromptIDs({QStringLiteral("Work/c.md")});
    QVERIFY(QFile::remove(path("Work/c.md")));
    m_library->reload();
    QVERIFY(!m_state->selectedPrompt());
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Work/c.md")});

    m_state->setSearchQuery(QStringLiteral("  BODY B "));
    QVERIFY(m_state->isSearching());
    QCOMPARE(ids(m_state->searchResults()), QStringList{"Work/b.md"});
}

void TestAppState::libraryChangesAreRelayed()
{
    QSignalSpy changed(m_state.get(), &AppState::changed);
    m_library->reload();
    QCOMPARE(changed.size(), 0); // nothing on disk changed
    write(path("Work/new.md"), "new");
    m_library->reload();
    QCOMPARE(changed.size(), 1);
    m_state->setSearchQuery(QStringLiteral("x"));
    m_state->setSearchQuery(QStringLiteral("x")); // no change, no signal
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QCOMPARE(changed.size(), 3);
}

void TestAppState::everySelectionChangeWritesThePendingEditFirst()
{
    // A creation flow changes the selection too: the edit of A is written
    // before the new prompt is shown (and its edits replace the pending one).
    Prompt a = prompt("Inbox/a.md");
    m_state->setSelectedPromptIDs({a.id});
    a.body = QStringLiteral("\nlast words of a");
    m_state->scheduleSave(a);
    m_state->createNewPromptInRecent();
    QVERIFY(!m_state->hasPendingSave());
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\n---\n\nlast words of a");

    Prompt created = *m_state->selectedPrompt();
    created.body = QStringLiteral("\nnew words");
    m_state->scheduleSave(created);
    m_state->setSelectedPromptIDs({QStringLiteral("Work/b.md")});
    QCOMPARE(m_library->prompt(created.id)->body, u"\nnew words");
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\n---\n\nlast words of a");
}

void TestAppState::saveNowCarriesThePendingEdit()
{
    Prompt a = prompt("Inbox/a.md");
    a.body = QStringLiteral("\ntyped");
    m_state->scheduleSave(a);
    Prompt pinned = a;
    pinned.frontMatter.pinned = true;
    m_state->saveNow(pinned);
    QVERIFY(!m_state->hasPendingSave());
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\npinned: true\n---\n\ntyped");
    QTest::qWait(AppState::saveDelayMs + 200); // no stale pending write undoes it
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\npinned: true\n---\n\ntyped");

    // A pending edit of another prompt is written, not dropped.
    Prompt b = prompt("Work/b.md");
    b.body = QStringLiteral("\nb typed");
    m_state->scheduleSave(b);
    m_state->saveNow(prompt("Inbox/a.md"));
    QCOMPARE(read(path("Work/b.md")), "---\ntitle: B\n---\n\nb typed");
}

void TestAppState::anotherProgramsChangeIsMergedOrKept()
{
    QSignalSpy kept(m_state.get(), &AppState::overwrittenVersionKept);

    // Another program adds a tag while the body is being edited: both survive.
    Prompt a = prompt("Inbox/a.md");
    a.body = QStringLiteral("\nmy body");
    m_state->scheduleSave(a);
    write(path("Inbox/a.md"), "---\ntitle: A\ntags: [x]\n---\n\nbody a", at(60));
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\ntags: [x]\n---\n\nmy body");
    QCOMPARE(kept.size(), 0);

    // Only the title was edited here, the body there: both survive.
    a = prompt("Inbox/a.md");
    a.frontMatter.title = QStringLiteral("Mine");
    m_state->scheduleSave(a);
    write(path("Inbox/a.md"), "---\ntitle: A\ntags: [x]\n---\n\ntheir body", at(120));
    QTRY_COMPARE_WITH_TIMEOUT(read(path("Inbox/a.md")), QByteArray("---\ntitle: Mine\ntags: [x]\n---\n\ntheir body"),
                              2000);
    QCOMPARE(kept.size(), 0);

    // Both changed the body: the user's text is written, theirs is kept.
    a = prompt("Inbox/a.md");
    a.body = QStringLiteral("\nmy second body");
    m_state->scheduleSave(a);
    write(path("Inbox/a.md"), "---\ntitle: Mine\ntags: [x]\n---\n\ntheir second body", at(180));
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: Mine\ntags: [x]\n---\n\nmy second body");
    QCOMPARE(kept.size(), 1);
    QCOMPARE(kept.first().first().toString(), u"Inbox/a.md");
    QCOMPARE(m_state->overwrittenVersion(a.id)->body, u"\ntheir second body");
    m_state->forgetOverwrittenVersion(a.id);
    QVERIFY(!m_state->overwrittenVersion(a.id));

    // The same when a reload showed their version before the write.
    a = prompt("Inbox/a.md");
    a.body = QStringLiteral("\nmine again");
    m_state->scheduleSave(a);
    write(path("Inbox/a.md"), "---\ntitle: Mine\n---\n\ntheirs again", at(240));
    m_library->reload();
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: Mine\n---\n\nmine again");
    QCOMPARE(m_state->overwrittenVersion(a.id)->body, u"\ntheirs again");
}

void TestAppState::searchFollowsTypingAndTheLibrary()
{
    // Typed a key at a time, deleted back, and across a change of the
    // library: always what the plain rule finds then.
    write(path("Work/c.md"), "---\ntitle: Body of work\n---\n\nnothing", at(0));
    m_library->reload();
    const auto expect = [&](const char *query) {
        m_state->setSearchQuery(QString::fromUtf8(query));
        QCOMPARE(ids(m_state->searchResults()),
                 ids(LibraryQueries::searchResults(m_library->prompts(), QString::fromUtf8(query))));
    };
    for (const char *query : {"b", "bo", "bod", "body", "body ", "body b", "body", "bo", "body b"})
        expect(query);
    QCOMPARE(ids(m_state->searchResults()), QStringList{"Work/b.md"});

    Prompt edited = prompt("Inbox/a.md");
    edited.body = QStringLiteral("\nbody b too");
    m_library->save(edited);
    expect("body b");
    QCOMPARE(m_state->searchResults().size(), 2);
    expect("body");
    QCOMPARE(m_state->searchResults().size(), 3);
}

void TestAppState::newPromptRightAfterTypingInABlankOne()
{
    // Ctrl+N, type, Ctrl+N again before the autosave: the first prompt keeps
    // what was typed and a second one is made.
    m_state->createNewPromptInRecent();
    Prompt first = *m_state->selectedPrompt();
    first.body = QStringLiteral("\nThird body");
    m_state->scheduleSave(first);
    m_state->createNewPromptInRecent();
    const std::optional<Prompt> second = m_state->selectedPrompt();
    QVERIFY(second);
    QVERIFY(second->id != first.id);
    QCOMPARE(m_library->prompt(first.id)->body, u"\nThird body");
}

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_appstate.moc"
