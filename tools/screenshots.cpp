// Renders the main states of the window to PNG files, for looking at them.
//
//   screenshots OUTPUT_DIR      (run with QT_QPA_PLATFORM=offscreen)

#include "AppState.h"
#include "DemoLibrary.h"
#include "PromptLibrary.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/HelpWindowController.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/Preferences.h"
#include "ui/shell/SettingsWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/sidebar/SidebarModel.h"
#include "ui/sidebar/SidebarView.h"
#include "ui/theme/Icons.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTextBrowser>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {

QString outputDir;

void settle()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::processEvents();
        QTest::qWait(20);
    }
}

void save(QWidget *widget, const char *name)
{
    settle();
    const QString path = outputDir + u'/' + QString::fromLatin1(name) + u".png";
    widget->grab().save(path);
    std::printf("%s\n", qPrintable(path));
}

// The window with a sheet centred over its upper part, as the desktop shows it.
void saveWithSheet(QWidget *window, QWidget *sheet, const char *name)
{
    settle();
    QPixmap canvas = window->grab();
    QPainter painter(&canvas);
    painter.fillRect(canvas.rect(), QColor(0, 0, 0, 60));
    const QPixmap sheetPixmap = sheet->grab();
    const qreal ratio = canvas.devicePixelRatio();
    const QPointF at((canvas.width() / ratio - sheetPixmap.width() / sheetPixmap.devicePixelRatio()) / 2, 40);
    painter.drawPixmap(at, sheetPixmap);
    painter.end();
    const QString path = outputDir + u'/' + QString::fromLatin1(name) + u".png";
    canvas.save(path);
    std::printf("%s\n", qPrintable(path));
}

// Every page of the help book, each in a window tall enough to show it whole.
void saveHelpPages(const char *prefix)
{
    const QString pagesFolder = QStringLiteral(VESK_HELP_PAGES);
    HelpWindowController help(HelpBook::Locations{{pagesFolder}, {}});
    for (const QString &page : QDir(pagesFolder).entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name)) {
        help.show(page);
        settle();
        const int height = qRound(help.browser()->document()->size().height()) + 8;
        help.window()->resize(620, qBound(520, height, 4000));
        const QByteArray name = prefix + QFileInfo(page).completeBaseName().toUtf8();
        save(help.window(), name.constData());
    }
    help.window()->resize(620, 520);
    help.show(QStringLiteral("index.html"));
    save(help.window(), QByteArray(QByteArray(prefix) + "window").constData());
}

// The window with a drag over `target`: the sidebar's highlight, and the
// drag's picture just below and right of the pointer, as the desktop shows it.
void saveDragOver(MainWindow *window, const QModelIndex &dragged, const QModelIndex &target, const char *name)
{
    SidebarTree *tree = window->sidebar()->tree();
    tree->setDropTarget(target);
    settle();
    QPixmap canvas = window->grab();
    const QPoint pointer = tree->viewport()->mapTo(window, tree->visualRect(target).center() + QPoint(-40, 0));
    QPainter painter(&canvas);
    painter.drawPixmap(pointer + QPoint(14, 10), tree->dragPixmap(dragged));
    painter.end();
    tree->setDropTarget({});
    const QString path = outputDir + u'/' + QString::fromLatin1(name) + u".png";
    canvas.save(path);
    std::printf("%s\n", qPrintable(path));
}

// The window with the context menu of `index` open where it was clicked, and
// the submenu titled `openSubmenu` (if any) open beside it.
void saveContextMenu(MainWindow *window, const QModelIndex &index, const QString &openSubmenu, const char *name)
{
    SidebarTree *tree = window->sidebar()->tree();
    QMenu menu(window);
    window->sidebar()->fillContextMenu(&menu, index, false);
    const QPoint click = tree->viewport()->mapTo(window, tree->visualRect(index).center() + QPoint(-30, 0));
    menu.popup(window->mapToGlobal(click));
    settle();
    QPixmap canvas = window->grab();
    QPainter painter(&canvas);
    painter.drawPixmap(click, menu.grab());
    for (QAction *action : menu.actions()) {
        if (action->menu() && action->text() == openSubmenu) {
            menu.setActiveAction(action);
            settle();
            const QRect item = menu.actionGeometry(action);
            action->menu()->popup(menu.mapToGlobal(item.topRight()));
            settle();
            painter.drawPixmap(click + item.topRight() + QPoint(0, -4), action->menu()->grab());
            painter.drawPixmap(click, menu.grab()); // with the item highlighted
            action->menu()->hide();
        }
    }
    painter.end();
    menu.hide();
    const QString path = outputDir + u'/' + QString::fromLatin1(name) + u".png";
    canvas.save(path);
    std::printf("%s\n", qPrintable(path));
}

