#pragma once

#include <QString>
#include <QStringList>
#include <Qt>

// What the desktop Vesk is built for expects, beyond the services behind the
// other interfaces here: how texts write keys, where an app's files are
// installed, which keys and menus are the desktop's own. One implementation
// per platform, chosen by CMake.
namespace DesktopConventions {

enum class Desktop { MacOS, Linux };

// The desktop this build is for. Texts follow it: keys written "⌘⇧N" or
// "Ctrl+Shift+N", and the help book's passages for one platform.
Desktop desktop();

// The folders that hold what an application in `executableFolder` ships
// beside its program, in the order they are searched: the bundle's
// Contents/Resources on macOS; on Linux <prefix>/share/vesk beside
// <prefix>/bin, then "vesk" in each of the desktop's data folders
// (~/.local/share, /usr/local/share, /usr/share) that has one.
QStringList resourceFolders(const QString &executableFolder);

// The modifier that, with Tab, leaves a text editor in which Tab types a
// tab: Control on macOS (⌃⇥; ⌘⇥ belongs to the system's app switcher, and
// Qt's Control is the Command key there), Ctrl elsewhere.
Qt::KeyboardModifier leaveEditorModifier();

// The one word for the settings window, in its menu item, its title and
// every text that names it: "Settings" on macOS (its apps' word since
// macOS 13), "Preferences" on Linux desktops.
QString settingsName();

// Whether the menu bar has a Window menu (Minimize, Zoom, Bring All to
// Front): a macOS convention; Linux desktops put these in the title bar.
bool hasWindowMenu();

} // namespace DesktopConventions
