#include "AppIdentity.h"
#include "VeskConst.h"
#include "platform/Accessibility.h"
#include "platform/WindowTabbing.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/theme/Icons.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // One reverse-DNS identity: settings domain, bundle, desktop file.
    QCoreApplication::setOrganizationName(AppIdentity::applicationName.toString());
    QCoreApplication::setOrganizationDomain(AppIdentity::organizationDomain.toString());
    QCoreApplication::setApplicationName(AppIdentity::applicationName.toString());
    QGuiApplication::setApplicationDisplayName(AppIdentity::applicationName.toString());
    QGuiApplication::setDesktopFileName(AppIdentity::appId.toString());
    QApplication::setWindowIcon(Icons::appIcon());
    WindowTabbing::turnOffAutomaticTabbing();

    SystemAccessibility accessibility;
    VeskApplication vesk(VeskConst::defaultPromptsFolder().toLocalFile(), &accessibility);
    vesk.mainWindow()->show();
    return app.exec();
}
