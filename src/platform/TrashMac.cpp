#include "Trash.h"

#include <QFile>

namespace Trash {

bool moveToTrash(const QString &path, QString *error)
{
    // Qt goes through NSFileManager's trashItemAtURL, the Finder's own Trash.
    QFile file(path);
    if (file.moveToTrash())
        return true;
    *error = file.errorString();
    return false;
}

} // namespace Trash
