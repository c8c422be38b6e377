#include "Keystrokes.h"

#include "X11Keyboard.h"

namespace {

class LinuxKeystrokes final : public Keystrokes
{
public:
    void postPaste() override { X11Keyboard::sendPaste(); }
};

} // namespace

Keystrokes &Keystrokes::platform()
{
    static LinuxKeystrokes keystrokes;
    return keystrokes;
}
