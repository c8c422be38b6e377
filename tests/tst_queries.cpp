#include "FileSearch.h"
#include "LibraryQueries.h"
#include "PromptLibrary.h"
#include "TestFiles.h"

#include <QRandomGenerator>

using TestFiles::at;
using TestFiles::ids;
using TestFiles::write;

class TestQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void search();
    void fastSearchesAgreeWithThePlainRule();
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

void TestQueries::fastSearchesAgreeWithThePlainRule()
{
    // Random libraries and queries: the prepared search texts (narrowing as a
    // query grows) and the search straight from the files must find exactly
    // what the plain rule finds, in the same order.
    const QStringList pieces{"Refactor", "review", "KEY", "key", "ß", "SS", "Éclair", "éclair", "\u212A",
                             "İstanbul", "new", "prompt", "model", "tags", "a:b", "\"q\"", "  ", "\n", "\r\n",
                             "{{x}}", "\t", "ab", "ba", "\u00A0", "😀", "x"};
    const QStringList queries{"r", "re", "ref", "refactor", "new p", "NEW PROMPT", "w p", "k", "key", "ss", "ß",
                              "é", "É", "éclair", "i̇", "İ", "model", "claude", "tags", "a:b", "\"q", "{{",
                              "\n", "b\nr", "😀", "zzz", "prompt", " x ", "ab"};
    for (quint32 seed = 1; seed <= 6; ++seed) {
        QRandomGenerator random(seed);
        QTemporaryDir dir;
        auto text = [&](int words) {
            QString t;
            for (int i = 0; i < words; ++i)
                t += pieces[random.bounded(int(pieces.size()))] + (random.bounded(3) ? u" " : u"");
            return t;
        };
        for (int i = 0; i < 60; ++i) {
            const QString project = QStringList{"Inbox", "Work", "Ünï", "b"}[random.bounded(4)];
            QByteArray file;
            const int shape = random.bounded(6);
            if (shape == 0) { // no header at all
                file = text(6).toUtf8();
            } else if (shape == 5) { // a header of odd lines: repeated keys, CR LF, spaces, unclosed
                const QList<QByteArray> lines{"title: a", " title :b: c", "tags: [x, y]", "tags:", "model:\tm ",
                                              "pinned: TRUE", "pinned: yes", "pinned:true\r", "title", ": x",
                                              "---\r", "  ---  ", "\t---", "-", "\r", "", "x: y"};
                file = random.bounded(2) ? "---\n" : "---\r\n";
                for (int line = random.bounded(7); line > 0; --line)
                    file += lines[random.bounded(int(lines.size()))] + (random.bounded(4) ? "\n" : "\r\n");
                if (random.bounded(3))
                    file += "---\n";
                file += random.bounded(2) ? QByteArray("ab x\nrefactor") : text(2).toUtf8();
            } else {
                file = "---\ntitle: " + (shape == 1 ? QByteArray("  ") : text(2).toUtf8()) + '\n';
                if (random.bounded(2))
                    file += "tags: [" + text(1).toUtf8() + ", " + text(1).toUtf8() + "]\n";
                if (random.bounded(2))
                    file += "model: " + text(1).toUtf8() + '\n';
                if (random.bounded(3) == 0)
                    file += "pinned: true\n";
                file += "---\n\n" + text(random.bounded(20)).toUtf8();
            }
            write(dir.path() + u'/' + project + u"/p" + QString::number(i) + (i % 7 ? u".md" : u".MARKDOWN"), file,
                  at(random.bounded(20)));
        }
        write(dir.path() + u"/Work/not-utf8.md", "title \xff\xfe refactor", at(1));
        PromptLibrary library(QUrl::fromLocalFile(dir.path()));
        const QList<Prompt> &all = library.prompts();
        const QList<FileSearch::Match> listed = FileSearch::all(dir.path(), random.bounded(2) ? 1024 : 0);
        QCOMPARE(ids(listed), ids(all));
        // A file taken apart from its bytes, kept or read again, is the same prompt.
        const FileSearch::Reader reader(listed);
        for (const FileSearch::Match &match : listed) {
            FileSearch::AsciiBody body;
            std::optional<Prompt> fast = reader.load(match, &body);
            QVERIFY(fast);
            if (body.isSet())
                fast->body = QString::fromLatin1(body.view());
            QVERIFY2(fast == library.prompt(match.id), qPrintable(match.id));
        }
        QList<qsizetype> previous;
        QString previousQuery;
        for (const QString &query : queries) {
            const QStringList plain = ids(LibraryQueries::searchResults(all, query));
            QStringList prepared;
            for (const qsizetype index : LibraryQueries::searchIndices(all, query))
                prepared.append(all[index].id);
            QCOMPARE(prepared, plain);
            const QList<FileSearch::Match> fromFiles = FileSearch::search(dir.path(), query);
            QCOMPARE(ids(fromFiles), plain);
            const FileSearch::Reader searchReader(fromFiles);
            for (const FileSearch::Match &match : fromFiles) {
                QCOMPARE(match.displayTitle, library.prompt(match.id)->displayTitle());
                QVERIFY(searchReader.load(match) == library.prompt(match.id));
            }
            // Typing on: what contains the longer query is among the earlier results.
            if (!previousQuery.isEmpty() && query.trimmed().toLower().contains(previousQuery.trimmed().toLower())) {
                QStringList narrowed;
                for (const qsizetype index : LibraryQueries::searchIndices(all, query, &previous))
                    narrowed.append(all[index].id);
                QCOMPARE(narrowed, plain);
            }
            previous = LibraryQueries::searchIndices(all, query);
            previousQuery = query;
        }
    }
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
