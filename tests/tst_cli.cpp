#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

using TestFiles::read;
using TestFiles::write;

// vesk-cli as a script would use it: a real process over a real folder.
class TestCli : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readingCommands();
    void jsonShapes();
    void listedJsonIsEachPromptExactly();
    void showAndFillAreExact();
    void writingCommands();
    void errorsAndExitCodes();
    void defaultRootAndTrashInAFreshHome();
    void repeatedOrderEntryStops();
    void saysWhatHappened();
    void titlesStayOnOneLine();
    void placeBeforeARow();
    void placeIntoASection();
    void placeSection();
    void placeSkipsWhatIsNotThere();
    void placeUsageErrors();

private:
    struct Run
    {
        int exitCode = -1;
        QProcess::ExitStatus status = QProcess::NormalExit;
        QByteArray out;
        QByteArray err;
    };
    Run cli(QStringList args, const QByteArray &input = {}, bool withRoot = true);
    QJsonValue json(const QStringList &args);
    QString root() const { return m_dir->path() + u"/lib"; }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestCli::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

TestCli::Run TestCli::cli(QStringList args, const QByteArray &input, bool withRoot)
{
    if (withRoot)
        args = QStringList{QStringLiteral("--root"), root()} + args;
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_dir->path() + u"/home");
    env.remove(QStringLiteral("XDG_DATA_HOME"));
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{message}"));
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(m_dir->path());
    process.start(QStringLiteral(VESK_CLI_PATH), args);
    if (!input.isNull())
        process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        qFatal("vesk-cli did not finish");
    return {process.exitCode(), process.exitStatus(), process.readAllStandardOutput(),
            process.readAllStandardError()};
}

QJsonValue TestCli::json(const QStringList &args)
{
    const Run run = cli(args + QStringList{QStringLiteral("--json")});
    if (run.exitCode != 0)
        return QJsonValue(QString::fromUtf8("exit " + QByteArray::number(run.exitCode) + ": " + run.err));
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson("[" + run.out + "]", &error);
    return error.error == QJsonParseError::NoError ? doc.array().first() : QJsonValue(error.errorString());
}

void TestCli::readingCommands()
{
    write(root() + u"/Inbox/recent.md", "---\ntitle: Recent\n---\n\nfind me\n", TestFiles::at(5));
    write(root() + u"/Inbox/old.md", "---\ntitle: Old\n---\n", TestFiles::at(1));
    write(root() + u"/Work/pinned.md", "---\ntitle: Pin\ntags: [Needle]\npinned: true\n---\n", TestFiles::at(0));
    write(root() + u"/Work/w.md", "w", TestFiles::at(3));
    write(root() + u"/Inbox/.vesk-order", "old.md\n");
    write(root() + u"/.vesk-sections-order", "Work\n");

    QCOMPARE(cli({QStringLiteral("projects")}).out, "Work\t2\nInbox\t2\n");
    QCOMPARE(cli({QStringLiteral("sections")}).out, "Work\n@pinned\nInbox\n");
    QCOMPARE(cli({QStringLiteral("list")}).out,
             "Work/pinned.md\tPin\nInbox/recent.md\tRecent\nWork/w.md\tNew prompt\nInbox/old.md\tOld\n");
    QCOMPARE(cli({QStringLiteral("list"), QStringLiteral("--project"), QStringLiteral("Inbox")}).out,
             "Inbox/old.md\tOld\nInbox/recent.md\tRecent\n");
    QCOMPARE(cli({QStringLiteral("list"), QStringLiteral("--pinned")}).out, "Work/pinned.md\tPin\n");
    QCOMPARE(cli({QStringLiteral("search"), QStringLiteral(" NEEDLE ")}).out, "Work/pinned.md\tPin\n");
    QCOMPARE(cli({QStringLiteral("search"), QStringLiteral("find")}).out, "Inbox/recent.md\tRecent\n");
    QCOMPARE(cli({QStringLiteral("search"), QStringLiteral("nothing like it")}).out, "");
}

