#include "Accessibility.h"

#include <QGuiApplication>

namespace Accessibility {

bool isTrusted()
{
    // X11 lets any client send keystrokes; Wayland lets none.
    return QGuiApplication::platformName() == u"xcb";
}

void requestTrustIfNeeded()
{
    // Linux desktops have no permission to ask for.
}

QString permissionNote()
{
    return QStringLiteral("It works in X11 sessions; Wayland does not let apps send keystrokes to each other.");
}

} // namespace Accessibility
