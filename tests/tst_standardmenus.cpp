// The standard menus every desktop app has: File ▸ Close, the Edit commands
// for the focused text field and Find, and the Window menu's commands, on the
// real windows (main, Settings, Help). What is macOS-only (the Window menu
// itself) is asked of the platform layer, so each platform checks its own.

#include "AppState.h"
#include "FakeAccessibility.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "platform/DesktopConventions.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/EditCommands.h"
#include "ui/shell/HelpWindowController.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/SettingsWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/sidebar/SidebarTree.h"
#include "ui/sidebar/SidebarView.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTextBrowser>
#include <QTextDocumentFragment>

using TestFiles::at;
using TestFiles::write;

namespace {

// A menu as text: "Title (keys)" per item, "---" for a divider.
QStringList describe(const QMenu *menu)
{
    QStringList entries;
    for (const QAction *action : menu->actions()) {
        QString entry = action->isSeparator() ? QStringLiteral("---") : action->text();
        if (!action->shortcut().isEmpty())
            entry += u" (" + action->shortcut().toString(QKeySequence::PortableText) + u')';
        entries.append(entry);
    }
    return entries;
}

QMenu *menuNamed(const MainWindow *window, const QString &title)
{
    for (QAction *entry : window->menuBar()->actions()) {
        if (entry->menu() && entry->menu()->title() == title)
            return entry->menu();
    }
    return nullptr;
}

// Which of the six Edit commands are on, as "UR-CPA" letters ("-" for off).
QString enabled(const EditCommands *edit)
{
    QString states;
    const QList<std::pair<QAction *, QChar>> commands{{edit->undo(), u'U'}, {edit->redo(), u'R'},
                                                      {edit->cut(), u'X'},  {edit->copy(), u'C'},
                                                      {edit->paste(), u'V'}, {edit->selectAll(), u'A'}};
    for (const auto &[action, letter] : commands)
        states += action->isEnabled() ? letter : u'-';
    return states;
}

} // namespace

class TestStandardMenus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void menusHoldTheStandardItems();
    void editCommandsFollowTheFocusedField();
    void editCommandsActOnTheBody();
    void readOnlyTextCanOnlyBeCopied();
    void keysGoOnWhereNoFieldHasTheFocus();
    void findGoesToTheSearchField();
    void closeClosesTheFrontWindow();
    void windowCommandsActOnTheFrontWindow();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    MainWindow *window() const { return m_app->mainWindow(); }
    EditCommands *edit() const { return m_app->mainWindow()->editCommands(); }

    QTemporaryDir m_settingsDir;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<FakeAccessibility> m_accessibility; // no system prompt during tests
    std::unique_ptr<VeskApplication> m_app;
};

void TestStandardMenus::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("VeskMenuTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskMenuTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestStandardMenus::init()
{
    QSettings().clear();
    m_accessibility = std::make_unique<FakeAccessibility>();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("prompts/Inbox/a.md"), "---\ntitle: Alpha\n---\n\napple pie", at(3));
    write(path("prompts/Inbox/b.md"), "---\ntitle: Beta\n---\n\nbanana", at(2));
    write(path("book/Vesk.help/Contents/Resources/en.lproj/index.html"),
          "<html><body><p>Help text to select.</p></body></html>");
    m_app = std::make_unique<VeskApplication>(path("prompts"));
    window()->show();
    QVERIFY(QTest::qWaitForWindowActive(window()));
}

void TestStandardMenus::cleanup()
{
    HelpWindowController::shared().discardWindow();
    m_app.reset();
    m_accessibility.reset();
}

void TestStandardMenus::menusHoldTheStandardItems()
{
    QMenu *file = menuNamed(window(), QStringLiteral("&File"));
    QVERIFY(file);
    QCOMPARE(describe(file), QStringList({"New Prompt (Ctrl+N)", "New Project… (Ctrl+Shift+N)", "---",
                                          "Reload from Disk (Ctrl+R)", "Reveal Prompts Folder", "---",
                                          "&Close (Ctrl+W)", "&Quit (Ctrl+Q)"}));

    // The platform's own keys for each standard command (⌘Z, ⇧⌘Z, ⌘X… on
    // macOS, where Qt's Ctrl is ⌘), all of them, as Qt's bindings list them.
    QMenu *editMenu = menuNamed(window(), QStringLiteral("&Edit"));
    QVERIFY(editMenu);
    const QList<std::pair<QAction *, QKeySequence::StandardKey>> standard{
        {edit()->undo(), QKeySequence::Undo},   {edit()->redo(), QKeySequence::Redo},
        {edit()->cut(), QKeySequence::Cut},     {edit()->copy(), QKeySequence::Copy},
        {edit()->paste(), QKeySequence::Paste}, {edit()->selectAll(), QKeySequence::SelectAll},
        {window()->findAction(), QKeySequence::Find}};
    for (const auto &[action, keys] : standard)
        QCOMPARE(action->shortcuts(), QKeySequence::keyBindings(keys));
    QStringList titles;
    for (const QAction *action : editMenu->actions())
        titles << (action->isSeparator() ? QStringLiteral("---") : action->text());
    QCOMPARE(titles, QStringList({"&Undo", "&Redo", "---", "Cu&t", "&Copy", "&Paste", "Select &All", "---",
                                  "&Find…", "---", "Preferences…"}));
    QCOMPARE(editMenu->actions().constLast(), window()->preferencesAction());
    QCOMPARE(window()->preferencesAction()->menuRole(), QAction::PreferencesRole); // macOS: the app menu

    // The Window menu is a macOS convention; elsewhere the title bar has these.
    QMenu *windowMenu = menuNamed(window(), QStringLiteral("&Window"));
    QCOMPARE(windowMenu != nullptr, DesktopConventions::hasWindowMenu());
    QCOMPARE(window()->minimizeAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_M));
    if (windowMenu) {
        QCOMPARE(describe(windowMenu), QStringList({"Minimize (Ctrl+M)", "Zoom", "---", "Bring All to Front"}));
    }

    // The menu bar's order: File, Edit, (Window,) Help.
    QStringList bar;
    for (const QAction *entry : window()->menuBar()->actions())
        bar << entry->text();
    QStringList expected{"&File", "&Edit", "&Help"};
    if (windowMenu)
        expected.insert(2, QStringLiteral("&Window"));
    QCOMPARE(bar, expected);
}

