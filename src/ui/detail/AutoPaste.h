#pragma once

// The paste keystroke that follows a hand-off, so the prompt lands in the
// assistant's input field without the user pasting.
namespace AutoPaste {

// Schedules one paste keystroke `after` seconds from now, on the main
// thread, to whatever application is frontmost then. False, and nothing
// scheduled, when the process may not send keystrokes (asking for the
// permission is the settings' job).
bool send(double after);

} // namespace AutoPaste
