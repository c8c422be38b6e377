#pragma once

#include <functional>

class QObject;

// The desktop's light or dark scheme, and the app's own choice applied to it.
namespace SystemAppearance {

enum class Scheme { System, Light, Dark };

// Whether the desktop uses a dark scheme (macOS: the global AppleInterfaceStyle
// is "Dark"; Linux: the desktop portal's colour-scheme preference).
bool systemIsDark();

// Applies the scheme to the whole application; System follows the desktop.
void apply(Scheme scheme);

// Calls `onChange` on the main thread each time the desktop switches
// between light and dark, for as long as `context` lives.
void watch(QObject *context, std::function<void()> onChange);

} // namespace SystemAppearance
