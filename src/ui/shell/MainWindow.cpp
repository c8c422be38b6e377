#include "MainWindow.h"

#include "AppState.h"
#include "EditCommands.h"
#include "HelpWindowController.h"
#include "Placeholder.h"
#include "PromptLibrary.h"
#include "SearchResultsView.h"
#include "WelcomeView.h"
#include "platform/DesktopConventions.h"
#include "platform/Workspace.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/sidebar/SidebarModel.h"
#include "ui/sidebar/SidebarTree.h"
#include "ui/sidebar/SidebarView.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ShortcutText.h"
#include "ui/theme/Theme.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QMenuBar>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>

namespace {

constexpr int sidebarMinimum = 240;
constexpr int sidebarIdeal = 300;
constexpr int sidebarMaximum = 420;
const QString geometryKey = QStringLiteral("mainWindowGeometry");

QString native(const QKeySequence &sequence)
{
    return ShortcutText::forDisplay(sequence);
}

} // namespace

MainWindow::MainWindow(AppState *state, QWidget *parent)
    : QMainWindow(parent)
    , m_state(state)
    , m_sidebar(new SidebarView(state, this))
    , m_split(new QSplitter(Qt::Horizontal, this))
    , m_detail(new QStackedWidget(this))
    , m_searchResults(new SearchResultsView(state, this))
    , m_welcome(new WelcomeView(state, this))
    , m_promptDetail(new PromptDetailView(state, this))
    , m_multi(new Placeholder(QStringLiteral("square.stack.3d.up"), 40, this))
    , m_empty(new Placeholder(QStringLiteral("text.bubble"), 40, this))
    , m_search(new QLineEdit(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setAccessibleName(QStringLiteral("Vesk"));
    setWindowTitle(QString());
    setWindowIcon(Icons::appIcon());
    setMinimumSize(760, 520);
    setUnifiedTitleAndToolBarOnMac(true);

    m_empty->setTexts(QStringLiteral("Select a prompt"),
                      u"Or press " + native(QKeySequence::New) + u" to create a new one");
    for (QWidget *page : {static_cast<QWidget *>(m_searchResults), static_cast<QWidget *>(m_welcome),
                          static_cast<QWidget *>(m_promptDetail), static_cast<QWidget *>(m_multi),
                          static_cast<QWidget *>(m_empty)})
        m_detail->addWidget(page);

    m_sidebar->setMinimumWidth(sidebarMinimum);
    m_sidebar->setMaximumWidth(sidebarMaximum);
    // The detail area sits on the text background, the sidebar beside it.
    m_detail->setAutoFillBackground(true);
    m_detail->setBackgroundRole(QPalette::Base);
    m_split->addWidget(m_sidebar);
    m_split->addWidget(m_detail);
    m_split->setStretchFactor(0, 0);
    m_split->setStretchFactor(1, 1);
    m_split->setChildrenCollapsible(false);
    m_split->setHandleWidth(1);
    m_split->setSizes({sidebarIdeal, 620});
    setCentralWidget(m_split);

    buildActions();
    buildMenus();
    buildToolbar();
    updateIcons();

    connect(m_state, &AppState::changed, this, &MainWindow::refresh);
    connect(m_state, &AppState::selectedPromptIDsChanged, this, &MainWindow::leaveSearchOnSelection);
    connect(m_search, &QLineEdit::textChanged, m_state, &AppState::setSearchQuery);
    connect(m_state, &AppState::searchQueryChanged, this, [this] {
        if (m_search->text() != m_state->searchQuery())
            m_search->setText(m_state->searchQuery());
    });

    // Return on a prompt's row goes on into its text, as Return in a list
    // opens what it lists.
    connect(m_sidebar->tree(), &QAbstractItemView::activated, this, [this](const QModelIndex &index) {
        if (SidebarModel::kind(index) == SidebarModel::RowKind::Prompt && currentDetail() == Detail::Prompt
            && m_promptDetail->draft().id == index.data(SidebarModel::PromptIdRole).toString())
            m_promptDetail->editor()->setFocus(Qt::OtherFocusReason);
    });

    if (!restoreGeometry(QSettings().value(geometryKey).toByteArray()))
        resize(920, 640);
    refresh();
    // The window opens with the keyboard in the sidebar. Given here rather
    // than found by Qt on activation, which counts as a Tab and would ring
    // the first row as if the user had moved there.
    m_sidebar->tree()->setFocus(Qt::OtherFocusReason);
}

void MainWindow::buildActions()
{
    m_newPrompt = new QAction(QStringLiteral("New Prompt"), this);
    m_newPrompt->setShortcut(QKeySequence::New);
    connect(m_newPrompt, &QAction::triggered, m_state, &AppState::createNewPromptInRecent);

    m_newProject = new QAction(QStringLiteral("New Project…"), this);
    m_newProject->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    connect(m_newProject, &QAction::triggered, m_state, &AppState::showNewProjectDialog);

    m_reload = new QAction(QStringLiteral("Reload from Disk"), this);
    m_reload->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    connect(m_reload, &QAction::triggered, this, [this] {
        m_state->flushPendingSave();
        m_state->library()->reload();
    });

    m_reveal = new QAction(QStringLiteral("Reveal Prompts Folder"), this);
    connect(m_reveal, &QAction::triggered, this,
            [this] { Workspace::revealInFileBrowser(m_state->library()->rootPath()); });

    // ⌘W closes the front window: this one (which quits), Help or Settings.
    m_close = new QAction(QStringLiteral("&Close"), this);
    m_close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    m_close->setShortcutContext(Qt::ApplicationShortcut);
    connect(m_close, &QAction::triggered, this, [] {
        if (QWidget *front = QApplication::activeWindow())
            front->close();
    });

    m_quit = new QAction(QStringLiteral("&Quit"), this);
    m_quit->setMenuRole(QAction::QuitRole);
    m_quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    // Closing the windows quits, as closing the main window does.
    connect(m_quit, &QAction::triggered, qApp, &QApplication::closeAllWindows);

    m_preferences = new QAction(DesktopConventions::settingsName() + u"…", this);
    m_preferences->setMenuRole(QAction::PreferencesRole);
    m_preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    connect(m_preferences, &QAction::triggered, this, &MainWindow::preferencesRequested);

    m_edit = new EditCommands(this);
    // ⌘F goes to the search field (Escape there ends the search).
    m_find = new QAction(QStringLiteral("&Find…"), this);
    m_find->setShortcuts(QKeySequence::Find);
    connect(m_find, &QAction::triggered, this, [this] {
        if (!isActiveWindow()) { // chosen from the menu bar over Help or Settings
            raise();
            activateWindow();
        }
        m_search->setFocus(Qt::ShortcutFocusReason);
        m_search->selectAll();
    });

    // The Window menu's commands act on the front window, as ⌘W does.
    m_minimize = new QAction(QStringLiteral("Minimize"), this);
    m_minimize->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    m_minimize->setShortcutContext(Qt::ApplicationShortcut);
    connect(m_minimize, &QAction::triggered, this, [] {
        if (QWidget *front = QApplication::activeWindow())
            front->showMinimized();
    });
    m_zoom = new QAction(QStringLiteral("Zoom"), this);
    m_zoom->setShortcutContext(Qt::ApplicationShortcut);
    connect(m_zoom, &QAction::triggered, this, [] {
        QWidget *front = QApplication::activeWindow();
        if (!front)
            return;
        if (front->isMaximized())
            front->showNormal();
        else
            front->showMaximized();
    });
    m_bringAllToFront = new QAction(QStringLiteral("Bring All to Front"), this);
    connect(m_bringAllToFront, &QAction::triggered, this, &MainWindow::bringAllToFront);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &MainWindow::updateWindowCommands);
    updateWindowCommands();

    m_help = new QAction(QStringLiteral("Vesk Help"), this);
    m_help->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Slash));
    m_help->setMenuRole(QAction::NoRole);
    connect(m_help, &QAction::triggered, this,
            [] { HelpWindowController::shared().show(QStringLiteral("index.html")); });

    // The toolbar's buttons are never disabled, unlike the menu command.
    m_toolbarNewPrompt = new QAction(u"New Prompt (" + native(QKeySequence::New) + u")", this);
    connect(m_toolbarNewPrompt, &QAction::triggered, m_state, &AppState::createNewPromptInRecent);
    m_toolbarNewProject = new QAction(
        u"New Project (" + native(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N)) + u")", this);
    connect(m_toolbarNewProject, &QAction::triggered, m_state, &AppState::showNewProjectDialog);
    m_hideSidebar = new QAction(QStringLiteral("Hide Sidebar"), this);
    connect(m_hideSidebar, &QAction::triggered, this, &MainWindow::hideSidebar);
    m_showSidebar = new QAction(QStringLiteral("Show Sidebar"), this);
    m_showSidebar->setVisible(false);
    connect(m_showSidebar, &QAction::triggered, this, &MainWindow::showSidebar);
}

void MainWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(m_newPrompt);
    file->addAction(m_newProject);
    file->addSeparator();
    file->addAction(m_reload);
    file->addAction(m_reveal);
    file->addSeparator();
    file->addAction(m_close);
    // macOS moves the quit item into the application menu by its role.
    file->addAction(m_quit);

    QMenu *edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    edit->addAction(m_edit->undo());
    edit->addAction(m_edit->redo());
    edit->addSeparator();
    edit->addAction(m_edit->cut());
    edit->addAction(m_edit->copy());
    edit->addAction(m_edit->paste());
    edit->addAction(m_edit->selectAll());
    edit->addSeparator();
    edit->addAction(m_find);
    // macOS puts the preferences item into the application menu by its
    // role; elsewhere it lives here.
    edit->addSeparator();
    edit->addAction(m_preferences);

    if (DesktopConventions::hasWindowMenu()) {
        QMenu *window = menuBar()->addMenu(QStringLiteral("&Window"));
        window->addAction(m_minimize);
        window->addAction(m_zoom);
        window->addSeparator();
        window->addAction(m_bringAllToFront);
    }
    // Vesk Help is the Help menu's one item; on macOS it takes the place of
    // the standard help item.
    menuBar()->addMenu(QStringLiteral("&Help"))->addAction(m_help);
}

