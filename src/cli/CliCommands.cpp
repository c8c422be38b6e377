#include "CliCommands.h"

#include "AppState.h"
#include "FileSearch.h"
#include "JsonOutput.h"
#include "LibraryScan.h"
#include "LibraryQueries.h"
#include "Organizer.h"
#include "PromptLibrary.h"
#include "PromptText.h"
#include "Variables.h"
#include "VeskConst.h"

#include <QFile>
#include <QJsonDocument>
#include <QFileInfo>
#include <QStringDecoder>

#include <QtGlobal>

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <functional>

namespace {

// The library reports a failed write only as a "Vesk: " warning; count them so
// that a command whose save failed does not exit 0.
std::atomic<int> loggedLibraryFailures{0};
QtMessageHandler previousMessageHandler = nullptr;

void countLibraryFailures(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message.startsWith(u"Vesk: "))
        ++loggedLibraryFailures;
    if (previousMessageHandler)
        previousMessageHandler(type, context, message);
}

CliResult failure(const QString &message)
{
    return {1, {}, (u"vesk-cli: " + message + u'\n').toUtf8()};
}

CliResult success(const QByteArray &out = {})
{
    return {0, out, {}};
}

CliResult line(const QString &text)
{
    return success((text + u'\n').toUtf8());
}

QString quoted(const QString &text)
{
    return u'\'' + text + u'\'';
}

// Prompts as lines or as a JSON array, written to `sink` in pieces as they
// are made: the output of a large library is never whole in memory.
// `prompt(i)` gives the i-th prompt, or nullptr to leave it out.
template<typename Each>
CliResult promptList(const CliArguments &args, const CliSink &sink, qsizetype count, Each prompt)
{
    constexpr qsizetype flushAt = 64 * 1024;
    QByteArray out;
    out.reserve(flushAt + 4096);
    if (args.json)
        out += '[';
    bool first = true;
    for (qsizetype i = 0; i < count; ++i) {
        const Prompt *p = prompt(i);
        if (!p)
            continue;
        if (args.json) {
            if (!std::exchange(first, false))
                out += ',';
            JsonOutput::appendPrompt(&out, *p);
        } else {
            out += (p->id + u'\t' + p->displayTitle() + u'\n').toUtf8();
        }
        if (out.size() >= flushAt) {
            sink(out);
            out.clear();
        }
    }
    if (args.json)
        out += "]\n";
    sink(out);
    return success();
}

CliResult promptList(const CliArguments &args, const CliSink &sink, const QList<Prompt> &prompts)
{
    return promptList(args, sink, prompts.size(), [&](qsizetype i) { return &prompts[i]; });
}

// Searching once needs no loaded library: the files are read and only those
// that could hold the query are parsed. Lines need only what the search kept;
// JSON reads each found prompt again as it is written, unless the listing
// kept its file: up to this much, so memory stays bounded however large the
// library.
constexpr qint64 listKeepsBytes = 32 * 1024 * 1024;

CliResult matchList(QList<FileSearch::Match> matches, const CliArguments &args, const CliSink &sink)
{
    if (!args.json) {
        QByteArray out;
        for (const FileSearch::Match &match : matches) {
            out += (match.id + u'\t' + match.displayTitle + u'\n').toUtf8();
            if (out.size() > 64 * 1024)
                sink(std::exchange(out, {}));
        }
        sink(out);
        return success();
    }
    // The whole prompts: read again and written as JSON a block at a time on
    // all cores, each block sent out in order before the next is made.
    constexpr qsizetype block = 512;
    const FileSearch::Reader reader(matches);
    bool first = true;
    sink("[");
    for (qsizetype start = 0; start < matches.size(); start += block) {
        const qsizetype count = qMin(block, matches.size() - start);
        QList<QByteArray> texts(count);
        FileSearch::Match *blockMatches = matches.data() + start;
        LibraryScan::parallelFor(count, 32, [&](qsizetype i) {
            FileSearch::AsciiBody asciiBody;
            const std::optional<Prompt> prompt = reader.load(blockMatches[i], &asciiBody);
            if (prompt && asciiBody.isSet())
                JsonOutput::appendPrompt(&texts[i], *prompt, asciiBody.view());
            else if (prompt)
                JsonOutput::appendPrompt(&texts[i], *prompt);
            blockMatches[i].bytes = {}; // written: what it kept goes
        });
        QByteArray out;
        for (const QByteArray &text : std::as_const(texts)) {
            if (text.isEmpty())
                continue;
            if (!std::exchange(first, false))
                out += ',';
            out += text;
        }
        sink(out);
    }
    sink("]\n");
    return success();
}

