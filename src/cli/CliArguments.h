#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

// The words of one vesk-cli call, split into global options, the command,
// its options and its positional arguments.
struct CliArguments
{
    QString root;                          // --root DIR; empty: the default folder
    bool json = false;                     // --json
    bool help = false;                     // --help / -h
    QString command;
    QStringList positional;
    QHash<QString, QStringList> options;   // --name VALUE (repeatable)
    QStringList flags;                     // --name without a value

    bool hasFlag(const QString &name) const { return flags.contains(name); }
    std::optional<QString> option(const QString &name) const;
};

struct CliParseResult
{
    std::optional<CliArguments> arguments;
    QString error; // set when arguments is empty
};

// `arguments` excludes the program name.
CliParseResult parseCliArguments(const QStringList &arguments);

QString cliUsage();
