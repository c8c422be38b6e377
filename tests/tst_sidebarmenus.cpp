// The sidebar's context menus: their items for every kind of selection, what
// the items do (alerts answered by a script), and reaching them by keyboard.

#include "AppState.h"
#include "FakeAlerts.h"
#include "PromptLibrary.h"
#include "RecordingTrash.h"
#include "TestFiles.h"
#include "platform/Workspace.h"
#include "ui/sidebar/SidebarModel.h"
#include "ui/sidebar/SidebarView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTimer>

using TestFiles::at;
using TestFiles::read;
using TestFiles::write;

namespace {

// A menu as text: one entry per item, "---" for a divider, a submenu as
// "Title > [items]", "(off)" before a disabled entry.
QStringList describe(const QMenu *menu)
{
    QStringList entries;
    for (const QAction *action : menu->actions()) {
        QString entry = action->isSeparator() ? QStringLiteral("---") : action->text();
        if (action->menu())
            entry += u" > [" + describe(action->menu()).join(u", ") + u']';
        if (!action->isEnabled())
            entry.prepend(u"(off) ");
        entries.append(entry);
    }
    return entries;
}

QAction *item(const QMenu *menu, const QString &path)
{
    const QStringList steps = path.split(u'>');
    for (QAction *action : menu->actions()) {
        if (action->text() != steps.first())
            continue;
        return steps.size() == 1 ? action : item(action->menu(), steps.mid(1).join(u'>'));
    }
    return nullptr;
}

} // namespace

class TestSidebarMenus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void noPromptNoMenu();
    void onePrompt();
    void onePinnedPrompt();
    void mixedSelectionCountsTheWhole();
    void allPinned();
    void unselectedRowGetsItsOwnMenu();
    void moveSubmenusWithOneProject();
    void projectHeaders();
    void promptItemsAct();
    void projectItemsAct();
    void menuKeyAndShiftF10();
    void deleteKeyAsksFirst();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    void open();
    QModelIndex row(const char *id) const { return m_view->model()->promptIndex(QString::fromUtf8(id)); }
    QModelIndex header(const char *id) const { return m_view->model()->sectionIndex(QString::fromUtf8(id)); }
    void select(const QStringList &ids) { m_state->setSelectedPromptIDs(QSet<QString>(ids.cbegin(), ids.cend())); }
    QStringList menuFor(const QModelIndex &index, bool fromKeyboard = false);
    // Runs `open`, which may show a menu; returns that menu's entries, closed.
    QStringList shownMenu(const std::function<void()> &open, QPoint *at = nullptr);

    RecordingTrash m_trash; // never the account's own Trash
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<SidebarView> m_view;
    std::unique_ptr<QMenu> m_menu;
    ScriptedAlerts m_alerts;
    QStringList m_revealed;
    // The platform's own words: "Reveal in Finder", "Show in File Manager".
    const QString reveal = Workspace::revealActionTitle();
};

void TestSidebarMenus::init()
{
    m_menu.reset();
    m_view.reset();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\nalpha", at(50));
    write(path("Inbox/b.md"), "---\ntitle: B\n---\n\nbeta", at(40));
    write(path("Work/w1.md"), "---\ntitle: W1\n---\n\none", at(30));
    write(path("Work/p1.md"), "---\ntitle: P1\npinned: true\n---\n\npinned one", at(20));
    write(path("Home/p2.md"), "---\ntitle: P2\npinned: true\n---\n\npinned two", at(10));
    m_alerts = ScriptedAlerts();
    m_revealed.clear();
}

void TestSidebarMenus::open()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_state->setAlerts(&m_alerts);
    m_view = std::make_unique<SidebarView>(m_state.get());
    m_view->menus().reveal = [this](const QString &revealed) { m_revealed.append(revealed); };
}

QStringList TestSidebarMenus::menuFor(const QModelIndex &index, bool fromKeyboard)
{
    m_menu = std::make_unique<QMenu>();
    m_view->fillContextMenu(m_menu.get(), index, fromKeyboard);
    return describe(m_menu.get());
}

