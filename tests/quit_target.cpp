// Vesk as its main() starts it, over the library given, with a few words
// typed into the open prompt: the process that tst_quitting quits, signals
// and deactivates.
//   quit_target ROOT PROMPT_ID TEXT signal|ctrl-q|close|deactivate
#include "AppState.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>
#include <QTextCursor>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 5)
        return 2;
    const QString mode = args[4];
    VeskApplication::applyIdentity();
    VeskApplication vesk(args[1]);
    vesk.quitOnTerminationSignals();
    MainWindow *window = vesk.mainWindow();
    window->show();
    if (!QTest::qWaitForWindowActive(window))
        return 3;
    vesk.state()->setSelectedPromptIDs({args[2]});
    QPlainTextEdit *editor = window->promptDetail()->editor();
    if (!QTest::qWaitFor([editor] { return editor->isVisible(); }))
        return 4;
    editor->setFocus();
    editor->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor, args[3]);
    if (!vesk.state()->hasPendingSave(args[2]))
        return 5; // the words must still be waiting for the timer

    if (mode == u"ctrl-q") // as the key arrives: in the event loop
        QTimer::singleShot(0, editor, [editor] { QTest::keyClick(editor, Qt::Key_Q, Qt::ControlModifier); });
    else if (mode == u"close")
        QTimer::singleShot(0, window, &QWidget::close);
    else if (mode == u"deactivate")
        QTimer::singleShot(0, qApp, [] {
            // What the platform reports when another application comes
            // forward (a bare offscreen platform never does by itself).
            Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
            std::puts("deactivated");
            std::fflush(stdout);
        });
    std::puts("typed");
    std::fflush(stdout);
    return app.exec();
}
