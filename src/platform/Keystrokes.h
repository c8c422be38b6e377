#pragma once

// Keystrokes synthesised for whatever application is frontmost. The
// platform's sender comes from current(); tests put a recording stand-in there.
class Keystrokes
{
public:
    virtual ~Keystrokes() = default;

    // Presses and releases the paste shortcut now: Command-V on macOS, Ctrl+V
    // on X11, V by its physical key position whatever the keyboard layout.
    // Main thread only.
    virtual void postPaste() = 0;

    static Keystrokes &current();
    // `replacement` sends from now on; nullptr restores the platform's.
    static void setCurrent(Keystrokes *replacement);

private:
    static Keystrokes &platform();
};