CliResult searchFiles(const QString &root, const CliArguments &args, const CliSink &sink)
{
    return matchList(FileSearch::search(root, args.positional.value(0)), args, sink);
}

CliResult stringList(const CliArguments &args, const QStringList &strings)
{
    if (args.json)
        return success(JsonOutput::text(JsonOutput::stringArray(strings)));
    QByteArray out;
    for (const QString &s : strings)
        out += (s + u'\n').toUtf8();
    return success(out);
}

std::optional<QString> readUtf8Input(const QString &file, QString *error)
{
    QFile input;
    const bool opened = file == u"-" ? input.open(stdin, QIODevice::ReadOnly)
                                     : (input.setFileName(file), input.open(QIODevice::ReadOnly));
    if (!opened) {
        *error = u"cannot read " + file + u": " + input.errorString();
        return std::nullopt;
    }
    const QByteArray bytes = input.readAll();
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError()) {
        *error = file + u" is not UTF-8 text";
        return std::nullopt;
    }
    return text;
}

class Commands
{
public:
    Commands(PromptLibrary &library, const CliArguments &args, const CliSink &sink)
        : lib(library)
        , args(args)
        , sink(sink)
    {
    }

    CliResult run()
    {
        static const QHash<QString, CliResult (Commands::*)()> table{
            {QStringLiteral("projects"), &Commands::projects},
            {QStringLiteral("sections"), &Commands::sections},
            {QStringLiteral("list"), &Commands::list},
            {QStringLiteral("search"), &Commands::search},
            {QStringLiteral("show"), &Commands::show},
            {QStringLiteral("vars"), &Commands::vars},
            {QStringLiteral("fill"), &Commands::fill},
            {QStringLiteral("new"), &Commands::newPrompt},
            {QStringLiteral("pin"), &Commands::pin},
            {QStringLiteral("unpin"), &Commands::unpin},
            {QStringLiteral("move"), &Commands::move},
            {QStringLiteral("trash"), &Commands::trash},
            {QStringLiteral("project-new"), &Commands::projectNew},
            {QStringLiteral("project-rename"), &Commands::projectRename},
            {QStringLiteral("project-trash"), &Commands::projectTrash},
            {QStringLiteral("place"), &Commands::place},
            {QStringLiteral("place-section"), &Commands::placeSection},
        };
        return std::invoke(table.value(args.command), this);
    }

private:
    QString arg(int i) const { return args.positional.value(i); }

    // Looks up the prompt named by positional argument i, or fails.
    template<typename Fn>
    CliResult withPrompt(int i, Fn fn)
    {
        const std::optional<Prompt> prompt = lib.prompt(arg(i));
        return prompt ? fn(*prompt) : failure(u"no prompt with id " + quoted(arg(i)));
    }

    template<typename Fn>
    CliResult withProject(const QString &name, Fn fn)
    {
        const std::optional<Project> project = lib.project(name);
        return project ? fn(*project) : failure(u"no project named " + quoted(name));
    }

    CliResult projects()
    {
        if (args.json) {
            QJsonArray array;
            for (const Project &project : lib.projects())
                array.append(JsonOutput::projectObject(project));
            return success(JsonOutput::text(array));
        }
        QByteArray out;
        for (const Project &project : lib.projects())
            out += (project.name + u'\t' + QString::number(project.promptCount) + u'\n').toUtf8();
        return success(out);
    }

    CliResult sections()
    {
        QStringList ids;
        for (const SidebarSection &section : LibraryQueries::sidebarSections(lib))
            ids.append(section.id());
        return stringList(args, ids);
    }

    CliResult list()
    {
        if (args.hasFlag(QStringLiteral("--pinned")))
            return promptList(args, sink, LibraryQueries::pinnedPrompts(lib));
        if (const std::optional<QString> name = args.option(QStringLiteral("--project"))) {
            return withProject(*name, [&](const Project &project) {
                return promptList(args, sink, LibraryQueries::promptsInProject(lib, project.name));
            });
        }
        return promptList(args, sink, lib.prompts());
    }

    CliResult search() { return searchFiles(lib.rootPath(), args, sink); }

