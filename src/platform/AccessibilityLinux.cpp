#include "Accessibility.h"

#include "X11Keyboard.h"

namespace {

// X11 has no permission to grant: any client may send keystrokes through
// XTest. Wayland lets no application send them to another.
class LinuxAccessibility final : public Accessibility
{
public:
    bool isTrusted() override { return X11Keyboard::available(); }
    void promptForTrust() override {}
};

} // namespace

Accessibility &Accessibility::platform()
{
    static LinuxAccessibility accessibility;
    return accessibility;
}

QString Accessibility::permissionNote()
{
    return QStringLiteral("In an X11 session it needs no permission. Wayland does not let one app send keystrokes to "
                          "another, so there Vesk only copies and you paste with Ctrl+V.");
}