void TestCli::jsonShapes()
{
    write(root() + u"/Inbox/a.md", "---\ntitle: \"q: x\"\ntags: [t1, t2]\nmodel: m\n---\n\nHi {{who}}", TestFiles::at(0));

    const QJsonArray projects = json({QStringLiteral("projects")}).toArray();
    QCOMPARE(projects.size(), 1);
    QCOMPARE(projects[0].toObject(), (QJsonObject{{"name", "Inbox"}, {"path", QString(root() + u"/Inbox")}, {"promptCount", 1}}));

    const QJsonObject prompt = json({QStringLiteral("list")}).toArray().first().toObject();
    const QJsonObject expected{
        {"id", "Inbox/a.md"}, {"project", "Inbox"}, {"file", QString(root() + u"/Inbox/a.md")},
        {"title", "\"q: x\""}, {"displayTitle", "\"q: x\""}, {"tags", QJsonArray{"t1", "t2"}},
        {"model", "m"}, {"pinned", false}, {"body", "\nHi {{who}}"},
        {"modifiedAt", "2026-01-01T12:00:00.000Z"}};
    QCOMPARE(prompt, expected);
    QCOMPARE(json({QStringLiteral("show"), QStringLiteral("Inbox/a.md")}).toObject(), expected);
    QCOMPARE(json({QStringLiteral("sections")}), QJsonValue(QJsonArray{"@pinned", "Inbox"}));
    QCOMPARE(json({QStringLiteral("vars"), QStringLiteral("Inbox/a.md")}), QJsonValue(QJsonArray{"who"}));
    QCOMPARE(json({QStringLiteral("fill"), QStringLiteral("Inbox/a.md"), QStringLiteral("--set"), QStringLiteral("who=\"you\"")}),
             QJsonValue(QStringLiteral("\nHi \"you\"")));
    QCOMPARE(json({QStringLiteral("search"), QStringLiteral("zzz")}), QJsonValue(QJsonArray{}));

    // Lists are written prompt by prompt, yet read exactly as Qt's own
    // compact writer would write them, whatever the text holds.
    const QString tricky = QStringLiteral("\"quotes\" \\back\\ \t\b\f\r\n\x01\x1f\x7f é 😀 \u2028 \u0000");
    write(root() + u"/Inbox/b.md", ("---\ntitle: " + tricky.left(20) + "\ntags: [\x02, \"x\"]\n---\n\n" + tricky).toUtf8(),
          TestFiles::at(5));
    for (const QStringList &args : {QStringList{"list", "--json"}, QStringList{"search", "e", "--json"}}) {
        const Run run = cli(args);
        QCOMPARE(run.exitCode, 0);
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(run.out, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(run.out, doc.toJson(QJsonDocument::Compact) + '\n');
        QCOMPARE(doc.array().first().toObject().value("body").toString(), u'\n' + tricky);
    }
}

// `list --json` writes files that are all ASCII straight from their bytes;
// whatever the header and body hold, each prompt must read back exactly as
// `show --json`, which goes through the whole parse and Qt's own writer.
void TestCli::listedJsonIsEachPromptExactly()
{
    QByteArray controls;
    for (char c = 1; c < 0x20; ++c)
        controls += QByteArray("abcdefg").left(c % 8) + c + "\"\\";
    const QList<QByteArray> files{
        "---\ntitle: Controls\n---\n\n" + controls + "tail",
        "---\r\ntitle: CRLF\r\ntags: [a, b]\r\n---\r\n\r\nline\r\nline\r\n",
        "---\r\n---\r\nno header after all\r\n",
        "no header\n---\nstill body\n---\n",
        "---\ntitle:    \nmodel: m\npinned: true\n---\n",
        "---\ntitle: \"Ratio: 16:9\"\n  ---  \nbody after an indented closing line",
        "---\ntitle: never closed\nbody",
        "---\n---\n",
        "",
        "\\\\\"\"\"\"\"\"\"\"12345678\x7f",
        "---\ntitle: caf\xc3\xa9\n---\n\n\xf0\x9f\x98\x80 \x01",
    };
    for (qsizetype i = 0; i < files.size(); ++i)
        write(root() + u"/Inbox/f" + QString::number(i) + u".md", files[i], TestFiles::at(int(i)).addMSecs(i * 37));

    const Run list = cli({QStringLiteral("list"), QStringLiteral("--json")});
    QCOMPARE(list.exitCode, 0);
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(list.out, &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(list.out, doc.toJson(QJsonDocument::Compact) + '\n');
    const QJsonArray prompts = doc.array();
    QCOMPARE(prompts.size(), files.size());
    for (const QJsonValue &prompt : prompts) {
        const QString id = prompt.toObject().value("id").toString();
        QCOMPARE(prompt, json({QStringLiteral("show"), id}));
    }
    QCOMPARE(prompts.last().toObject().value("body").toString(), QString::fromUtf8("\n" + controls + "tail"));
}

void TestCli::showAndFillAreExact()
{
    const QByteArray crlf = "\xEF\xBB\xBF---\r\ntitle: x\r\n---\r\nLine \xF0\x9F\x98\x80 {{a}}\r\n{{ b }} {{a}}";
    write(root() + u"/Inbox/crlf.md", crlf);
    QCOMPARE(cli({QStringLiteral("show"), QStringLiteral("Inbox/crlf.md")}).out, crlf);
    QCOMPARE(cli({QStringLiteral("vars"), QStringLiteral("Inbox/crlf.md")}).out, "a\nb\n");
    QCOMPARE(cli({QStringLiteral("fill"), QStringLiteral("Inbox/crlf.md"), QStringLiteral("--set"),
                  QStringLiteral("a=x=y"), QStringLiteral("--set=b=")}).out,
             "\xEF\xBB\xBF---\r\ntitle: x\r\n---\r\nLine \xF0\x9F\x98\x80 x=y\r\n x=y");
    QCOMPARE(cli({QStringLiteral("fill"), QStringLiteral("Inbox/crlf.md")}).out, crlf);
}

void TestCli::writingCommands()
{
    const Run created = cli({QStringLiteral("new"), QStringLiteral("--title"), QStringLiteral("Plan"),
                             QStringLiteral("--body"), QStringLiteral("Line one\n")});
    QCOMPARE(created.exitCode, 0);
    const QString id = QString::fromUtf8(created.out).trimmed();
    QVERIFY2(id.startsWith(u"Inbox/") && id.endsWith(u".md"), qPrintable(id));
    QCOMPARE(read(root() + u'/' + id), "---\ntitle: Plan\n---\n\nLine one\n");

    const Run fromStdin = cli({QStringLiteral("new"), QStringLiteral("--body-file"), QStringLiteral("-")},
                              QByteArray("piped \xC3\xA9"));
    const QString stdinId = QString::fromUtf8(fromStdin.out).trimmed();
    QCOMPARE(read(root() + u'/' + stdinId), "---\ntitle: \n---\n\npiped \xC3\xA9");
    QCOMPARE(cli({QStringLiteral("new")}).exitCode, 0);

    QCOMPARE(cli({QStringLiteral("project-new"), QStringLiteral(" Ideas/2 ")}).out, "Ideas-2\n");
    QCOMPARE(cli({QStringLiteral("pin"), id}).exitCode, 0);
    QCOMPARE(read(root() + u'/' + id), "---\ntitle: Plan\npinned: true\n---\n\nLine one\n");
    QCOMPARE(cli({QStringLiteral("list"), QStringLiteral("--pinned")}).out, id.toUtf8() + "\tPlan\n");
    QCOMPARE(cli({QStringLiteral("unpin"), id}).exitCode, 0);
    QVERIFY(cli({QStringLiteral("list"), QStringLiteral("--pinned")}).out.isEmpty());

    const Run moved = cli({QStringLiteral("move"), id, QStringLiteral("Ideas-2")});
    const QString movedId = QString::fromUtf8(moved.out).trimmed();
    QCOMPARE(movedId, u"Ideas-2/" + id.mid(6));
    QCOMPARE(cli({QStringLiteral("project-rename"), QStringLiteral("Ideas-2"), QStringLiteral("Later")}).out,
             "Later\n");
    QCOMPARE(cli({QStringLiteral("new"), QStringLiteral("--project"), QStringLiteral("Later")}).exitCode, 0);
    QCOMPARE(cli({QStringLiteral("projects")}).out, "Inbox\t2\nLater\t2\n");
}

void TestCli::errorsAndExitCodes()
{
    const auto expectUsage = [this](const QStringList &args) {
        const Run run = cli(args);
        QVERIFY2(run.exitCode == 2, qPrintable(args.join(u' ')));
        QVERIFY(run.err.startsWith("vesk-cli: "));
        QVERIFY(run.err.contains("Usage: vesk-cli"));
        QVERIFY(run.out.isEmpty());
    };
    expectUsage({});
    expectUsage({QStringLiteral("frobnicate")});
    expectUsage({QStringLiteral("show")});
    expectUsage({QStringLiteral("list"), QStringLiteral("--bogus")});
    expectUsage({QStringLiteral("list"), QStringLiteral("--project")});
    expectUsage({QStringLiteral("fill"), QStringLiteral("Inbox/x.md"), QStringLiteral("--set"), QStringLiteral("novalue")});
    expectUsage({QStringLiteral("new"), QStringLiteral("--body"), QStringLiteral("a"), QStringLiteral("--body-file"),
                 QStringLiteral("b")});
    QCOMPARE(cli({QStringLiteral("--help")}).exitCode, 0);

    const auto expectRefusal = [this](const QStringList &args, const char *message) {
        const Run run = cli(args);
        QVERIFY2(run.exitCode == 1, qPrintable(args.join(u' ')));
        QVERIFY2(run.err.endsWith(QByteArray(QByteArray("vesk-cli: ") + message + '\n')), run.err.constData());
        QCOMPARE(run.err.count('\n'), run.err.count("Vesk: ") + 1); // one line of its own
    };
    write(root() + u"/Inbox/a.md", "x");
    QVERIFY(QDir().mkpath(root() + u"/Other"));
    expectRefusal({QStringLiteral("show"), QStringLiteral("Inbox/none.md")}, "no prompt with id 'Inbox/none.md'");
    expectRefusal({QStringLiteral("list"), QStringLiteral("--project"), QStringLiteral("Nope")},
                  "no project named 'Nope'");
    expectRefusal({QStringLiteral("move"), QStringLiteral("Inbox/a.md"), QStringLiteral("Nope")},
                  "no project named 'Nope'");
    expectRefusal({QStringLiteral("project-rename"), QStringLiteral("Inbox"), QStringLiteral("Elsewhere")},
                  "could not rename 'Inbox' to 'Elsewhere'");
    expectRefusal({QStringLiteral("project-rename"), QStringLiteral("Other"), QStringLiteral("Inbox")},
                  "could not rename 'Other' to 'Inbox'");
    expectRefusal({QStringLiteral("project-new"), QStringLiteral(".hidden")}, "could not create the project '.hidden'");
    expectRefusal({QStringLiteral("new"), QStringLiteral("--body-file"), m_dir->path() + u"/missing"},
                  qPrintable(u"cannot read " + m_dir->path() + u"/missing: No such file or directory"));

    // A save the disk refuses: the prompt's file is a folder now.
    QVERIFY(QFile::remove(root() + u"/Inbox/a.md"));
    QVERIFY(QDir().mkpath(root() + u"/Inbox/b.md/inner"));
    write(root() + u"/Inbox/c.md", "x");
    QVERIFY(QDir(root() + u"/Inbox").rename(QStringLiteral("c.md"), QStringLiteral("c.md.bak")));
    write(root() + u"/Inbox/c.md", "x");
    write(root() + u"/Other/p.md", "x");
    QVERIFY(QDir(root() + u"/Other").removeRecursively());
    write(root() + u"/Other", "file in place of the folder");
    expectRefusal({QStringLiteral("new"), QStringLiteral("--project"), QStringLiteral("Other")},
                  "no project named 'Other'");
}

void TestCli::defaultRootAndTrashInAFreshHome()
{
#ifndef VESK_HOME_FOLLOWS_ENV
    QSKIP("The default folder and the Trash belong to the real account here");
#endif
    const QString home = m_dir->path() + u"/home";
    const QString defaultRoot = home + u"/.local/share/Vesk/prompts";
    const Run created = cli({QStringLiteral("new"), QStringLiteral("--body"), QStringLiteral("bye")}, {}, false);
    QCOMPARE(created.exitCode, 0);
    const QString id = QString::fromUtf8(created.out).trimmed();
    QVERIFY(QFileInfo::exists(defaultRoot + u'/' + id));

    QCOMPARE(cli({QStringLiteral("trash"), id}, {}, false).exitCode, 0);
    QVERIFY(!QFileInfo::exists(defaultRoot + u'/' + id));
    const QString trashed = home + u"/.local/share/Trash/files/" + id.mid(6);
    QCOMPARE(read(trashed), "---\ntitle: \n---\n\nbye");
    QVERIFY(read(home + u"/.local/share/Trash/info/" + id.mid(6) + u".trashinfo").contains(QByteArray("Path=" + QUrl::toPercentEncoding(defaultRoot, "/"))));

    QCOMPARE(cli({QStringLiteral("project-trash"), QStringLiteral("Inbox")}, {}, false).exitCode, 0);
    QVERIFY(QFileInfo(home + u"/.local/share/Trash/files/Inbox").isDir());
    QCOMPARE(cli({QStringLiteral("trash"), id}, {}, false).exitCode, 1);
    // Nothing appeared in the working directory.
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"home"});
}