    CliResult show()
    {
        return withPrompt(0, [&](const Prompt &prompt) {
            return success(args.json ? JsonOutput::text(JsonOutput::promptObject(prompt)) : prompt.body.toUtf8());
        });
    }

    CliResult vars()
    {
        return withPrompt(0, [&](const Prompt &prompt) { return stringList(args, Variables::extract(prompt.body)); });
    }

    CliResult fill()
    {
        QHash<QString, QString> values;
        for (const QString &assignment : args.options.value(QStringLiteral("--set"))) {
            const qsizetype eq = assignment.indexOf(u'=');
            if (eq <= 0)
                return {2, {}, (u"vesk-cli: --set takes NAME=VALUE, not " + quoted(assignment) + u"\n\n"
                                + cliUsage()).toUtf8()};
            values.insert(assignment.left(eq), assignment.mid(eq + 1));
        }
        return withPrompt(0, [&](const Prompt &prompt) {
            const QString filled = Variables::substitute(prompt.body, values);
            return success(args.json ? JsonOutput::text(filled) : filled.toUtf8());
        });
    }

    CliResult newPrompt()
    {
        std::optional<QString> body = args.option(QStringLiteral("--body"));
        if (const std::optional<QString> file = args.option(QStringLiteral("--body-file"))) {
            QString error;
            body = readUtf8Input(*file, &error);
            if (!body)
                return failure(error);
        }
        const std::optional<QString> title = args.option(QStringLiteral("--title"));
        const QString projectName =
            args.option(QStringLiteral("--project")).value_or(VeskConst::inboxProjectName.toString());

        return withProject(projectName, [&](const Project &project) {
            const std::optional<Prompt> created = lib.createPrompt(project);
            if (!created)
                return failure(u"could not create a prompt in " + quoted(project.name));
            if (!title && !body)
                return line(created->id);

            Prompt edited = *created;
            // One line, as the editor's title field keeps it: a line break
            // would end the header line and corrupt the file.
            if (title)
                edited.frontMatter.title = PromptText::oneLine(*title);
            // The blank line after the header belongs to the body, as in the editor.
            if (body)
                edited.body = u'\n' + *body;
            const int failuresBefore = loggedLibraryFailures;
            lib.save(edited);
            if (loggedLibraryFailures != failuresBefore)
                return failure(u"could not save " + quoted(edited.id));
            return line(edited.id);
        });
    }

    CliResult setPinned(bool pinned)
    {
        return withPrompt(0, [&](const Prompt &prompt) {
            if (prompt.frontMatter.pinned == pinned)
                return success();
            Prompt edited = prompt;
            edited.frontMatter.pinned = pinned;
            const int failuresBefore = loggedLibraryFailures;
            lib.save(edited);
            if (loggedLibraryFailures != failuresBefore)
                return failure(u"could not save " + quoted(prompt.id));
            return success();
        });
    }
    CliResult pin() { return setPinned(true); }
    CliResult unpin() { return setPinned(false); }

    CliResult move()
    {
        return withPrompt(0, [&](const Prompt &prompt) {
            return withProject(arg(1), [&](const Project &target) {
                const std::optional<Prompt> moved = lib.movePrompt(prompt, target);
                return moved ? line(moved->id) : failure(u"could not move " + quoted(prompt.id) + u" to "
                                                         + quoted(target.name));
            });
        });
    }

    CliResult trash()
    {
        return withPrompt(0, [&](const Prompt &prompt) {
            lib.deletePrompt(prompt);
            return lib.prompt(prompt.id) ? failure(u"could not move " + quoted(prompt.id) + u" to the Trash")
                                         : success();
        });
    }

    CliResult projectNew()
    {
        const std::optional<Project> project = lib.createProject(arg(0));
        return project ? line(project->name) : failure(u"could not create the project " + quoted(arg(0)));
    }

    CliResult projectRename()
    {
        return withProject(arg(0), [&](const Project &project) {
            const std::optional<Project> renamed = lib.renameProject(project, arg(1));
            if (renamed)
                return line(renamed->name);
            // A hidden name is renamed all the same; the library just stops
            // listing the folder.
            const QString name = PromptLibrary::sanitizeProjectName(arg(1));
            if (name.startsWith(u'.') && !QFileInfo::exists(project.path())
                && QFileInfo(lib.rootPath() + u'/' + name).isDir()) {
                CliResult result = line(name);
                result.err = (u"vesk-cli: renamed " + quoted(project.name) + u" to " + quoted(name)
                              + u", a hidden folder, so it is no longer listed as a project\n").toUtf8();
                return result;
            }
            return failure(u"could not rename " + quoted(project.name) + u" to " + quoted(arg(1)));
        });
    }

