#include "VeskConst.h"
#include "platform/WindowTabbing.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/SingleInstance.h"
#include "ui/shell/VeskApplication.h"
#include "ui/theme/Icons.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    VeskApplication::applyIdentity();

    SingleInstance instance(SingleInstance::socketPathForUser());
    switch (instance.start(SingleInstance::activateMessage.toByteArray())) {
    case SingleInstance::Start::HandedOff:
        return 0; // the running Vesk came to the front
    case SingleInstance::Start::Unanswered:
        std::fprintf(stderr, "vesk: Vesk is already running but does not answer; quit it and start again\n");
        return 1;
    case SingleInstance::Start::First:
        break;
    }

    QApplication::setWindowIcon(Icons::appIcon());
    WindowTabbing::turnOffAutomaticTabbing();

    VeskApplication vesk(VeskConst::defaultPromptsFolder().toLocalFile());
    QObject::connect(&instance, &SingleInstance::messageReceived, &vesk, [&vesk](const QByteArray &message) {
        if (message == SingleInstance::activateMessage)
            vesk.bringToFront();
    });
    vesk.quitOnTerminationSignals();
    vesk.mainWindow()->show();
    return app.exec();
}
