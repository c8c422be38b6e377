#pragma once

#include <QString>

// Words that differ by desktop convention. One word per platform, used by
// the menu, the window and every text that names it.
namespace PlatformTerms {

// "Settings" on macOS (its apps' own word since macOS 13), "Preferences" on
// Linux desktops.
QString settingsName();

} // namespace PlatformTerms