QStringList TestSidebarMenus::shownMenu(const std::function<void()> &open, QPoint *at)
{
    QStringList entries;
    QTimer poll;
    poll.setInterval(10);
    connect(&poll, &QTimer::timeout, this, [&] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            entries = describe(menu);
            if (at)
                *at = menu->pos();
            menu->close();
        }
    });
    poll.start();
    open(); // a menu runs modally, so it is closed again by now
    if (QApplication::activePopupWidget())
        entries.append(QStringLiteral("<still open>"));
    return entries;
}

void TestSidebarMenus::noPromptNoMenu()
{
    open();
    select({"Inbox/a.md"});
    QVERIFY(menuFor(QModelIndex()).isEmpty()); // a click on no row
    QVERIFY(menuFor(header("@pinned")).isEmpty());
    QVERIFY(menuFor(header("Inbox")).isEmpty());
    // Ids that match no prompt.
    select({"Gone/x.md"});
    QVERIFY(menuFor(QModelIndex(), true).isEmpty());
    select({});
    QVERIFY(menuFor(QModelIndex(), true).isEmpty());
}

void TestSidebarMenus::onePrompt()
{
    open();
    select({"Inbox/a.md"});
    // Its own project is not offered; Inbox is "Recent Prompts".
    QCOMPARE(menuFor(row("Inbox/a.md")),
             QStringList({reveal, "Pin", "Move to Project > [Home, Work]", "---", "Move to Trash…"}));
    select({"Work/w1.md"});
    QCOMPARE(menuFor(row("Work/w1.md")),
             QStringList({reveal, "Pin", "Move to Project > [Home, Recent Prompts]", "---", "Move to Trash…"}));
    // By keyboard: the selection's menu.
    QCOMPARE(menuFor(QModelIndex(), true),
             QStringList({reveal, "Pin", "Move to Project > [Home, Recent Prompts]", "---", "Move to Trash…"}));
}

void TestSidebarMenus::onePinnedPrompt()
{
    open();
    select({"Work/p1.md"});
    QCOMPARE(menuFor(row("Work/p1.md")),
             QStringList({reveal, "Unpin", "Move to Project > [Home, Recent Prompts]", "---", "Move to Trash…"}));
}

void TestSidebarMenus::mixedSelectionCountsTheWhole()
{
    open();
    select({"Inbox/a.md", "Work/w1.md", "Work/p1.md"});
    QCOMPARE(menuFor(row("Inbox/a.md")),
             QStringList({"Pin 3 prompts", "Unpin 3 prompts", "Move 3 prompts to Project > [Home, Recent Prompts, Work]",
                          "---", "Move 3 prompts to Trash…"}));
    // "Pin" writes the two that change and leaves the pinned one unwritten.
    const QDateTime pinnedWritten = QFileInfo(path("Work/p1.md")).lastModified();
    item(m_menu.get(), QStringLiteral("Pin 3 prompts"))->trigger();
    QCOMPARE(read(path("Inbox/a.md")), "---\ntitle: A\npinned: true\n---\n\nalpha");
    QCOMPARE(read(path("Work/w1.md")), "---\ntitle: W1\npinned: true\n---\n\none");
    QCOMPARE(QFileInfo(path("Work/p1.md")).lastModified(), pinnedWritten);
}

void TestSidebarMenus::allPinned()
{
    open();
    select({"Work/p1.md", "Home/p2.md"});
    QCOMPARE(menuFor(row("Home/p2.md")),
             QStringList({"Unpin 2 prompts", "Move 2 prompts to Project > [Home, Recent Prompts, Work]", "---",
                          "Move 2 prompts to Trash…"}));
    item(m_menu.get(), QStringLiteral("Unpin 2 prompts"))->trigger();
    QVERIFY(m_state->pinnedPrompts().isEmpty());
    QCOMPARE(read(path("Home/p2.md")), "---\ntitle: P2\n---\n\npinned two");
}

