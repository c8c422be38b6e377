#pragma once

#include <QString>

namespace Workspace {

// Opens a file-browser window with the item at `path` selected.
void revealInFileBrowser(const QString &path);

// The menu item that does it: "Reveal in Finder" on macOS, the file
// manager's own term elsewhere.
QString revealActionTitle();

} // namespace Workspace