void TestCli::repeatedOrderEntryStops()
{
    QVERIFY(QDir().mkpath(root() + u"/Inbox"));
    write(root() + u"/.vesk-sections-order", "Inbox\nWork\nInbox\n");
    const Run run = cli({QStringLiteral("projects")});
    QVERIFY(run.status == QProcess::CrashExit || run.exitCode != 0);
    QVERIFY2(run.err.contains("Duplicate values for key: 'Inbox'"), run.err.constData());
    QVERIFY(run.out.isEmpty());
}

void TestCli::titlesStayOnOneLine()
{
    // A line break in a title would end its header line: what follows would
    // become other keys, or the end of the header and a new body.
    const Run run = cli({QStringLiteral("new"), QStringLiteral("--title"), QStringLiteral("x\n---\nINJECTED\r\npinned: true"),
                         QStringLiteral("--body"), QStringLiteral("real body")});
    QCOMPARE(run.exitCode, 0);
    const QString id = QString::fromUtf8(run.out.trimmed());
    const QJsonObject prompt = json({QStringLiteral("show"), id}).toObject();
    // Quoted for its colon, as every title with one is.
    QCOMPARE(prompt.value("title").toString(), u"\"x --- INJECTED pinned: true\"");
    QCOMPARE(prompt.value("body").toString(), u"\nreal body");
    QCOMPARE(prompt.value("pinned").toBool(), false);
}