    CliResult projectTrash()
    {
        return withProject(arg(0), [&](const Project &project) {
            lib.deleteProject(project);
            return lib.project(project.name)
                ? failure(u"could not move the project " + quoted(project.name) + u" to the Trash")
                : success();
        });
    }

    // The drop operations themselves, over a state of their own.
    CliResult place()
    {
        AppState state(&lib);
        Organizer organizer(&state);
        const int failuresBefore = loggedLibraryFailures;
        QStringList moved;
        if (const std::optional<QString> before = args.option(QStringLiteral("--before"))) {
            // A row that is not there takes no drop.
            if (const std::optional<Prompt> target = lib.prompt(*before))
                organizer.reorderPrompts(args.positional, *target);
        } else {
            const QString section = *args.option(QStringLiteral("--into"));
            if (section == SidebarSection::pinnedId)
                organizer.handleDropOnSection({{VeskDrag::Kind::Prompts, args.positional}}, section);
            else
                moved = organizer.movePrompts(args.positional, section);
        }
        if (loggedLibraryFailures != failuresBefore)
            return {1, (moved.isEmpty() ? QString() : moved.join(u'\n') + u'\n').toUtf8(),
                    "vesk-cli: not every prompt could be placed\n"};
        return stringList(args, moved);
    }

    CliResult placeSection()
    {
        AppState state(&lib);
        Organizer organizer(&state);
        // Only headers that are shown can be dropped, or dropped on.
        QStringList sections;
        for (const SidebarSection &section : LibraryQueries::sidebarSections(lib))
            sections.append(section.id());
        const QString dragged = arg(0);
        const QString target = *args.option(QStringLiteral("--before"));
        if (sections.contains(dragged) && sections.contains(target))
            organizer.handleDropOnSection({{VeskDrag::Kind::Section, {dragged}}}, target);
        return success();
    }

    PromptLibrary &lib;
    const CliArguments &args;
    const CliSink &sink;
};

} // namespace

CliResult runCliCommand(PromptLibrary &library, const CliArguments &arguments, const CliSink &sink)
{
    static const bool handlerInstalled = [] {
        previousMessageHandler = qInstallMessageHandler(countLibraryFailures);
        return true;
    }();
    Q_UNUSED(handlerInstalled);
    return Commands(library, arguments, sink).run();
}

CliResult runCli(const QStringList &arguments, const CliSink &sink)
{
    const CliParseResult parsed = parseCliArguments(arguments);
    if (!parsed.arguments)
        return {2, {}, (u"vesk-cli: " + parsed.error + u"\n\n" + cliUsage()).toUtf8()};
    if (parsed.arguments->help)
        return success(cliUsage().toUtf8());

    const QUrl root = parsed.arguments->root.isEmpty()
        ? VeskConst::defaultPromptsFolder()
        : QUrl::fromLocalFile(QFileInfo(parsed.arguments->root).absoluteFilePath());
    const QString rootPath = root.toLocalFile();
    PromptLibrary::prepareRoot(rootPath);
    // The library creates its folder quietly; a folder that could not be
    // made is the first thing to tell, not an empty listing.
    if (!QFileInfo(rootPath).isDir()) {
        const int reason = ::mkdir(QFile::encodeName(rootPath).constData(), 0777) == 0 ? 0 : errno;
        if (reason != 0 || !QFileInfo(rootPath).isDir())
            return failure(u"cannot create the library folder " + quoted(rootPath) + u": "
                           + (reason == EEXIST ? QStringLiteral("it is not a folder") : qt_error_string(reason)));
    }
    if (parsed.arguments->command == u"search")
        return searchFiles(rootPath, *parsed.arguments, sink);
    // The whole library in its order needs no library in memory either.
    if (parsed.arguments->command == u"list" && parsed.arguments->options.isEmpty() && parsed.arguments->flags.isEmpty())
        return matchList(FileSearch::all(rootPath, parsed.arguments->json ? listKeepsBytes : 0), *parsed.arguments,
                         sink);
    PromptLibrary library(root, nullptr, PromptLibrary::Use::OneShot);
    return runCliCommand(library, *parsed.arguments, sink);
}
