#pragma once

// macOS merges an app's windows into tabs when the user prefers tabs, and adds
// tab commands to its menus. Vesk has one main window and turns this off.
namespace WindowTabbing {

// Call before the first window is shown; does nothing where windows have no tabs.
void turnOffAutomaticTabbing();

} // namespace WindowTabbing
