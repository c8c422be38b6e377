#pragma once

#include <QString>

namespace Workspace {

// Opens a file-browser window with the item at `path` selected.
void revealInFileBrowser(const QString &path);

} // namespace Workspace
