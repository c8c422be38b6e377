#include "Workspace.h"

#include <QDesktopServices>
#include <QGuiApplication>

namespace Workspace {

namespace {

Applications *replacement = nullptr;

} // namespace

void Applications::openUrl(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

bool Applications::isVeskFrontmost() const
{
    // Qt tracks it on every platform: the focus window's application, or
    // NSApp's active state on macOS.
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
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