void TestCli::saysWhatHappened()
{
    // A rename to a hidden name works, though the library no longer lists it.
    write(root() + u"/Work/a.md", "a");
    const Run hidden = cli({QStringLiteral("project-rename"), QStringLiteral("Work"), QStringLiteral(".secret")});
    QCOMPARE(hidden.exitCode, 0);
    QCOMPARE(hidden.out, ".secret\n");
    QVERIFY2(hidden.err.contains("hidden"), hidden.err.constData());
    QCOMPARE(read(root() + u"/.secret/a.md"), "a");

    // A library folder that cannot be made is an error of its own, not an
    // empty library or a missing "Inbox".
    write(m_dir->path() + u"/file", "in the way");
    const QStringList notAFolder{QStringLiteral("--root"), m_dir->path() + u"/file/lib"};
    for (const QStringList &args : {QStringList{QStringLiteral("projects")}, QStringList{QStringLiteral("new")}}) {
        const Run run = cli(notAFolder + args, {}, false);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.startsWith("vesk-cli: cannot create the library folder ") && run.err.contains("Not a directory"),
                 run.err.constData());
        QCOMPARE(run.out, QByteArray());
    }
}

namespace {
// Word lists as the shell passes them.
QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(u' ');
}
} // namespace

void TestCli::placeBeforeARow()
{
    write(root() + u"/Inbox/a.md", "---\ntitle: A\n---\n\nalpha", TestFiles::at(9));
    write(root() + u"/Work/w1.md", "---\ntitle: W1\n---\n\none", TestFiles::at(8));
    write(root() + u"/Work/w2.md", "---\ntitle: W2\n---\n\ntwo", TestFiles::at(7));
    write(root() + u"/Work/p.md", "---\ntitle: P\npinned: true\n---\n\npinned", TestFiles::at(6));
    write(root() + u"/Work/.vesk-order", "w1.md\nw2.md\n");

    // Into another project, just above the target row.
    Run run = cli(words("place Inbox/a.md --before Work/w2.md"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.isEmpty());
    QCOMPARE(read(root() + u"/Work/.vesk-order"), "w1.md\na.md\nw2.md\n");
    QCOMPARE(cli(words("list --project Work")).out, "Work/w1.md\tW1\nWork/a.md\tA\nWork/w2.md\tW2\n");

    // Above a pinned row: pinned, and placed in the pinned order.
    QCOMPARE(cli(words("place Work/w2.md --before Work/p.md")).exitCode, 0);
    QCOMPARE(read(root() + u"/Work/w2.md"), "---\ntitle: W2\npinned: true\n---\n\ntwo");
    QCOMPARE(read(root() + u"/.vesk-pinned-order"), "Work/w2.md\nWork/p.md\n");

    // Several at once, the target among them: the others land above it.
    QCOMPARE(cli(words("place Work/a.md Work/w1.md --before Work/a.md")).exitCode, 0);
    QCOMPARE(read(root() + u"/Work/.vesk-order"), "w1.md\na.md\nw2.md\n");
}

void TestCli::placeIntoASection()
{
    write(root() + u"/Inbox/a.md", "---\ntitle: A\n---\n\nalpha", TestFiles::at(9));
    write(root() + u"/Inbox/b.md", "---\ntitle: B\n---\n\nbeta", TestFiles::at(8));
    write(root() + u"/Work/a.md", "---\ntitle: Other A\n---\n\nother", TestFiles::at(7));
    write(root() + u"/Work/p.md", "---\ntitle: P\npinned: true\n---\n\npinned", TestFiles::at(6));
    write(root() + u"/Work/.vesk-order", "a.md\n");

    // Into a project: to its end, the moved prompts' new ids printed in order;
    // a numbered name when the file name is taken; pinned ones unpinned.
    Run run = cli(words("place Inbox/a.md Work/p.md Inbox/b.md --into Work"));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, "Work/a 2.md\nWork/b.md\n");
    QCOMPARE(read(root() + u"/Work/.vesk-order"), "a.md\na 2.md\np.md\nb.md\n");
    QCOMPARE(read(root() + u"/Work/p.md"), "---\ntitle: P\n---\n\npinned");
    QCOMPARE(json(words("place Work/b.md --into Inbox")), QJsonValue(QJsonArray{"Inbox/b.md"}));

    // Into "@pinned": pinned, nothing printed, the pinned order untouched.
    run = cli(words("place Inbox/b.md Work/a.md --into @pinned"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.isEmpty());
    QCOMPARE(read(root() + u"/Inbox/b.md"), "---\ntitle: B\npinned: true\n---\n\nbeta");
    QCOMPARE(read(root() + u"/Work/a.md"), "---\ntitle: Other A\npinned: true\n---\n\nother");
    QVERIFY(!QFile::exists(root() + u"/.vesk-pinned-order"));
}

void TestCli::placeSection()
{
    QVERIFY(QDir().mkpath(root() + u"/Work"));
    QVERIFY(QDir().mkpath(root() + u"/Home"));
    QCOMPARE(cli(words("place-section @pinned --before Work")).exitCode, 0);
    QCOMPARE(read(root() + u"/.vesk-sections-order"), "Inbox\nHome\n@pinned\nWork\n");
    QCOMPARE(cli(words("sections")).out, "Inbox\nHome\n@pinned\nWork\n");
    QCOMPARE(cli(words("place-section Work --before Inbox")).exitCode, 0);
    QCOMPARE(cli(words("sections")).out, "Work\nInbox\nHome\n@pinned\n");
}

void TestCli::placeSkipsWhatIsNotThere()
{
    write(root() + u"/Inbox/a.md", "---\ntitle: A\n---\n\nalpha", TestFiles::at(9));
    QVERIFY(QDir().mkpath(root() + u"/Work"));
    const auto quiet = [this](const char *line) {
        const Run run = cli(words(line));
        QVERIFY2(run.exitCode == 0, line);
        QVERIFY2(run.out.isEmpty() && run.err.isEmpty(), run.err.constData());
    };
    quiet("place Inbox/none.md --into Work");
    quiet("place Inbox/a.md --into Nowhere");
    quiet("place Inbox/a.md --before Work/none.md");
    quiet("place-section Nowhere --before Work");
    quiet("place-section Work --before Nowhere");
    quiet("place-section Work --before Work");
    QVERIFY(QFile::exists(root() + u"/Inbox/a.md"));
    QVERIFY(!QFile::exists(root() + u"/.vesk-sections-order"));
    QVERIFY(!QFile::exists(root() + u"/Work/.vesk-order"));

    // Known ids still move when unknown ones come along.
    const Run run = cli(words("place Gone/x.md Inbox/a.md --into Work"));
    QCOMPARE(run.out, "Work/a.md\n");
}

void TestCli::placeUsageErrors()
{
    for (const char *line : {"place --into Work", "place Inbox/a.md", "place Inbox/a.md --into Work --before Inbox/b.md",
                             "place Inbox/a.md --into", "place-section Work", "place-section --before Work",
                             "place-section Work Home --before Inbox", "place-section Work --into Inbox"}) {
        const Run run = cli(words(line));
        QVERIFY2(run.exitCode == 2, line);
        QVERIFY2(run.err.contains("Usage: vesk-cli"), line);
    }
    QVERIFY(cli({QStringLiteral("--help")}).out.contains("place ID... --before TARGET"));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
