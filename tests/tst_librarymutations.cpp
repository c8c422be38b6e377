#include "PromptLibrary.h"
#include "RecordingTrash.h"
#include "TestFiles.h"

#include <QRegularExpression>

using TestFiles::read;
using TestFiles::write;

// Every mutation on real files: what it writes, what it returns, and what it
// does when the disk refuses. Failures are made real in ways root cannot
// bypass: a file standing where a folder must be, or a removed folder.
class TestLibraryMutations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void saveRoundTripsAndRecreatesMissingFiles();
    void quotedTitlesGrowALayerPerSave();
    void saveFailureLogsAndReloads();
    void createPrompt();
    void createPromptInRemovedProjectFails();
    void createProject();
    void createProjectFailure();
    void renameProject();
    void renameProjectFailure();
    void movePrompt();
    void movePromptFailure();
    void deleteFailuresAreLogged();

private:
    void expectLog(const char *pattern)
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QString::fromUtf8(pattern)));
    }
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    RecordingTrash m_trash; // never the account's own Trash
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
};

void TestLibraryMutations::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
}

void TestLibraryMutations::saveRoundTripsAndRecreatesMissingFiles()
{
    write(path("Inbox/a.md"), "---\ntitle: Old\nunknown: dropped\n---\n\nBody\n");
    m_library->reload();
    Prompt prompt = *m_library->prompt(QStringLiteral("Inbox/a.md"));
    prompt.frontMatter = {QStringLiteral("New"), {QStringLiteral("t1")}, QStringLiteral("m"), true};
    prompt.body = QStringLiteral("\n\nStarts with a blank line");
    m_library->save(prompt);
    QCOMPARE(read(path("Inbox/a.md")),
             "---\ntitle: New\ntags: [t1]\nmodel: m\npinned: true\n---\n\n\nStarts with a blank line");
    const Prompt loaded = *m_library->prompt(prompt.id);
    QCOMPARE(loaded.body, prompt.body);
    QCOMPARE(loaded.frontMatter, prompt.frontMatter);

    // A prompt without front matter gets a header on its first save.
    write(path("Inbox/plain.md"), "Just text");
    m_library->reload();
    m_library->save(*m_library->prompt(QStringLiteral("Inbox/plain.md")));
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: \n---\n\nJust text");

    QVERIFY(QFile::remove(path("Inbox/a.md")));
    m_library->save(prompt);
    QCOMPARE(m_library->prompt(prompt.id)->body, prompt.body);
}

void TestLibraryMutations::quotedTitlesGrowALayerPerSave()
{
    const Prompt created = *m_library->createPrompt(*m_library->project(QStringLiteral("Inbox")));
    Prompt prompt = created;
    prompt.frontMatter.title = QStringLiteral("a: b");
    m_library->save(prompt);
    QCOMPARE(m_library->prompt(prompt.id)->frontMatter.title, u"\"a: b\"");
    m_library->save(*m_library->prompt(prompt.id));
    QCOMPARE(m_library->prompt(prompt.id)->frontMatter.title, u"\"\\\"a: b\\\"\"");
    QCOMPARE(read(prompt.filePath()), "---\ntitle: \"\\\"a: b\\\"\"\n---\n\n");
}

void TestLibraryMutations::saveFailureLogsAndReloads()
{
    write(path("Work/a.md"), "---\ntitle: Kept\n---\n");
    m_library->reload();
    const Prompt prompt = *m_library->prompt(QStringLiteral("Work/a.md"));

    // The project folder is replaced by a file: the write cannot happen.
    QVERIFY(QDir(path("Work")).removeRecursively());
    write(path("Work"), "a file where the folder was");
    Prompt edited = prompt;
    edited.frontMatter.title = QStringLiteral("Lost");
    int reloads = 0;
    connect(m_library.get(), &PromptLibrary::changed, this, [&] { ++reloads; });
    expectLog("^Vesk: save failed for Work/a\\.md: .+");
    m_library->save(edited);
    QCOMPARE(reloads, 1);
    QVERIFY(!m_library->prompt(prompt.id));
    QCOMPARE(read(path("Work")), "a file where the folder was");
}

