#pragma once

#include <QHash>
#include <QTreeView>
#include <QWidget>

class AppState;
class QKeyEvent;
class QLabel;
class QPushButton;
class SidebarDelegate;
class SidebarModel;

// The tree under the sidebar: sections as top-level rows, prompts beneath.
class SidebarTree : public QTreeView
{
    Q_OBJECT

public:
    using QTreeView::QTreeView;
    // Lays out pending rows now, so that a scroll position can be restored.
    void layOutNow() { executeDelayedItemsLayout(); }

protected:
    // Headers and placeholder rows never change the selection: clicking or
    // reaching one leaves the prompts selected as they were.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event = nullptr) const override;
};

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

    AppState *m_state;
    SidebarModel *m_model;
    SidebarDelegate *m_delegate;
    SidebarTree *m_tree;
    QWidget *m_searchHeader;
    QLabel *m_searchSummary;
    QPushButton *m_clearButton;
    QHash<QString, bool> m_sectionExpansion; // missing means expanded
    bool m_syncingSelection = false;
    int m_savedScroll = 0;
    QString m_anchorId; // a selected row on screen while rows move, and its top
    int m_anchorTop = 0;
};
