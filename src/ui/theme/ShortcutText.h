#pragma once

#include <QKeySequence>
#include <QString>

// A keyboard shortcut written inside the app's texts ("New Project (⌘⇧N)").
// Qt's native text on macOS follows the menu order ("⇧⌘N") and writes Return
// as "↵"; Vesk's texts put Command first and write Return as "⏎". Elsewhere
// the platform's own wording stays ("Ctrl+Shift+N").
namespace ShortcutText {

enum class Style {
    MacOS,    // "⌘⇧N", "⌘⏎", "⌘/"
    Platform, // Qt's native text of the platform the app runs on
};

// In the style of the platform the app was built for.
QString forDisplay(const QKeySequence &keys);

QString inStyle(const QKeySequence &keys, Style style);

} // namespace ShortcutText
