#pragma once

// The paste keystroke that follows a hand-off, so the prompt lands in the
// assistant's input field without the user pasting.
namespace AutoPaste {

// How long, after the first delay, the keystroke waits for Vesk to leave the
// front before it gives up.
inline constexpr int frontWaitMs = 3000;

// Schedules one paste keystroke `after` seconds from now, on the main
// thread, for the application frontmost then. The keystroke is never sent
// while Vesk itself is the active application: it waits up to frontWaitMs
// for another one to come forward, and otherwise leaves the text on the
// clipboard. False, and nothing scheduled, when the process may not send
// keystrokes (asking for the permission is the settings' job).
bool send(double after);

} // namespace AutoPaste
