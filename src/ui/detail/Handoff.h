#pragma once

class HandoffApp;

// Bringing an assistant to the front after its prompt was copied.
namespace Handoff {

// Seconds the target gets to become frontmost before the paste keystroke.
inline constexpr double pasteDelay = 0.45;

// Opens the assistant's desktop app (launched, or activated when running),
// or its web client in the default browser when the app is not installed,
// then runs the paste step: with `autoPaste`, one paste keystroke
// pasteDelay seconds later. The step follows the app's report that it
// opened, whether or not it did; after the web client, it follows at once.
// `autoPaste` is the preference as read when the hand-off began.
void activate(const HandoffApp &app, bool autoPaste);

} // namespace Handoff
