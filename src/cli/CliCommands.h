#pragma once

#include "CliArguments.h"

#include <QByteArray>

class PromptLibrary;

// What a command printed and how the process should end.
struct CliResult
{
    int exitCode = 0;
    QByteArray out;
    QByteArray err;
};

// Runs one parsed command against an open library.
CliResult runCliCommand(PromptLibrary &library, const CliArguments &arguments);

// Parses, opens the library and runs: the whole of vesk-cli but the process.
CliResult runCli(const QStringList &arguments);
