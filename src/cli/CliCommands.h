#pragma once

#include "CliArguments.h"

#include <QByteArray>

#include <functional>

class PromptLibrary;

// What a command printed and how the process should end.
struct CliResult
{
    int exitCode = 0;
    QByteArray out;
    QByteArray err;
};

// Where long outputs go as they are made (standard output), so that listing a
// large library never holds the whole text in memory. Short outputs come
// back in CliResult::out.
using CliSink = std::function<void(QByteArrayView)>;

// Runs one parsed command against an open library.
CliResult runCliCommand(PromptLibrary &library, const CliArguments &arguments, const CliSink &sink);

// Parses, opens the library and runs: the whole of vesk-cli but the process.
CliResult runCli(const QStringList &arguments, const CliSink &sink);
