#pragma once

#include "SidebarMenus.h"
#include "SidebarTree.h"

#include <QHash>
#include <QWidget>

class AppState;
class QKeyEvent;
class QLabel;
class QMenu;
class QPushButton;
class SidebarDelegate;
class SidebarModel;

// The left column: the search header while searching, then the sections.
// Its selection is AppState's; changing it writes any pending edit first.
// Expansion, selection and scroll position survive every reload, and a
// selected row on screen stays where it is when an autosave moves it.
class SidebarView : public QWidget
{
    Q_OBJECT

public:
    explicit SidebarView(AppState *state, QWidget *parent = nullptr);

    SidebarModel *model() const { return m_model; }
    SidebarTree *tree() const { return m_tree; }
    QWidget *searchHeader() const { return m_searchHeader; }

    bool isSectionExpanded(const QString &sectionId) const { return m_sectionExpansion.value(sectionId, true); }
    void setSectionExpanded(const QString &sectionId, bool expanded);

    // The context menu for a row: clicked (`fromKeyboard` false) or the
    // current row reached by keyboard. Prompt rows give the prompt menu for
    // the selection when the row is in it, else for that row alone; project
    // headers other than "Inbox" give the project menu; anything else none.
    void fillContextMenu(QMenu *menu, const QModelIndex &index, bool fromKeyboard);
    SidebarMenus &menus() { return m_menus; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool handleKey(QKeyEvent *key);
    void applyExpansion();
    void noteSelectedRowOnScreen();
    void keepSelectedRowOnScreen();
    void syncSelectionFromState();
    void syncSelectionToState();
    void updateSearchHeader();
    void showContextMenu(const QModelIndex &index, const QPoint &globalPos, bool fromKeyboard);

    AppState *m_state;
    SidebarModel *m_model;
    SidebarDelegate *m_delegate;
    SidebarTree *m_tree;
    QWidget *m_searchHeader;
    QLabel *m_searchSummary;
    QPushButton *m_clearButton;
    SidebarMenus m_menus;
    QHash<QString, bool> m_sectionExpansion; // missing means expanded
    bool m_syncingSelection = false;
    int m_savedScroll = 0;
    QString m_anchorId; // a selected row on screen while rows move, and its top
    int m_anchorTop = 0;
};