void MainWindow::buildToolbar()
{
    QToolBar *toolbar = addToolBar(QStringLiteral("Toolbar"));
    m_toolbar = toolbar;
    toolbar->setObjectName(QStringLiteral("toolbar"));
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    toolbar->setIconSize(QSize(18, 18));
    toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    toolbar->addAction(m_toolbarNewProject);
    toolbar->addAction(m_hideSidebar);
    toolbar->addAction(m_showSidebar);
    auto *spacer = new QWidget(toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolbar->addWidget(spacer);
    m_search->setObjectName(QStringLiteral("searchField"));
    m_search->setPlaceholderText(QStringLiteral("Search prompts…"));
    m_search->setClearButtonEnabled(true);
    m_search->setAccessibleName(QStringLiteral("Search prompts"));
    for (QToolButton *clear : m_search->findChildren<QToolButton *>())
        clear->setAccessibleName(QStringLiteral("Clear Search"));
    m_search->setFixedWidth(260);
    toolbar->addWidget(m_search);
    m_search->installEventFilter(this);
    toolbar->addAction(m_toolbarNewPrompt);
    // Reachable with Tab, in the order they stand, then the sidebar.
    QWidget *previous = nullptr;
    for (QAction *action : {m_toolbarNewProject, m_hideSidebar, m_showSidebar, static_cast<QAction *>(nullptr),
                            m_toolbarNewPrompt}) {
        QWidget *widget = action ? toolbar->widgetForAction(action) : m_search;
        if (action) {
            action->setToolTip(action->text());
            widget->setFocusPolicy(Qt::TabFocus);
        }
        if (previous)
            setTabOrder(previous, widget);
        previous = widget;
    }
    setTabOrder(previous, m_sidebar->tree());
}

void MainWindow::updateIcons()
{
    const QColor tint = Theme::secondaryText(palette());
    m_toolbarNewProject->setIcon(Icons::icon(QStringLiteral("folder.badge.plus"), tint, 18));
    m_hideSidebar->setIcon(Icons::icon(QStringLiteral("sidebar.left"), tint, 18));
    m_showSidebar->setIcon(Icons::icon(QStringLiteral("sidebar.left"), tint, 18));
    m_toolbarNewPrompt->setIcon(Icons::icon(QStringLiteral("square.and.pencil"), tint, 18));
}

void MainWindow::updateWindowCommands()
{
    QWidget *front = QApplication::activeWindow();
    m_close->setEnabled(front);
    m_minimize->setEnabled(front);
    // A window of a fixed size (Settings) has nothing to zoom to.
    m_zoom->setEnabled(front && front->minimumSize() != front->maximumSize());
}

void MainWindow::bringAllToFront()
{
    // The app's windows come in front of other apps' windows, the front one
    // staying in front; minimized windows stay in the Dock.
    QWidget *front = QApplication::activeWindow();
    for (QWidget *window : QApplication::topLevelWidgets()) {
        const Qt::WindowType type = window->windowType();
        if (window == front || !window->isVisible() || window->isMinimized() || type == Qt::Popup
            || type == Qt::ToolTip)
            continue;
        window->raise();
    }
    if (front) {
        front->raise();
        front->activateWindow();
    }
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        updateIcons();
    QMainWindow::changeEvent(event);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Escape && !m_search->text().isEmpty()) {
            m_search->clear();
            return true;
        }
        // Down goes on into the results, as from any search field; Return
        // opens the first.
        if (key == Qt::Key_Down && currentDetail() == Detail::SearchResults && m_searchResults->enterFromSearchField())
            return true;
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && currentDetail() == Detail::SearchResults
            && m_searchResults->pickFirst())
            return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    m_state->flushPendingSave(); // closing the window quits: the typing must not wait for the timer
    QSettings().setValue(geometryKey, saveGeometry());
    QMainWindow::closeEvent(event);
}

