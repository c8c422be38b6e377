#include "CliCommands.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vesk-cli"));

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    const CliResult result = runCli(arguments, [](QByteArrayView bytes) {
        std::fwrite(bytes.data(), 1, size_t(bytes.size()), stdout);
    });
    std::fwrite(result.out.constData(), 1, size_t(result.out.size()), stdout);
    std::fflush(stdout);
    std::fwrite(result.err.constData(), 1, size_t(result.err.size()), stderr);
    return result.exitCode;
}
