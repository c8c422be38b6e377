#include "X11Keyboard.h"

#include <QGuiApplication>
#include <QtGlobal>

// Xlib's macros (None, Bool, KeyPress...) clash with Qt's names: after Qt.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <cstring>

namespace {

bool waylandSession()
{
    if (qGuiApp && QGuiApplication::platformName().startsWith(u"wayland"))
        return true;
    return qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland";
}

// One connection of our own for the life of the process, opened on first use
// on $DISPLAY; null when there is no X server to talk to.
Display *display()
{
    static Display *connection = XOpenDisplay(nullptr);
    return connection;
}

bool hasXTest(Display *connection)
{
    int eventBase = 0;
    int errorBase = 0;
    int major = 0;
    int minor = 0;
    return XTestQueryExtension(connection, &eventBase, &errorBase, &major, &minor);
}

// The keycode of the key that XKB names `name` (a key position, whatever
// the layout prints on it); 0 when the keymap has no such key.
KeyCode keyAtPosition(Display *connection, const char *name)
{
    KeyCode found = 0;
    XkbDescPtr keyboard = XkbGetMap(connection, 0, XkbUseCoreKbd);
    if (!keyboard)
        return 0;
    if (XkbGetNames(connection, XkbKeyNamesMask, keyboard) == Success && keyboard->names && keyboard->names->keys) {
        for (int code = keyboard->min_key_code; code <= keyboard->max_key_code && !found; ++code) {
            if (std::strncmp(keyboard->names->keys[code].name, name, XkbKeyNameLength) == 0)
                found = static_cast<KeyCode>(code);
        }
    }
    XkbFreeKeyboard(keyboard, 0, True);
    return found;
}

} // namespace

namespace X11Keyboard {

bool available()
{
    if (waylandSession())
        return false;
    Display *connection = display();
    return connection && hasXTest(connection);
}

void sendPaste()
{
    Display *connection = display();
    if (!connection || !hasXTest(connection))
        return;
    KeyCode v = keyAtPosition(connection, "AB04");
    if (!v)
        v = XKeysymToKeycode(connection, XK_v);
    const KeyCode control = XKeysymToKeycode(connection, XK_Control_L);
    if (!v || !control)
        return;
    XTestFakeKeyEvent(connection, control, True, CurrentTime);
    XTestFakeKeyEvent(connection, v, True, CurrentTime);
    XTestFakeKeyEvent(connection, v, False, CurrentTime);
    XTestFakeKeyEvent(connection, control, False, CurrentTime);
    XFlush(connection);
}

} // namespace X11Keyboard
