#pragma once

#include <QMainWindow>

class AppState;
class EditCommands;
class Placeholder;
class Preferences;
class PromptDetailView;
class QAction;
class QLineEdit;
class QSplitter;
class QStackedWidget;
class QToolBar;
class SearchResultsView;
class SidebarView;
class WelcomeView;

// The one window: the sidebar beside a detail area that shows search
// results, the welcome screen, the prompt editor, a multi-selection summary
// or an empty placeholder, chosen afresh on every change of AppState.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    enum class Detail { SearchResults, Welcome, Prompt, MultiSelection, Empty };

    MainWindow(AppState *state, QWidget *parent = nullptr);

    Detail currentDetail() const;
    SidebarView *sidebar() const { return m_sidebar; }
    PromptDetailView *promptDetail() const { return m_promptDetail; }
    SearchResultsView *searchResults() const { return m_searchResults; }
    WelcomeView *welcome() const { return m_welcome; }
    Placeholder *multiSelection() const { return m_multi; }
    QLineEdit *searchField() const { return m_search; }
    QAction *newPromptAction() const { return m_newPrompt; }
    QAction *newProjectAction() const { return m_newProject; }
    QAction *reloadAction() const { return m_reload; }
    QAction *revealAction() const { return m_reveal; }
    // File ▸ Close: closes the front window, whichever of the app's it is.
    QAction *closeAction() const { return m_close; }
    QAction *preferencesAction() const { return m_preferences; }
    // Edit: the standard commands for the focused text field, and Find.
    EditCommands *editCommands() const { return m_edit; }
    QAction *findAction() const { return m_find; }
    // Window (a menu on macOS only): for the front window.
    QAction *minimizeAction() const { return m_minimize; }
    QAction *zoomAction() const { return m_zoom; }
    QAction *bringAllToFrontAction() const { return m_bringAllToFront; }
    QAction *helpAction() const { return m_help; }
    QAction *hideSidebarAction() const { return m_hideSidebar; }
    QAction *showSidebarAction() const { return m_showSidebar; }

    void hideSidebar();
    void showSidebar();

Q_SIGNALS:
    void preferencesRequested();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildActions();
    void buildMenus();
    void buildToolbar();
    void refresh();
    void leaveSearchOnSelection();
    void updateIcons();
    void updateWindowCommands();
    void bringAllToFront();

    AppState *m_state;
    SidebarView *m_sidebar;
    QSplitter *m_split;
    QStackedWidget *m_detail;
    SearchResultsView *m_searchResults;
    WelcomeView *m_welcome;
    PromptDetailView *m_promptDetail;
    Placeholder *m_multi;
    Placeholder *m_empty;
    QLineEdit *m_search;
    QToolBar *m_toolbar = nullptr;
    QAction *m_newPrompt = nullptr;
    QAction *m_newProject = nullptr;
    QAction *m_reload = nullptr;
    QAction *m_reveal = nullptr;
    QAction *m_close = nullptr;
    QAction *m_preferences = nullptr;
    EditCommands *m_edit = nullptr;
    QAction *m_find = nullptr;
    QAction *m_minimize = nullptr;
    QAction *m_zoom = nullptr;
    QAction *m_bringAllToFront = nullptr;
    QAction *m_help = nullptr;
    QAction *m_quit = nullptr;
    QAction *m_hideSidebar = nullptr;
    QAction *m_showSidebar = nullptr;
    QAction *m_toolbarNewPrompt = nullptr;
    QAction *m_toolbarNewProject = nullptr;
};
