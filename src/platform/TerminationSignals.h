#pragma once

#include <functional>

// SIGTERM, SIGHUP and SIGINT (a logout, a closed terminal, Ctrl+C) end the
// app through its ordinary quit path instead of killing it mid-edit.
namespace TerminationSignals {

// From now on each of those signals runs `onSignal` on the main thread,
// once per signal. Call once, after the application object exists.
void handle(std::function<void()> onSignal);

} // namespace TerminationSignals
