#include "VeskConst.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/theme/Icons.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // One reverse-DNS identity (app.vesk.Vesk): settings domain and bundle.
    QCoreApplication::setOrganizationName(QStringLiteral("Vesk"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("vesk.app"));
    QCoreApplication::setApplicationName(QStringLiteral("Vesk"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Vesk"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.vesk.Vesk"));
    QApplication::setWindowIcon(Icons::appIcon());

    VeskApplication vesk(VeskConst::defaultPromptsFolder().toLocalFile());
    vesk.mainWindow()->show();
    return app.exec();
}
