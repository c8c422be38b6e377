// Crash consistency: a child process saves, moves, renames, creates and
// reorders in a loop over a small library and is killed with SIGKILL at a
// random moment, again and again. After every kill the library must be in a
// state it could have had: every prompt present exactly once and whole (its
// body carries its own checksum), every created file complete, one name per
// project, order files without repeats, and no temporary file visible.
//
//   crash_soak [--kills N] [--folder DIR] [--seed S]

#include "FrontMatter.h"
#include "PromptLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int promptCount = 12;
const QStringList fixedProjects{QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Inbox")};
const QString renamedA = QStringLiteral("Gamma");
const QString renamedB = QStringLiteral("Gamma renamed");
const QByteArray blankPrompt = "---\ntitle: \n---\n\n";

QString checksum(const QString &text)
{
    return QString::number(qChecksum(text.toUtf8()), 16) + u'-' + QString::number(text.size());
}

// A body that proves it is whole: a revision, filler of varying length (so
// writes take varying time) and the checksum of all of it.
QString bodyFor(int key, quint32 revision)
{
    QString text = QStringLiteral("rev %1 of key-%2\n").arg(revision).arg(key);
    const int filler = 200 + int(revision % 24000);
    text += QString(filler, QChar(u'a' + revision % 26));
    return u'\n' + text + u"\ncheck=" + checksum(text) + u'\n';
}

bool bodyIsWhole(const QString &body, int key)
{
    if (!body.startsWith(u'\n') || !body.endsWith(u'\n'))
        return false;
    const qsizetype check = body.lastIndexOf(u"\ncheck=");
    if (check < 0)
        return false;
    const QString text = body.mid(1, check - 1);
    return text.contains(QStringLiteral(" of key-%1\n").arg(key)) && body.mid(check + 7).trimmed() == checksum(text);
}

void setUp(const QString &root)
{
    QDir().mkpath(root);
    for (const QString &project : fixedProjects + QStringList{renamedA})
        QDir().mkpath(root + u'/' + project);
    PromptLibrary library(QUrl::fromLocalFile(root));
    const QList<Project> projects = library.projects();
    for (int key = 0; key < promptCount; ++key) {
        const std::optional<Prompt> created = library.createPrompt(projects[key % projects.size()]);
        if (!created)
            qFatal("crash_soak: cannot create prompts in %s", qUtf8Printable(root));
        Prompt prompt = *created;
        prompt.frontMatter.title = QStringLiteral("key-%1").arg(key);
        prompt.frontMatter.pinned = key % 4 == 0;
        prompt.body = bodyFor(key, 0);
        library.save(prompt);
    }
}

// Nothing here should ever fail: a "Vesk: " line from the library means the
// store itself broke, so the worker stops and the soak reports it.
void stopOnLibraryFailure(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    if (type != QtDebugMsg && message.startsWith(u"Vesk: "))
        _exit(4);
}

// The child: change the library in every way the app does, until killed.
[[noreturn]] void work(const QString &root, quint32 seed)
{
    qInstallMessageHandler(stopOnLibraryFailure);
    QRandomGenerator random(seed);
    PromptLibrary library(QUrl::fromLocalFile(root));
    for (;;) {
        const QList<Prompt> prompts = library.prompts();
        const QList<Project> projects = library.projects();
        QList<Prompt> keyed;
        int blanks = 0;
        for (const Prompt &p : prompts) {
            if (p.frontMatter.title.startsWith(u"key-"))
                keyed.append(p);
            else
                ++blanks;
        }
        if (keyed.isEmpty() || projects.isEmpty())
            _exit(3);
        const Prompt &prompt = keyed[random.bounded(int(keyed.size()))];
        const Project &project = projects[random.bounded(int(projects.size()))];
        const int op = random.bounded(100);
        if (op < 50) {
            Prompt edited = prompt;
            edited.body = bodyFor(prompt.frontMatter.title.mid(4).toInt(), random.generate());
            edited.frontMatter.pinned = random.bounded(5) == 0;
            library.save(edited);
        } else if (op < 65) {
            library.movePrompt(prompt, project);
        } else if (op < 75) {
            for (const Project &p : projects) {
                if (p.name == renamedA || p.name == renamedB) {
                    library.renameProject(p, p.name == renamedA ? renamedB : renamedA);
                    break;
                }
            }
        } else if (op < 85) {
            if (blanks < 20)
                library.createPrompt(project);
        } else {
            QStringList names;
            for (const Prompt &p : prompts) {
                if (p.projectName == project.name)
                    names.append(p.fileName());
            }
            std::shuffle(names.begin(), names.end(), random);
            library.setPromptOrder(project.name, names + names.mid(0, 2));
            QStringList ids;
            for (const Prompt &p : prompts)
                ids.append(p.id);
            std::shuffle(ids.begin(), ids.end(), random);
            PromptLibrary::writeOrderFile(library.orderFilePath(PromptLibrary::pinnedOrderFileName), ids);
        }
    }
}

struct Check
{
    QStringList problems;
    int hiddenTemporaries = 0;
};

void checkOrderFile(const QString &path, Check *check)
{
    const QStringList entries = PromptLibrary::readOrderFile(path);
    if (QSet<QString>(entries.cbegin(), entries.cend()).size() != entries.size())
        check->problems.append(u"repeated entry in " + path);
}

Check checkLibrary(const QString &root)
{
    Check check;
    QHash<int, int> seen;
    int renamedProjects = 0;
    checkOrderFile(root + u"/.vesk-pinned-order", &check);
    QDirIterator folders(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (folders.hasNext()) {
        folders.next();
        const QString name = folders.fileName();
        if (name.startsWith(u'.')) {
            check.hiddenTemporaries += name.startsWith(u".vesk-tmp-");
            continue;
        }
        if (!folders.fileInfo().isDir()) {
            check.problems.append(u"visible file in the root: " + name);
            continue;
        }
        renamedProjects += name == renamedA || name == renamedB;
        checkOrderFile(folders.filePath() + u"/.vesk-order", &check);
        QDirIterator files(folders.filePath(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        while (files.hasNext()) {
            files.next();
            const QString file = files.fileName();
            if (file.startsWith(u'.')) {
                check.hiddenTemporaries += file.startsWith(u".vesk-tmp-");
                continue;
            }
            if (!file.endsWith(u".md")) {
                check.problems.append(u"visible file that is not a prompt: " + files.filePath());
                continue;
            }
            QFile f(files.filePath());
            if (!f.open(QIODevice::ReadOnly)) {
                check.problems.append(u"unreadable prompt: " + files.filePath());
                continue;
            }
            const QByteArray bytes = f.readAll();
            if (bytes == blankPrompt)
                continue;
            const FrontMatter::ParseResult parsed = FrontMatter::parse(QString::fromUtf8(bytes));
            const QString title = parsed.matter.value(QStringLiteral("title"));
            const int key = title.startsWith(u"key-") ? title.mid(4).toInt() : -1;
            if (key < 0 || !bodyIsWhole(parsed.body, key)) {
                check.problems.append(u"torn or unknown file: " + files.filePath() + u" (" + QString::number(bytes.size())
                                      + u" bytes)");
                continue;
            }
            ++seen[key];
        }
    }
    for (int key = 0; key < promptCount; ++key) {
        if (seen.value(key) != 1)
            check.problems.append(QStringLiteral("key-%1 is there %2 times").arg(key).arg(seen.value(key)));
    }
    if (renamedProjects != 1)
        check.problems.append(QStringLiteral("%1 folders under the renamed project's names").arg(renamedProjects));
    return check;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    int kills = 1000;
    QString folder;
    quint32 seed = QRandomGenerator::system()->generate();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == u"--kills")
            kills = args[i + 1].toInt();
        else if (args[i] == u"--folder")
            folder = args[i + 1];
        else if (args[i] == u"--seed")
            seed = args[i + 1].toUInt();
    }
    const QString parent = folder.isEmpty() ? QDir::tempPath() : folder;
    QTemporaryDir scratch(parent + u"/vesk-soak-XXXXXX");
    if (!scratch.isValid()) {
        std::fprintf(stderr, "crash_soak: cannot make a folder to work in\n");
        return 2;
    }
    const QString root = scratch.path() + u"/prompts";
    setUp(root);
    std::printf("crash_soak: seed %u, %d kills in %s\n", seed, kills, qUtf8Printable(root));
    std::fflush(stdout);

    QRandomGenerator random(seed);
    int hidden = 0;
    for (int kill = 1; kill <= kills; ++kill) {
        const quint32 childSeed = random.generate();
        const pid_t child = ::fork();
        if (child == 0)
            work(root, childSeed);
        // Let it start and get some way into its work first.
        ::usleep(useconds_t(2000 + random.bounded(15000)));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        if (!(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)) {
            std::fprintf(stderr, "crash_soak: the worker stopped on its own (status %d) before kill %d\n", status, kill);
            return 1;
        }
        const Check check = checkLibrary(root);
        if (!check.problems.isEmpty()) {
            std::fprintf(stderr, "crash_soak: after kill %d (seed %u):\n  %s\n", kill, seed,
                         qUtf8Printable(check.problems.join(u"\n  ")));
            scratch.setAutoRemove(false);
            return 1;
        }
        hidden = check.hiddenTemporaries;
    }
    std::printf("crash_soak: %d kills survived; every prompt whole and present once; %d hidden temporary files "
                "left by kills (cleared at a start a day later)\n",
                kills, hidden);
    return 0;
}
