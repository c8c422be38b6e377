// The menu actions and their alerts, answered through a scripted Alerts.

#include "AppState.h"
#include "FakeAlerts.h"
#include "LibraryActions.h"
#include "PromptLibrary.h"
#include "RecordingTrash.h"
#include "TestFiles.h"

using TestFiles::at;
using TestFiles::ids;
using TestFiles::read;
using TestFiles::write;

class TestLibraryActions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void pinKeepsThePendingEdit();
    void trashOnePromptNamesIt();
    void trashSeveralCountsThem();
    void trashCancelledOrClosedChangesNothing();
    void renameTrimsAndRenames();
    void renameCancelledSameOrBlankChangesNothing();
    void renameRefusedSaysSo();
    void trashProjectTextsByCount();
    void trashProjectClearsItsPromptsFromTheSelection();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    Prompt prompt(const QString &id) const { return *m_library->prompt(id); }
    Project project(const QString &name) const { return *m_library->project(name); }
    void open();

    std::unique_ptr<RecordingTrash> m_trash; // never the account's own Trash
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    ScriptedAlerts m_alerts;
    std::unique_ptr<LibraryActions> m_actions;
};

void TestLibraryActions::init()
{
    m_trash.reset();
    m_trash = std::make_unique<RecordingTrash>();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\nbody a", at(50));
    write(path("Inbox/blank.md"), "---\ntitle:   \n---\n\nno title", at(45));
    write(path("Work/w1.md"), "---\ntitle: W1\n---\n\none", at(30));
    write(path("Work/p1.md"), "---\ntitle: P1\npinned: true\n---\n\npinned", at(20));
    write(path("Solo/s.md"), "---\ntitle: S\n---\n\nsolo", at(10));
    QVERIFY(QDir().mkpath(path("Empty")));
    m_alerts.shown.clear();
    m_alerts.script.clear();
}

void TestLibraryActions::open()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_state->setAlerts(&m_alerts);
    m_actions = std::make_unique<LibraryActions>(m_state.get());
}

void TestLibraryActions::pinKeepsThePendingEdit()
{
    open();
    const Prompt asListed = prompt("Inbox/a.md"); // what the menu was built from
    Prompt edited = asListed;
    edited.body = QStringLiteral("\ntyped just now");
    m_state->scheduleSave(edited);
    m_actions->setPinned({asListed}, true);
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\npinned: true\n---\n\ntyped just now");
    QTest::qWait(AppState::saveDelayMs + 100); // and no late save takes the pin back
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\npinned: true\n---\n\ntyped just now");
}

void TestLibraryActions::trashOnePromptNamesIt()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/blank.md"), QStringLiteral("Work/w1.md")});
    m_alerts.script = {{0, {}}};
    m_actions->confirmAndDeletePrompts({prompt("Inbox/blank.md")});
    QCOMPARE(m_alerts.shown.size(), 1);
    const Alert &alert = m_alerts.shown.first();
    QCOMPARE(alert.style, Alert::Style::Warning);
    QCOMPARE(alert.message, u"Move “New prompt” to Trash?");
    QCOMPARE(alert.informative, u"The prompt file will be moved to the Trash. You can restore it from there.");
    QCOMPARE(alert.buttons, QStringList({"Move to Trash", "Cancel"}));
    QVERIFY(!alert.field);
    QVERIFY(!QFile::exists(path("Inbox/blank.md")));
    QVERIFY(!m_library->prompt(QStringLiteral("Inbox/blank.md")));
    QCOMPARE(m_trash->trashed, QStringList{path("Inbox/blank.md")});
    QCOMPARE(read(m_trash->trashedPath(0)), "---\ntitle:   \n---\n\nno title");
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Work/w1.md")});
}

void TestLibraryActions::trashSeveralCountsThem()
{
    open();
    m_alerts.script = {{0, {}}};
    m_actions->confirmAndDeletePrompts({prompt("Inbox/a.md"), prompt("Work/w1.md"), prompt("Solo/s.md")});
    QCOMPARE(m_alerts.shown.first().message, u"Move 3 prompts to Trash?");
    QCOMPARE(m_alerts.shown.first().informative,
             u"The selected prompt files will be moved to the Trash. You can restore them from there.");
    QCOMPARE(m_alerts.shown.first().buttons, QStringList({"Move to Trash", "Cancel"}));
    QCOMPARE(ids(m_library->prompts()), QStringList({"Work/p1.md", "Inbox/blank.md"}));
}

