#include "Workspace.h"

#include <QDesktopServices>

namespace Workspace {

namespace {

Applications *replacement = nullptr;

} // namespace

void Applications::openUrl(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

Applications &Applications::current()
{
    return replacement ? *replacement : platform();
}

void Applications::setCurrent(Applications *applications)
{
    replacement = applications;
}

} // namespace Workspace
