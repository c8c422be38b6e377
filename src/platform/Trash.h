#pragma once

#include <QString>

// The user's Trash: a recoverable removal that the desktop's Trash view lists
// and can restore from. One implementation per platform.
namespace Trash {

// Moves the file or folder at `path` (not following a final symbolic link) to
// the Trash. On failure, nothing has been removed and `error` says why.
bool moveToTrash(const QString &path, QString *error);

} // namespace Trash