void TestStandardMenus::editCommandsFollowTheFocusedField()
{
    QLineEdit *search = window()->searchField();
    QClipboard *clipboard = QGuiApplication::clipboard();

    // No text field: nothing to do.
    window()->sidebar()->tree()->setFocus();
    QCOMPARE(edit()->target(), nullptr);
    QCOMPARE(enabled(edit()), u"------");

    // An empty field: paste, once the clipboard has text.
    clipboard->clear();
    search->setFocus();
    QCOMPARE(edit()->target(), search);
    QCOMPARE(enabled(edit()), u"------");
    clipboard->setText(QStringLiteral("pie"));
    QCOMPARE(enabled(edit()), u"----V-");

    edit()->paste()->trigger();
    QCOMPARE(search->text(), u"pie");
    QCOMPARE(enabled(edit()), u"U---VA");
    edit()->selectAll()->trigger();
    QCOMPARE(search->selectedText(), u"pie");
    QCOMPARE(enabled(edit()), u"U-XCVA");

    clipboard->setText(QStringLiteral("other"));
    edit()->copy()->trigger();
    QCOMPARE(clipboard->text(), u"pie");
    clipboard->setText(QStringLiteral("other"));
    edit()->cut()->trigger();
    QCOMPARE(clipboard->text(), u"pie");
    QCOMPARE(search->text(), QString());
    QCOMPARE(enabled(edit()), u"U---V-");

    edit()->undo()->trigger();
    QCOMPARE(search->text(), u"pie");
    QVERIFY(edit()->redo()->isEnabled());
    edit()->redo()->trigger();
    QCOMPARE(search->text(), QString());

    // Typing is seen as it happens.
    QTest::keyClicks(search, QStringLiteral("ab"));
    QCOMPARE(enabled(edit()), u"U---VA");

    // Going through the menus by keyboard keeps the field as the target.
    window()->menuBar()->setFocus(Qt::MenuBarFocusReason);
    QCOMPARE(edit()->target(), search);
    search->setFocus();

    // A field in another window is a target as well.
    auto *elsewhere = new QLineEdit;
    elsewhere->setAttribute(Qt::WA_DeleteOnClose);
    elsewhere->setAttribute(Qt::WA_QuitOnClose, false);
    elsewhere->setText(QStringLiteral("far"));
    elsewhere->show();
    elsewhere->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(elsewhere));
    elsewhere->setFocus();
    QCOMPARE(edit()->target(), elsewhere);
    edit()->selectAll()->trigger();
    QCOMPARE(elsewhere->selectedText(), u"far");
    delete elsewhere;
    QCOMPARE(enabled(edit()), u"------"); // the field is gone
}

void TestStandardMenus::editCommandsActOnTheBody()
{
    m_app->state()->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QPlainTextEdit *body = window()->promptDetail()->editor();
    body->setFocus();
    QCOMPARE(edit()->target(), body);
    QCOMPARE(enabled(edit()).right(1), u"A");
    QVERIFY(!edit()->copy()->isEnabled()); // ⌘C there copies the prompt, which the Copy button does too

    edit()->selectAll()->trigger();
    QCOMPARE(body->textCursor().selection().toPlainText(), body->toPlainText());
    QVERIFY(edit()->copy()->isEnabled() && edit()->cut()->isEnabled());
    QGuiApplication::clipboard()->setText(QStringLiteral("other"));
    edit()->copy()->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), body->toPlainText());
    QCOMPARE(window()->promptDetail()->noticeLabel()->text(), QString()); // the selection, not the prompt

    // Cut and paste through the commands are edits like any other: undone
    // and redone as typing is, and saved.
    QGuiApplication::clipboard()->setText(QStringLiteral("cherry"));
    edit()->paste()->trigger();
    QCOMPARE(body->toPlainText(), u"cherry");
    QVERIFY(edit()->undo()->isEnabled());
    edit()->undo()->trigger();
    QCOMPARE(body->toPlainText(), u"\napple pie");
    QVERIFY(edit()->redo()->isEnabled());
    edit()->redo()->trigger();
    QCOMPARE(body->toPlainText(), u"cherry");
    QTRY_VERIFY(TestFiles::read(path("prompts/Inbox/a.md")).endsWith("\ncherry"));
}

