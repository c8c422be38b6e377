#include "VeskConst.h"
#include "platform/WindowTabbing.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/theme/Icons.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    VeskApplication::applyIdentity();
    QApplication::setWindowIcon(Icons::appIcon());
    WindowTabbing::turnOffAutomaticTabbing();

    VeskApplication vesk(VeskConst::defaultPromptsFolder().toLocalFile());
    vesk.mainWindow()->show();
    return app.exec();
}
