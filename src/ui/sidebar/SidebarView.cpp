#include "SidebarView.h"

#include "AppState.h"
#include "PromptText.h"
#include "SidebarDelegate.h"
#include "SidebarModel.h"
#include "ui/theme/Theme.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

SidebarView::SidebarView(AppState *state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_model(new SidebarModel(state, this))
    , m_delegate(new SidebarDelegate(this))
    , m_tree(new SidebarTree(this))
    , m_searchHeader(new QWidget(this))
    , m_searchSummary(new QLabel(m_searchHeader))
    , m_clearButton(new QPushButton(QStringLiteral("Clear"), m_searchHeader))
{
    setObjectName(QStringLiteral("sidebar"));

    auto *headerLayout = new QHBoxLayout(m_searchHeader);
    headerLayout->setContentsMargins(12, 6, 8, 6);
    m_searchSummary->setFont(Theme::font(11));
    m_searchSummary->setTextFormat(Qt::PlainText);
    Theme::setTextTone(m_searchSummary, Theme::Tone::Tertiary);
    m_clearButton->setFlat(true);
    m_clearButton->setFont(Theme::font(11));
    m_clearButton->setCursor(Qt::PointingHandCursor);
    headerLayout->addWidget(m_searchSummary, 1);
    headerLayout->addWidget(m_clearButton);
    connect(m_clearButton, &QPushButton::clicked, this, [this] { m_state->setSearchQuery({}); });

    m_delegate->isExpanded = [this](const QModelIndex &index) { return m_tree->isExpanded(index); };
    m_tree->setModel(m_model);
    m_tree->setItemDelegate(m_delegate);
    m_tree->setHeaderHidden(true);
    m_tree->setRootIsDecorated(false);
    m_tree->setIndentation(0);
    m_tree->setItemsExpandable(false); // expansion is the sidebar's own, by header clicks
    m_tree->setExpandsOnDoubleClick(false);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setFrameShape(QFrame::NoFrame);
    m_tree->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_tree->setAttribute(Qt::WA_MacShowFocusRect, false);
    m_tree->viewport()->setAutoFillBackground(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_searchHeader);
    layout->addWidget(m_tree, 1);

    connect(m_tree, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (SidebarModel::kind(index) == SidebarModel::RowKind::Header) {
            const QString id = index.data(SidebarModel::SectionIdRole).toString();
            setSectionExpanded(id, !isSectionExpanded(id));
        }
    });
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SidebarView::syncSelectionToState);

    // A reset (prompts added or removed) rebuilds the rows: put expansion,
    // selection and the scroll position back as they were.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this,
            [this] { m_savedScroll = m_tree->verticalScrollBar()->value(); });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        applyExpansion();
        syncSelectionFromState();
        m_tree->layOutNow();
        m_tree->verticalScrollBar()->setValue(m_savedScroll);
    });
    connect(m_state, &AppState::selectedPromptIDsChanged, this, &SidebarView::syncSelectionFromState);
    connect(m_state, &AppState::changed, this, &SidebarView::updateSearchHeader);

    applyExpansion();
    syncSelectionFromState();
    updateSearchHeader();
}

void SidebarView::setSectionExpanded(const QString &sectionId, bool expanded)
{
    m_sectionExpansion.insert(sectionId, expanded);
    m_tree->setExpanded(m_model->sectionIndex(sectionId), expanded);
}

void SidebarView::applyExpansion()
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex header = m_model->index(row, 0);
        m_tree->setExpanded(header, isSectionExpanded(header.data(SidebarModel::SectionIdRole).toString()));
    }
}

void SidebarView::syncSelectionFromState()
{
    QItemSelection selection;
    for (const QString &id : m_state->selectedPromptIDs()) {
        const QModelIndex index = m_model->promptIndex(id);
        if (index.isValid())
            selection.select(index, index);
    }
    if (selection == m_tree->selectionModel()->selection())
        return;
    m_syncingSelection = true;
    m_tree->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!selection.isEmpty())
        m_tree->selectionModel()->setCurrentIndex(selection.indexes().constFirst(), QItemSelectionModel::NoUpdate);
    m_syncingSelection = false;
}

void SidebarView::syncSelectionToState()
{
    if (m_syncingSelection)
        return;
    QSet<QString> ids;
    for (const QModelIndex &index : m_tree->selectionModel()->selectedIndexes()) {
        if (SidebarModel::kind(index) == SidebarModel::RowKind::Prompt)
            ids.insert(index.data(SidebarModel::PromptIdRole).toString());
    }
    if (ids != m_state->selectedPromptIDs())
        m_state->setSelectedPromptIDs(ids); // writes the edit in progress first
}

void SidebarView::updateSearchHeader()
{
    const bool searching = m_state->isSearching();
    m_searchHeader->setVisible(searching);
    if (!searching)
        return;
    const qsizetype results = m_state->searchResults().size();
    const QString query = m_state->searchQuery();
    m_searchSummary->setText(results > 0
                                 ? QString(PromptText::counted(results, QStringLiteral("result")) + u" for “" + query + u"”")
                                 : QString(u"No results for “" + query + u"”"));
}