// The window at its opening and its minimum size, light and dark: the
// states whose layout depends most on the room they get.
void saveAtEverySize(const QString &root)
{
    // A prompt with more variables than the strip under the editor can list.
    QFile many(root + u"/Inbox/many-variables.md");
    if (many.open(QIODevice::WriteOnly))
        many.write("---\ntitle: Customer letter\n---\n\nDear {{customer_full_name}}, about {{order_reference}} "
                   "shipped to {{shipping_address}} on {{shipping_date}} by {{carrier_name}}: {{apology_text}}\n");
    many.close();

    for (const char *appearance : {"light", "dark"}) {
        for (const QSize size : {QSize(920, 640), QSize(760, 520)}) {
            const QByteArray suffix = QByteArray("-") + QByteArray::number(size.width()) + "x"
                + QByteArray::number(size.height()) + "-" + appearance;
            {
                QTemporaryDir empty;
                VeskApplication vesk(empty.path() + u"/prompts");
                vesk.preferences()->setAppearance(QString::fromLatin1(appearance));
                vesk.mainWindow()->resize(size);
                vesk.mainWindow()->show();
                save(vesk.mainWindow(), QByteArray("welcome" + suffix).constData());
            }
            VeskApplication vesk(root);
            vesk.preferences()->setAppearance(QString::fromLatin1(appearance));
            MainWindow *window = vesk.mainWindow();
            window->resize(size);
            window->show();
            vesk.state()->setSelectedPromptIDs({QStringLiteral("Inbox/many-variables.md")});
            save(window, QByteArray("editor" + suffix).constData());
            // The header at its fullest: the longer assistant name and the hand-off's notice.
            vesk.preferences()->setHandoffApp(QStringLiteral("chatgpt"));
            window->promptDetail()->notify(QStringLiteral("Copied — opening ChatGPT"));
            save(window, QByteArray("handoff-notice" + suffix).constData());
            vesk.preferences()->setHandoffApp(QStringLiteral("claude"));
            window->searchField()->setText(QStringLiteral("the"));
            save(window, QByteArray("search" + suffix).constData());
            window->searchField()->clear();
            window->hideSidebar();
            save(window, QByteArray("sidebar-hidden" + suffix).constData());
            window->showSidebar();
        }
    }

    // Settings open while the appearance switches, both ways.
    VeskApplication vesk(root);
    SettingsWindow *settings = vesk.settingsWindow();
    vesk.preferences()->setAppearance(QStringLiteral("light"));
    settings->show();
    settle();
    vesk.preferences()->setAppearance(QStringLiteral("dark"));
    save(settings, "settings-switched-to-dark");
    vesk.preferences()->setAppearance(QStringLiteral("light"));
    save(settings, "settings-switched-to-light");
    vesk.preferences()->setAppearance(QStringLiteral("system"));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("VeskScreenshots"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskScreenshots"));
    outputDir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots-out");
    QDir().mkpath(outputDir);
    QTemporaryDir settingsDir;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());

    {
        QTemporaryDir empty;
        VeskApplication vesk(empty.path() + u"/prompts");
        vesk.mainWindow()->resize(1000, 720);
        vesk.mainWindow()->show();
        save(vesk.mainWindow(), "welcome");
    }

    saveHelpPages("help-");

    QTemporaryDir dir;
    const QString root = dir.path() + u"/prompts";
    writeDemoLibrary(root);
    VeskApplication vesk(root);
    MainWindow *window = vesk.mainWindow();
    window->resize(1000, 720);
    window->show();
    save(window, "library");

    vesk.state()->setSelectedPromptIDs({QStringLiteral("Code Review/review-pr.md")});
    save(window, "editor-variables");

    window->promptDetail()->openFillSheet();
    settle();
    VariableFillSheet *sheet = window->promptDetail()->fillSheet();
    sheet->field(QStringLiteral("language"))->setPlainText(QStringLiteral("C++"));
    sheet->field(QStringLiteral("audience"))->setPlainText(QStringLiteral("a junior engineer"));
    saveWithSheet(window, sheet, "fill-sheet");
    sheet->reject();

    vesk.state()->setSelectedPromptIDs({QStringLiteral("Inbox/standup.md"), QStringLiteral("Writing/email.md"),
                                        QStringLiteral("Research/paper.md")});
    save(window, "multi-selection");

    // Organising: a drag over a row and over a header, the two context menus.
    const SidebarModel *model = window->sidebar()->model();
    vesk.state()->setSelectedPromptIDs({QStringLiteral("Inbox/standup.md")});
    saveDragOver(window, model->promptIndex(QStringLiteral("Inbox/standup.md")),
                 model->promptIndex(QStringLiteral("Code Review/naming.md")), "drag-onto-row");
    vesk.state()->setSelectedPromptIDs({QStringLiteral("Inbox/standup.md"), QStringLiteral("Inbox/untitled.md")});
    saveDragOver(window, model->promptIndex(QStringLiteral("Inbox/standup.md")),
                 model->sectionIndex(QStringLiteral("Writing")), "drag-onto-header");
    saveContextMenu(window, model->promptIndex(QStringLiteral("Inbox/untitled.md")),
                    QStringLiteral("Move 2 prompts to Project"), "menu-prompts");
    vesk.state()->setSelectedPromptIDs({QStringLiteral("Writing/email.md")});
    saveContextMenu(window, model->promptIndex(QStringLiteral("Writing/email.md")), QStringLiteral("Move to Project"),
                    "menu-prompt");
    saveContextMenu(window, model->sectionIndex(QStringLiteral("Research")), {}, "menu-project");

    vesk.state()->setSelectedPromptIDs({});
    save(window, "empty-selection");

    window->searchField()->setText(QStringLiteral("the"));
    save(window, "search-results");
    window->searchField()->setText(QStringLiteral("zebra"));
    save(window, "search-no-matches");
    window->searchField()->clear();

    SettingsWindow *settings = vesk.settingsWindow();
    settings->show();
    save(settings, "settings");
    settings->hide();

    vesk.preferences()->setAppearance(QStringLiteral("dark"));
    vesk.state()->setSelectedPromptIDs({QStringLiteral("Code Review/review-pr.md")});
    save(window, "dark-editor");
    window->searchField()->setText(QStringLiteral("summar"));
    save(window, "dark-search-results");
    window->searchField()->clear();
    settings->show();
    save(settings, "dark-settings");
    settings->hide();
    saveHelpPages("dark-help-");
    vesk.preferences()->setAppearance(QStringLiteral("system"));
    settings->hide();

    saveAtEverySize(root);
    return 0;
}