void TestSidebarMenus::unselectedRowGetsItsOwnMenu()
{
    open();
    select({"Inbox/a.md", "Work/w1.md"});
    QCOMPARE(menuFor(row("Inbox/b.md")).first(), reveal);
    QCOMPARE(menuFor(row("Inbox/b.md")).size(), 5);
    QCOMPARE(menuFor(row("Work/w1.md")).first(), u"Pin 2 prompts");
    QCOMPARE(m_state->selectedPromptIDs().size(), 2); // opening a menu selects nothing
}

void TestSidebarMenus::moveSubmenusWithOneProject()
{
    QVERIFY(QDir(path("Work")).removeRecursively());
    QVERIFY(QDir(path("Home")).removeRecursively());
    open();
    select({"Inbox/a.md"});
    QCOMPARE(menuFor(row("Inbox/a.md")),
             QStringList({reveal, "Pin", "(off) Move to Project > []", "---", "Move to Trash…"}));
    select({"Inbox/a.md", "Inbox/b.md"});
    QCOMPARE(menuFor(row("Inbox/a.md")),
             QStringList({"Pin 2 prompts", "Move 2 prompts to Project > [Recent Prompts]", "---",
                          "Move 2 prompts to Trash…"}));
}

void TestSidebarMenus::projectHeaders()
{
    open();
    select({"Inbox/a.md"});
    const QStringList projectMenu{reveal, "Rename…", "---", "Move to Trash…"};
    QCOMPARE(menuFor(header("Work")), projectMenu);
    QCOMPARE(menuFor(header("Home"), true), projectMenu);
    QVERIFY(menuFor(header("Inbox"), true).isEmpty());
    QVERIFY(menuFor(header("@pinned"), true).isEmpty());
}

