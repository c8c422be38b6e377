#pragma once

#include <QHash>
#include <QTreeView>
#include <QWidget>

class AppState;
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
};

// The left column: the search header while searching, then the sections.
// Its selection is AppState's; changing it writes any pending edit first.
// Expansion, selection and scroll position survive every reload.
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

private:
    void applyExpansion();
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
};
