#include "Keystrokes.h"

// Keep AssertMacros.h from defining check(), verify() and friends.
#define __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES 0

#include <ApplicationServices/ApplicationServices.h>

namespace {

// kVK_ANSI_V: the key at the V position of the ANSI layout.
constexpr CGKeyCode ansiV = 9;

class MacKeystrokes final : public Keystrokes
{
public:
    void postPaste() override
    {
        CGEventSourceRef source = CGEventSourceCreate(kCGEventSourceStateHIDSystemState);
        CGEventRef down = CGEventCreateKeyboardEvent(source, ansiV, true);
        CGEventRef up = CGEventCreateKeyboardEvent(source, ansiV, false);
        // Command alone: no modifier the user happens to hold leaks in.
        if (down)
            CGEventSetFlags(down, kCGEventFlagMaskCommand);
        if (up)
            CGEventSetFlags(up, kCGEventFlagMaskCommand);
        if (down)
            CGEventPost(kCGHIDEventTap, down);
        if (up)
            CGEventPost(kCGHIDEventTap, up);
        if (down)
            CFRelease(down);
        if (up)
            CFRelease(up);
        if (source)
            CFRelease(source);
    }
};

} // namespace

Keystrokes &Keystrokes::platform()
{
    static MacKeystrokes keystrokes;
    return keystrokes;
}
