#include "Workspace.h"

#include <QProcess>

namespace Workspace {

void revealInFileBrowser(const QString &path)
{
    // Finder opens a window with the item selected.
    QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path});
}

QString revealActionTitle()
{
    return QStringLiteral("Reveal in Finder");
}

} // namespace Workspace