void TestLibraryActions::trashCancelledOrClosedChangesNothing()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    m_alerts.script = {{1, {}}}; // "Cancel"
    m_actions->confirmAndDeletePrompts({prompt("Inbox/a.md")});
    m_actions->confirmAndDeletePrompts({prompt("Inbox/a.md")}); // closed: no answer scripted
    QCOMPARE(m_alerts.shown.size(), 2);
    QVERIFY(QFile::exists(path("Inbox/a.md")));
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Inbox/a.md")});
    m_actions->confirmAndDeletePrompts({}); // nothing to ask about
    QCOMPARE(m_alerts.shown.size(), 2);
}

void TestLibraryActions::renameTrimsAndRenames()
{
    open();
    m_alerts.script = {{0, QStringLiteral("  Clients: a/b \n")}};
    m_actions->renameProject(project("Work"));
    const Alert &alert = m_alerts.shown.first();
    QCOMPARE(alert.message, u"Rename “Work”");
    QCOMPARE(alert.informative,
             u"Choose a new name for this project. Slashes, colons, and backslashes are replaced with hyphens.");
    QCOMPARE(alert.buttons, QStringList({"Rename", "Cancel"}));
    QCOMPARE(alert.field, std::optional<QString>(QStringLiteral("Work")));
    QVERIFY(QFile::exists(path("Clients- a-b/w1.md")));
    QVERIFY(m_library->project(QStringLiteral("Clients- a-b")));
    QCOMPARE(m_alerts.shown.size(), 1);
}

void TestLibraryActions::renameCancelledSameOrBlankChangesNothing()
{
    open();
    m_alerts.script = {{1, QStringLiteral("Other")}, {0, QStringLiteral(" Work ")}, {0, QStringLiteral(" \n ")}};
    for (int i = 0; i < 3; ++i)
        m_actions->renameProject(project("Work"));
    QCOMPARE(m_alerts.shown.size(), 3); // no refusal among them
    QVERIFY(QFile::exists(path("Work/w1.md")));
    QVERIFY(!QFile::exists(path("Other")));
}

void TestLibraryActions::renameRefusedSaysSo()
{
    open();
    m_alerts.script = {{0, QStringLiteral("Solo")}, {0, {}}};
    m_actions->renameProject(project("Work"));
    QCOMPARE(m_alerts.shown.size(), 2);
    const Alert &refusal = m_alerts.shown.last();
    QCOMPARE(refusal.style, Alert::Style::Warning);
    QCOMPARE(refusal.message, u"Couldn't rename project.");
    QCOMPARE(refusal.informative, u"A project with that name may already exist.");
    QVERIFY(refusal.buttons.isEmpty()); // the platform's single default button
    QVERIFY(QFile::exists(path("Work/w1.md")));
    QVERIFY(QFile::exists(path("Solo/s.md")));
}

void TestLibraryActions::trashProjectTextsByCount()
{
    open();
    QCOMPARE(LibraryActions::deleteProjectAlert(project("Solo")).informative,
             u"This project contains 1 prompt. They will be moved to the Trash with the folder.");
    QCOMPARE(LibraryActions::deleteProjectAlert(project("Work")).informative,
             u"This project contains 2 prompts. They will be moved to the Trash with the folder.");
    const Alert empty = LibraryActions::deleteProjectAlert(project("Empty"));
    QCOMPARE(empty.message, u"Move “Empty” to Trash?");
    QCOMPARE(empty.informative, u"The project folder will be moved to the Trash.");
    QCOMPARE(empty.buttons, QStringList({"Move to Trash", "Cancel"}));
}

void TestLibraryActions::trashProjectClearsItsPromptsFromTheSelection()
{
    open();
    m_state->setSelectedPromptIDs({QStringLiteral("Work/w1.md"), QStringLiteral("Work/p1.md"),
                                   QStringLiteral("Inbox/a.md")});
    m_alerts.script = {{1, {}}};
    m_actions->confirmAndDeleteProject(project("Work"));
    QVERIFY(QFile::exists(path("Work")));
    QCOMPARE(m_state->selectedPromptIDs().size(), 3);

    m_alerts.script = {{0, {}}};
    m_actions->confirmAndDeleteProject(project("Work"));
    QCOMPARE(m_alerts.shown.last().message, u"Move “Work” to Trash?");
    QVERIFY(!QFile::exists(path("Work")));
    QCOMPARE(m_trash->trashed, QStringList{path("Work")});
    QVERIFY(QFile::exists(m_trash->trashedPath(0, QStringLiteral("p1.md"))));
    QVERIFY(!m_library->project(QStringLiteral("Work")));
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Inbox/a.md")});
}

QTEST_GUILESS_MAIN(TestLibraryActions)
#include "tst_libraryactions.moc"