void TestSidebarMenus::promptItemsAct()
{
    open();
    select({"Inbox/a.md"});
    menuFor(row("Inbox/a.md"));
    item(m_menu.get(), reveal)->trigger();
    QCOMPARE(m_revealed, QStringList{path("Inbox/a.md")});

    item(m_menu.get(), QStringLiteral("Move to Project>Work"))->trigger();
    QCOMPARE(read(path("Work/a.md")), "---\ntitle: A\n---\n\nalpha");
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Work/a.md")});

    menuFor(row("Inbox/b.md"));
    m_alerts.script = {{0, {}}};
    item(m_menu.get(), QStringLiteral("Move to Trash…"))->trigger();
    QCOMPARE(m_alerts.shown.last().message, u"Move “B” to Trash?");
    QVERIFY(!QFile::exists(path("Inbox/b.md")));
    QCOMPARE(m_trash.trashed.last(), path("Inbox/b.md"));
    QCOMPARE(read(m_trash.trashedPath(m_trash.trashed.size() - 1)), "---\ntitle: B\n---\n\nbeta");

    select({"Work/a.md", "Work/w1.md", "Home/p2.md"});
    menuFor(row("Work/w1.md"));
    item(m_menu.get(), QStringLiteral("Move 3 prompts to Project>Recent Prompts"))->trigger();
    QCOMPARE(m_state->selectedPromptIDs(),
             QSet<QString>({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/w1.md"), QStringLiteral("Inbox/p2.md")}));
    QCOMPARE(read(path("Inbox/p2.md")), "---\ntitle: P2\npinned: true\n---\n\npinned two"); // still pinned

    menuFor(row("Inbox/w1.md"));
    m_alerts.script = {{0, {}}};
    item(m_menu.get(), QStringLiteral("Move 3 prompts to Trash…"))->trigger();
    QCOMPARE(m_alerts.shown.last().message, u"Move 3 prompts to Trash?");
    QVERIFY(m_state->selectedPromptIDs().isEmpty());
    QCOMPARE(TestFiles::ids(m_library->prompts()), QStringList{"Work/p1.md"});
}

void TestSidebarMenus::projectItemsAct()
{
    open();
    menuFor(header("Work"));
    item(m_menu.get(), reveal)->trigger();
    QCOMPARE(m_revealed, QStringList{path("Work")});

    m_alerts.script = {{0, QStringLiteral("Home")}, {0, {}}};
    item(m_menu.get(), QStringLiteral("Rename…"))->trigger();
    QCOMPARE(m_alerts.shown.last().message, u"Couldn't rename project.");
    m_alerts.script = {{0, QStringLiteral("Clients")}};
    item(m_menu.get(), QStringLiteral("Rename…"))->trigger();
    QVERIFY(QFile::exists(path("Clients/w1.md")));

    menuFor(header("Clients"));
    m_alerts.script = {{0, {}}};
    item(m_menu.get(), QStringLiteral("Move to Trash…"))->trigger();
    QCOMPARE(m_alerts.shown.last().informative,
             u"This project contains 2 prompts. They will be moved to the Trash with the folder.");
    QVERIFY(!QFile::exists(path("Clients")));
    QVERIFY(!m_view->model()->sectionIndex(QStringLiteral("Clients")).isValid());
}

void TestSidebarMenus::menuKeyAndShiftF10()
{
    open();
    m_view->resize(300, 600);
    m_view->show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    SidebarTree *tree = m_view->tree();
    tree->setFocus();
    select({"Inbox/a.md", "Inbox/b.md"});
    tree->selectionModel()->setCurrentIndex(row("Inbox/b.md"), QItemSelectionModel::NoUpdate);

    // The Menu key arrives as a keyboard context-menu event.
    QPoint at;
    const QStringList several{"Pin 2 prompts", "Move 2 prompts to Project > [Home, Recent Prompts, Work]", "---",
                              "Move 2 prompts to Trash…"};
    QCOMPARE(shownMenu([&] {
                 QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), tree->mapToGlobal(QPoint()));
                 QCoreApplication::sendEvent(tree, &menuKey);
             }, &at),
             several);
    // It opens under the current row, not where the mouse is.
    const QRect current = tree->visualRect(row("Inbox/b.md"));
    QCOMPARE(at.y(), tree->viewport()->mapToGlobal(current.bottomLeft()).y());

    // A closed popup leaves no window active on a bare platform; a desktop
    // gives the activation back.
    const auto reactivate = [&] {
        m_view->activateWindow();
        return QTest::qWaitForWindowActive(m_view.get());
    };
    QVERIFY(reactivate());
    QCOMPARE(shownMenu([&] { QTest::keyClick(tree, Qt::Key_F10, Qt::ShiftModifier); }), several);

    // On a project header, the project's menu.
    tree->setCurrentIndex(header("Work"));
    QVERIFY(reactivate());
    QCOMPARE(shownMenu([&] { QTest::keyClick(tree, Qt::Key_F10, Qt::ShiftModifier); }),
             QStringList({reveal, "Rename…", "---", "Move to Trash…"}));
    QCOMPARE(m_state->selectedPromptIDs().size(), 2);

    // A right-click on an empty area opens nothing.
    QVERIFY(shownMenu([&] {
                QContextMenuEvent click(QContextMenuEvent::Mouse, QPoint(5, 590), tree->mapToGlobal(QPoint(5, 590)));
                QCoreApplication::sendEvent(tree->viewport(), &click);
            }).isEmpty());
}

void TestSidebarMenus::deleteKeyAsksFirst()
{
    open();
    m_view->show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    m_view->tree()->setFocus();
    select({"Inbox/a.md", "Work/w1.md"});

    m_alerts.script = {{1, {}}};
    QTest::keyClick(m_view->tree(), Qt::Key_Delete);
    QCOMPARE(m_alerts.shown.size(), 1);
    QCOMPARE(m_alerts.shown.first().message, u"Move 2 prompts to Trash?");
    QVERIFY(QFile::exists(path("Inbox/a.md")));

    m_alerts.script = {{0, {}}};
    QTest::keyClick(m_view->tree(), Qt::Key_Delete);
    QVERIFY(!QFile::exists(path("Inbox/a.md")));
    QVERIFY(!QFile::exists(path("Work/w1.md")));
    QVERIFY(m_state->selectedPromptIDs().isEmpty());

    // With nothing selected there is nothing to ask about.
    QTest::keyClick(m_view->tree(), Qt::Key_Delete);
    QCOMPARE(m_alerts.shown.size(), 2);
}

QTEST_MAIN(TestSidebarMenus)
#include "tst_sidebarmenus.moc"
