#include "DesktopConventions.h"

#include <QDir>

namespace DesktopConventions {

Desktop desktop()
{
    return Desktop::MacOS;
}

QStringList resourceFolders(const QString &executableFolder)
{
    // Vesk.app/Contents/MacOS/Vesk keeps its resources in Contents/Resources.
    return {QDir::cleanPath(executableFolder + u"/../Resources")};
}

Qt::KeyboardModifier leaveEditorModifier()
{
    // Qt's Meta is the Control key on macOS (Qt::AA_MacDontSwapCtrlAndMeta unset).
    return Qt::MetaModifier;
}

bool hasWindowMenu()
{
    return true;
}

QString settingsName()
{
    return QStringLiteral("Settings");
}

} // namespace DesktopConventions
