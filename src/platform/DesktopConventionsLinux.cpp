#include "DesktopConventions.h"

#include <QDir>
#include <QStandardPaths>

namespace DesktopConventions {

Desktop desktop()
{
    return Desktop::Linux;
}

QStringList resourceFolders(const QString &executableFolder)
{
    // An installed Vesk: <prefix>/bin/vesk beside <prefix>/share/vesk, then
    // the desktop's data folders (the XDG base-directory rules).
    QStringList folders{QDir::cleanPath(executableFolder + u"/../share/vesk")};
    for (const QString &folder : QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                           QStringLiteral("vesk"), QStandardPaths::LocateDirectory)) {
        if (!folders.contains(QDir::cleanPath(folder)))
            folders.append(QDir::cleanPath(folder));
    }
    return folders;
}

Qt::KeyboardModifier leaveEditorModifier()
{
    return Qt::ControlModifier;
}

bool hasWindowMenu()
{
    return false;
}

QString settingsName()
{
    return QStringLiteral("Preferences");
}

} // namespace DesktopConventions
