#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace TerminationSignals {

namespace {

int pipeEnds[2] = {-1, -1};

// Only async-signal-safe calls here: the byte wakes the main thread.
void onSignalArrived(int signal)
{
    const int saved = errno;
    const char byte = char(signal);
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
    errno = saved;
}

} // namespace

void handle(std::function<void()> onSignal)
{
    if (pipeEnds[0] != -1 || ::pipe(pipeEnds) != 0)
        return;
    for (int end : pipeEnds) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, ::fcntl(end, F_GETFL) | O_NONBLOCK);
    }
    auto *notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [onSignal = std::move(onSignal)] {
        char bytes[16];
        while (::read(pipeEnds[0], bytes, sizeof bytes) > 0) {
        }
        onSignal();
    });
    struct sigaction action = {};
    action.sa_handler = onSignalArrived;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGTERM, SIGHUP, SIGINT})
        ::sigaction(signal, &action, nullptr);
}

} // namespace TerminationSignals
