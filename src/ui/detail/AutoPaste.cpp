#include "AutoPaste.h"

#include "platform/Accessibility.h"
#include "platform/Keystrokes.h"
#include "platform/Workspace.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

namespace AutoPaste {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(50);

// A slow assistant or a browser still starting leaves Vesk in front: a
// keystroke then would paste the prompt into Vesk's own editor.
void pasteOnceVeskIsBehind(QDeadlineTimer deadline)
{
    if (!Workspace::Applications::current().isVeskFrontmost()) {
        Keystrokes::current().postPaste();
        return;
    }
    if (deadline.hasExpired())
        return; // the prompt stays on the clipboard
    QTimer::singleShot(pollInterval, Qt::PreciseTimer, QCoreApplication::instance(),
                       [deadline] { pasteOnceVeskIsBehind(deadline); });
}

} // namespace

bool send(double after)
{
    if (!Accessibility::current().isTrusted())
        return false;
    const auto delay = std::chrono::milliseconds(qRound64(after * 1000));
    // A precise timer: the delay is the time the target gets to come to the front.
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(),
                       [] { pasteOnceVeskIsBehind(QDeadlineTimer(frontWaitMs)); });
    return true;
}

} // namespace AutoPaste
