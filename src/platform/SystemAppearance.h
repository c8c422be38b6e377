#pragma once

// The desktop's light or dark scheme, and the app's own choice applied to it.
namespace SystemAppearance {

enum class Scheme { System, Light, Dark };

// Whether the desktop uses a dark scheme (macOS: the global AppleInterfaceStyle
// is "Dark"; Linux: the desktop portal's colour-scheme preference).
bool systemIsDark();

// Applies the scheme to the whole application; System follows the desktop.
void apply(Scheme scheme);

} // namespace SystemAppearance