void TestStandardMenus::readOnlyTextCanOnlyBeCopied()
{
    HelpWindowController help({{path("book/Vesk.help/Contents/Resources/en.lproj")}, {}});
    help.show(QStringLiteral("index.html"));
    QVERIFY(QTest::qWaitForWindowActive(help.window()));
    help.browser()->setFocus();
    QCOMPARE(edit()->target(), help.browser());
    QCOMPARE(enabled(edit()), u"-----A");
    edit()->selectAll()->trigger();
    QCOMPARE(enabled(edit()), u"---C-A");
    QGuiApplication::clipboard()->setText(QStringLiteral("other"));
    // The key in the Help window, which has no menu bar of its own.
    QTest::keySequence(help.browser(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"Help text to select.");
}

void TestStandardMenus::keysGoOnWhereNoFieldHasTheFocus()
{
    // With the Edit commands off, their keys reach the focused widget: Select
    // All selects the sidebar's rows, Copy copies the one selected prompt.
    SidebarTree *tree = window()->sidebar()->tree();
    m_app->state()->setSelectedPromptIDs({QStringLiteral("Inbox/b.md")});
    tree->setFocus();
    QVERIFY(!edit()->selectAll()->isEnabled());
    QGuiApplication::clipboard()->setText(QStringLiteral("other"));
    QTest::keySequence(tree, QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nbanana");
    QTest::keySequence(tree, QKeySequence::SelectAll);
    QCOMPARE(m_app->state()->selectedPromptIDs(),
             QSet<QString>({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/b.md")}));
}

void TestStandardMenus::findGoesToTheSearchField()
{
    window()->searchField()->setText(QStringLiteral("pie"));
    window()->sidebar()->tree()->setFocus();
    QTest::keySequence(window(), QKeySequence::Find);
    QCOMPARE(QApplication::focusWidget(), window()->searchField());
    QCOMPARE(window()->searchField()->selectedText(), u"pie");

    // Chosen from the menu bar while Help is in front (macOS keeps the main
    // window's menu bar for it), it brings the main window back first.
    window()->sidebar()->tree()->setFocus();
    HelpWindowController &help = HelpWindowController::shared();
    help.show(QStringLiteral("index.html"));
    QVERIFY(QTest::qWaitForWindowActive(help.window()));
    window()->findAction()->trigger();
    QVERIFY(QTest::qWaitForWindowActive(window()));
    QCOMPARE(QApplication::focusWidget(), window()->searchField());
}

void TestStandardMenus::closeClosesTheFrontWindow()
{
    QAction *close = window()->closeAction();
    QCOMPARE(close->shortcutContext(), Qt::ApplicationShortcut);

    // Settings in front: ⌘W there closes Settings only.
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    settings->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(settings));
    QTest::keyClick(settings, Qt::Key_W, Qt::ControlModifier);
    QVERIFY(settings->isHidden());
    QVERIFY(window()->isVisible());

    // Help in front: the same.
    HelpWindowController &help = HelpWindowController::shared();
    help.show(QStringLiteral("index.html"));
    QVERIFY(QTest::qWaitForWindowActive(help.window()));
    QTest::keyClick(help.browser(), Qt::Key_W, Qt::ControlModifier);
    QVERIFY(help.window()->isHidden());
    QVERIFY(window()->isVisible());

    // The main window in front: it closes (which quits the app).
    window()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window()));
    QTest::keyClick(window()->sidebar()->tree(), Qt::Key_W, Qt::ControlModifier);
    QVERIFY(window()->isHidden());
}

void TestStandardMenus::windowCommandsActOnTheFrontWindow()
{
    // Settings has a fixed size: nothing to zoom.
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    settings->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(settings));
    QVERIFY(!window()->zoomAction()->isEnabled());
    QVERIFY(window()->minimizeAction()->isEnabled());

    // Bring All to Front keeps the front window in front and shows the others.
    window()->bringAllToFrontAction()->trigger();
    QCOMPARE(QApplication::activeWindow(), settings);
    QVERIFY(window()->isVisible() && !window()->isMinimized());

    window()->minimizeAction()->trigger();
    QVERIFY(settings->isMinimized());
    QVERIFY(!window()->isMinimized());
    settings->close();

    // The main window zooms and back.
    window()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window()));
    QVERIFY(window()->zoomAction()->isEnabled());
    window()->zoomAction()->trigger();
    QVERIFY(window()->isMaximized());
    window()->zoomAction()->trigger();
    QVERIFY(!window()->isMaximized());
    window()->minimizeAction()->trigger();
    QVERIFY(window()->isMinimized());
}

QTEST_MAIN(TestStandardMenus)
#include "tst_standardmenus.moc"
