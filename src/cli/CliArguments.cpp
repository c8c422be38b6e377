#include "CliArguments.h"

namespace {

// Options of each command that take a value, and those that do not.
const QHash<QString, QStringList> &valueOptions()
{
    static const QHash<QString, QStringList> options{
        {QStringLiteral("list"), {QStringLiteral("--project")}},
        {QStringLiteral("fill"), {QStringLiteral("--set")}},
        {QStringLiteral("new"),
         {QStringLiteral("--project"), QStringLiteral("--title"), QStringLiteral("--body"),
          QStringLiteral("--body-file")}},
        {QStringLiteral("place"), {QStringLiteral("--before"), QStringLiteral("--into")}},
        {QStringLiteral("place-section"), {QStringLiteral("--before")}},
    };
    return options;
}

const QHash<QString, QStringList> &flagOptions()
{
    static const QHash<QString, QStringList> flags{
        {QStringLiteral("list"), {QStringLiteral("--pinned")}},
    };
    return flags;
}

constexpr int oneOrMore = -1;

const QHash<QString, int> &positionalCounts()
{
    static const QHash<QString, int> counts{
        {QStringLiteral("projects"), 0}, {QStringLiteral("sections"), 0},
        {QStringLiteral("list"), 0},     {QStringLiteral("search"), 1},
        {QStringLiteral("show"), 1},     {QStringLiteral("vars"), 1},
        {QStringLiteral("fill"), 1},     {QStringLiteral("new"), 0},
        {QStringLiteral("pin"), 1},      {QStringLiteral("unpin"), 1},
        {QStringLiteral("move"), 2},     {QStringLiteral("trash"), 1},
        {QStringLiteral("project-new"), 1},   {QStringLiteral("project-rename"), 2},
        {QStringLiteral("project-trash"), 1},
        {QStringLiteral("place"), oneOrMore},  {QStringLiteral("place-section"), 1},
    };
    return counts;
}

} // namespace

std::optional<QString> CliArguments::option(const QString &name) const
{
    const auto values = options.constFind(name);
    if (values == options.constEnd() || values->isEmpty())
        return std::nullopt;
    return values->last();
}

CliParseResult parseCliArguments(const QStringList &arguments)
{
    CliArguments parsed;
    bool onlyPositional = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &word = arguments[i];
        if (onlyPositional || !word.startsWith(u"-") || word == u"-") {
            if (parsed.command.isEmpty())
                parsed.command = word;
            else
                parsed.positional.append(word);
            continue;
        }
        if (word == u"--") {
            onlyPositional = true;
            continue;
        }

        // --name=value is accepted as well as --name value.
        QString name = word;
        std::optional<QString> inlineValue;
        if (const qsizetype eq = word.indexOf(u'='); word.startsWith(u"--") && eq > 2) {
            name = word.left(eq);
            inlineValue = word.mid(eq + 1);
        }

        if (name == u"--help" || name == u"-h") {
            parsed.help = true;
        } else if (name == u"--json") {
            parsed.json = true;
        } else if (name == u"--root") {
            if (!inlineValue && i + 1 >= arguments.size())
                return {std::nullopt, QStringLiteral("--root needs a folder")};
            parsed.root = inlineValue ? *inlineValue : arguments[++i];
        } else if (valueOptions().value(parsed.command).contains(name)) {
            if (!inlineValue && i + 1 >= arguments.size())
                return {std::nullopt, name + u" needs a value"};
            parsed.options[name].append(inlineValue ? *inlineValue : arguments[++i]);
        } else if (flagOptions().value(parsed.command).contains(name) && !inlineValue) {
            parsed.flags.append(name);
        } else {
            return {std::nullopt, u"unknown option " + word};
        }
    }

    if (parsed.help)
        return {parsed, {}};
    if (parsed.command.isEmpty())
        return {std::nullopt, QStringLiteral("no command given")};
    const auto expected = positionalCounts().constFind(parsed.command);
    if (expected == positionalCounts().constEnd())
        return {std::nullopt, u"unknown command " + parsed.command};
    if (*expected == oneOrMore && parsed.positional.isEmpty())
        return {std::nullopt, parsed.command + u" takes one or more arguments"};
    if (*expected != oneOrMore && parsed.positional.size() != *expected)
        return {std::nullopt, parsed.command + u" takes " + QString::number(*expected) + u" argument(s)"};
    if (parsed.command == u"new" && parsed.options.contains(QStringLiteral("--body"))
        && parsed.options.contains(QStringLiteral("--body-file")))
        return {std::nullopt, QStringLiteral("--body and --body-file exclude each other")};
    if (parsed.command == u"list" && parsed.hasFlag(QStringLiteral("--pinned"))
        && parsed.options.contains(QStringLiteral("--project")))
        return {std::nullopt, QStringLiteral("--pinned and --project exclude each other")};
    if (parsed.command == u"place"
        && parsed.options.contains(QStringLiteral("--before")) == parsed.options.contains(QStringLiteral("--into")))
        return {std::nullopt, QStringLiteral("place takes either --before or --into")};
    if (parsed.command == u"place-section" && !parsed.options.contains(QStringLiteral("--before")))
        return {std::nullopt, QStringLiteral("place-section needs --before")};
    return {parsed, {}};
}

QString cliUsage()
{
    return QStringLiteral(
        "Usage: vesk-cli [--root DIR] [--json] COMMAND [ARGS...]\n"
        "\n"
        "The Vesk prompt library from the command line. DIR defaults to the app's\n"
        "prompts folder; it and its \"Inbox\" project are created when missing.\n"
        "\n"
        "Reading (add --json for one JSON value):\n"
        "  projects                       projects in display order, with prompt counts\n"
        "  sections                       sidebar section ids in sidebar order\n"
        "  list [--project NAME|--pinned] prompts in library, project or pinned order\n"
        "  search QUERY                   prompts whose title, body or tags contain QUERY\n"
        "  show ID                        the prompt's body, exactly as stored\n"
        "  vars ID                        the body's variables, in order of appearance\n"
        "  fill ID [--set NAME=VALUE]...  the body with those variables filled in\n"
        "\n"
        "Writing:\n"
        "  new [--project NAME] [--title TEXT] [--body TEXT | --body-file FILE|-]\n"
        "                                 create a prompt (default project: Inbox); prints its id\n"
        "  pin ID | unpin ID              pin or unpin a prompt\n"
        "  move ID PROJECT                move a prompt to another project; prints the new id\n"
        "  trash ID                       move a prompt to the Trash\n"
        "  project-new NAME               create a project; prints its name\n"
        "  project-rename NAME NEWNAME    rename a project; prints the new name\n"
        "  project-trash NAME             move a project and its prompts to the Trash\n"
        "\n"
        "Organising, as the app's drag and drop does:\n"
        "  place ID... --before TARGET    as dropping the prompts on TARGET's row: into its\n"
        "                                 project (or Pinned) just above it\n"
        "  place ID... --into SECTION     as dropping them on a section header: @pinned pins\n"
        "                                 them; a project takes them at its end and the\n"
        "                                 moved prompts' new ids are printed\n"
        "  place-section SECTION --before SECTION\n"
        "                                 as dropping one header on another\n"
        "Ids and sections that do not exist are skipped, as a drop skips them.\n"
        "\n"
        "A prompt ID is PROJECT/FILE, as `list` prints it. Exit status: 0 on success,\n"
        "1 when the library refuses or cannot find something, 2 on a usage error.\n");
}