void TestLibraryMutations::createPrompt()
{
    write(path("Inbox/existing.md"), "x");
    m_library->reload();
    const std::optional<Prompt> created = m_library->createPrompt(*m_library->project(QStringLiteral("Inbox")));
    QVERIFY(created);
    static const QRegularExpression uuidName(QStringLiteral(
        "^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.md$"));
    QVERIFY2(uuidName.match(created->fileName()).hasMatch(), qPrintable(created->fileName()));
    QCOMPARE(created->id, u"Inbox/" + created->fileName());
    QCOMPARE(read(created->filePath()), "---\ntitle: \n---\n\n");
    QCOMPARE(created->body, u"\n");
    QCOMPARE(m_library->project(QStringLiteral("Inbox"))->promptCount, 2);
}

void TestLibraryMutations::createPromptInRemovedProjectFails()
{
    QVERIFY(QDir().mkpath(path("Gone")));
    m_library->reload();
    const Project gone = *m_library->project(QStringLiteral("Gone"));
    QVERIFY(QDir(path("Gone")).removeRecursively());
    int reloads = 0;
    connect(m_library.get(), &PromptLibrary::changed, this, [&] { ++reloads; });
    expectLog("^Vesk: create failed: .+");
    QVERIFY(!m_library->createPrompt(gone));
    QCOMPARE(reloads, 0);
    QVERIFY(m_library->project(QStringLiteral("Gone"))); // lists unchanged
}

void TestLibraryMutations::createProject()
{
    const std::optional<Project> sanitized = m_library->createProject(QStringLiteral("  a/b:c\\d \n"));
    QVERIFY(sanitized);
    QCOMPARE(sanitized->name, u"a-b-c-d");
    QVERIFY(QFileInfo(path("a-b-c-d")).isDir());
    QCOMPARE(sanitized->promptCount, 0);

    QCOMPARE(m_library->createProject(QStringLiteral("   ")).value_or(Project{}).name, u"Untitled");
    QCOMPARE(m_library->createProject(QStringLiteral("dots. (ok).")).value_or(Project{}).name, u"dots. (ok).");

    // Existing name: the existing project, nothing created, no reload.
    int reloads = 0;
    connect(m_library.get(), &PromptLibrary::changed, this, [&] { ++reloads; });
    QCOMPARE(m_library->createProject(QStringLiteral("a-b-c-d")), sanitized);
    QCOMPARE(reloads, 0);

    // A hidden name is created but never listed, so there is nothing to return.
    QVERIFY(!m_library->createProject(QStringLiteral(".hidden")));
    QVERIFY(QFileInfo(path(".hidden")).isDir());

    // A file of that name: nothing to return, nothing touched.
    write(path("taken"), "file");
    QVERIFY(!m_library->createProject(QStringLiteral("taken")));
    QCOMPARE(read(path("taken")), "file");
}

void TestLibraryMutations::createProjectFailure()
{
    PromptLibrary library(QUrl::fromLocalFile(path("lib")));
    QVERIFY(QDir(path("lib")).removeRecursively());
    expectLog("^Vesk: createProject failed: .+");
    QVERIFY(!library.createProject(QStringLiteral("Ideas")));
    QVERIFY(!QFileInfo::exists(path("lib")));
}

void TestLibraryMutations::renameProject()
{
    write(path("Old/p.md"), "x");
    write(path("Old/.vesk-order"), "p.md\n");
    write(path(".vesk-sections-order"), "Old\n");
    m_library->reload();
    const Project old = *m_library->project(QStringLiteral("Old"));

    QCOMPARE(m_library->renameProject(old, QStringLiteral("Old")), old); // same name: unchanged
    const std::optional<Project> renamed = m_library->renameProject(old, QStringLiteral(" New: one "));
    QVERIFY(renamed);
    QCOMPARE(renamed->name, u"New- one");
    QCOMPARE(renamed->promptCount, 1);
    QVERIFY(!QFileInfo::exists(path("Old")));
    QCOMPARE(read(path("New- one/.vesk-order")), "p.md\n");        // moved with the folder
    QCOMPARE(read(path(".vesk-sections-order")), "Old\n");          // not rewritten
    QVERIFY(m_library->prompt(QStringLiteral("New- one/p.md")));
}

