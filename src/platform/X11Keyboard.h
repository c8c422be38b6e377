#pragma once

// Keystrokes for other applications on Linux, through the X server's XTest
// extension. Wayland has nothing like it: there nothing is sent.
namespace X11Keyboard {

// An X11 session whose server has XTest. A Wayland session counts as none
// even where XWayland offers XTest, since the keystroke would reach X
// clients only, not the Wayland window in front.
bool available();

// Presses and releases Ctrl+V, V by the key at its position on a US
// keyboard (XKB's AB04), as Command-V does on macOS.
void sendPaste();

} // namespace X11Keyboard