// The new-project and hide buttons belong to the sidebar's column. Focus
// that was there goes to the button that takes their place, never on to
// the next field (where Qt would select the title for overtyping).
void MainWindow::hideSidebar()
{
    QWidget *focus = QApplication::focusWidget();
    const bool hadFocus = focus
        && (m_sidebar->isAncestorOf(focus) || focus == m_toolbar->widgetForAction(m_hideSidebar)
            || focus == m_toolbar->widgetForAction(m_toolbarNewProject));
    m_showSidebar->setVisible(true);
    if (hadFocus) {
        m_toolbar->layout()->activate(); // shows the button now
        m_toolbar->widgetForAction(m_showSidebar)->setFocus(Qt::OtherFocusReason);
    }
    m_sidebar->hide();
    m_toolbarNewProject->setVisible(false);
    m_hideSidebar->setVisible(false);
}

void MainWindow::showSidebar()
{
    QWidget *focus = QApplication::focusWidget();
    const bool hadFocus = focus && focus == m_toolbar->widgetForAction(m_showSidebar);
    m_sidebar->show();
    m_toolbarNewProject->setVisible(true);
    m_hideSidebar->setVisible(true);
    if (hadFocus) {
        m_toolbar->layout()->activate();
        m_toolbar->widgetForAction(m_hideSidebar)->setFocus(Qt::OtherFocusReason);
    }
    m_showSidebar->setVisible(false);
}

void MainWindow::leaveSearchOnSelection()
{
    // Picking a prompt (a search result or a sidebar row) ends the search.
    if (!m_state->isSearching())
        return;
    for (const QString &id : m_state->selectedPromptIDs()) {
        if (id.contains(u'/')) {
            m_state->setSearchQuery({});
            return;
        }
    }
}

MainWindow::Detail MainWindow::currentDetail() const
{
    QWidget *page = m_detail->currentWidget();
    if (page == m_searchResults)
        return Detail::SearchResults;
    if (page == m_welcome)
        return Detail::Welcome;
    if (page == m_promptDetail)
        return Detail::Prompt;
    if (page == m_multi)
        return Detail::MultiSelection;
    return Detail::Empty;
}

void MainWindow::refresh()
{
    m_newPrompt->setEnabled(!m_state->library()->projects().isEmpty());

    if (m_state->isSearching()) {
        m_searchResults->setResults(m_state->library()->prompts(), m_state->searchResultIndices());
        m_detail->setCurrentWidget(m_searchResults);
        return;
    }
    if (m_state->library()->prompts().isEmpty()) {
        m_detail->setCurrentWidget(m_welcome);
        return;
    }
    if (const std::optional<Prompt> selected = m_state->selectedPrompt()) {
        m_promptDetail->setPrompt(*selected);
        m_detail->setCurrentWidget(m_promptDetail);
        return;
    }
    const qsizetype count = m_state->selectedPrompts().size();
    if (count >= 2) {
        m_multi->setTexts(QString::number(count) + u" prompts selected",
                          QStringLiteral("Right-click for batch actions, or pick a single row to edit."));
        m_detail->setCurrentWidget(m_multi);
        return;
    }
    m_detail->setCurrentWidget(m_empty);
}
