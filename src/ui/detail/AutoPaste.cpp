#include "AutoPaste.h"

#include "platform/Accessibility.h"
#include "platform/Keystrokes.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>

namespace AutoPaste {

bool send(double after)
{
    if (!Accessibility::current().isTrusted())
        return false;
    const auto delay = std::chrono::milliseconds(qRound64(after * 1000));
    // A precise timer: the delay is the time the target gets to come to the front.
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(),
                       [] { Keystrokes::current().postPaste(); });
    return true;
}

} // namespace AutoPaste