void TestLibraryMutations::renameProjectFailure()
{
    QVERIFY(QDir().mkpath(path("A")));
    QVERIFY(QDir().mkpath(path("B")));
    m_library->reload();
    const Project a = *m_library->project(QStringLiteral("A"));
    QVERIFY(!m_library->renameProject(a, QStringLiteral(" \n\t")));
    QVERIFY(!m_library->renameProject(a, QStringLiteral("B")));
    QVERIFY(!m_library->renameProject(*m_library->project(QStringLiteral("Inbox")), QStringLiteral("Other")));
    QVERIFY(QFileInfo(path("A")).isDir() && QFileInfo(path("Inbox")).isDir());

    QVERIFY(QDir(path("A")).removeRecursively());
    expectLog("^Vesk: renameProject failed: .+");
    QVERIFY(!m_library->renameProject(a, QStringLiteral("C")));
    QVERIFY(!QFileInfo::exists(path("C")));
}

void TestLibraryMutations::movePrompt()
{
    write(path("From/Note.md"), "moving");
    write(path("From/Idea.markdown"), "idea");
    write(path("To/Note.md"), "there");
    write(path("To/Note 2.md"), "there too");
    write(path("To/Idea.markdown"), "there");
    write(path("From/.vesk-order"), "Note.md\n");
    m_library->reload();
    const Project to = *m_library->project(QStringLiteral("To"));

    const std::optional<Prompt> note = m_library->movePrompt(*m_library->prompt(QStringLiteral("From/Note.md")), to);
    QVERIFY(note);
    QCOMPARE(note->id, u"To/Note 3.md");
    QCOMPARE(read(path("To/Note 3.md")), "moving");
    QCOMPARE(read(path("To/Note.md")), "there");
    QCOMPARE(read(path("From/.vesk-order")), "Note.md\n"); // order files untouched

    const std::optional<Prompt> idea =
        m_library->movePrompt(*m_library->prompt(QStringLiteral("From/Idea.markdown")), to);
    QCOMPARE(idea->id, u"To/Idea 2.md");

    // Into its own project: returned unchanged, nothing reloads.
    int reloads = 0;
    connect(m_library.get(), &PromptLibrary::changed, this, [&] { ++reloads; });
    QCOMPARE(m_library->movePrompt(*note, to), note);
    QCOMPARE(reloads, 0);

    // A free name keeps its extension.
    write(path("From/Solo.markdown"), "solo");
    m_library->reload();
    QCOMPARE(m_library->movePrompt(*m_library->prompt(QStringLiteral("From/Solo.markdown")), to)->id,
             u"To/Solo.markdown");
}

void TestLibraryMutations::movePromptFailure()
{
    write(path("From/Note.md"), "stays");
    QVERIFY(QDir().mkpath(path("To")));
    m_library->reload();
    const Project to = *m_library->project(QStringLiteral("To"));
    const Prompt note = *m_library->prompt(QStringLiteral("From/Note.md"));
    QVERIFY(QDir(path("To")).removeRecursively());
    expectLog("^Vesk: move failed: .+");
    QVERIFY(!m_library->movePrompt(note, to));
    QCOMPARE(read(path("From/Note.md")), "stays");
}

void TestLibraryMutations::deleteFailuresAreLogged()
{
    write(path("P/a.md"), "x");
    m_library->reload();
    const Prompt prompt = *m_library->prompt(QStringLiteral("P/a.md"));
    const Project project = *m_library->project(QStringLiteral("P"));
    QVERIFY(QDir(path("P")).removeRecursively());

    int reloads = 0;
    connect(m_library.get(), &PromptLibrary::changed, this, [&] { ++reloads; });
    expectLog("^Vesk: delete failed for P/a\\.md: .+");
    m_library->deletePrompt(prompt);
    expectLog("^Vesk: deleteProject failed: .+");
    m_library->deleteProject(project);
    // Both reloaded from disk; only the first found something new (P gone).
    QCOMPARE(reloads, 1);
    QVERIFY(!m_library->project(QStringLiteral("P")));
    QVERIFY(!m_library->prompt(QStringLiteral("P/a.md")));
}

QTEST_GUILESS_MAIN(TestLibraryMutations)
#include "tst_librarymutations.moc"
