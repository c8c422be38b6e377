#include "SidebarView.h"

#include "AppState.h"
#include "PromptLibrary.h"
#include "PromptText.h"
#include "VeskConst.h"
#include "SidebarDelegate.h"
#include "SidebarModel.h"
#include "ui/theme/Theme.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
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
    , m_menus(state)
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
    m_delegate->isDropTarget = [this](const QModelIndex &index) { return m_tree->dropTarget() == index; };
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
    m_tree->installEventFilter(this);

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
    connect(m_tree, &SidebarTree::contextMenuRequested, this, &SidebarView::showContextMenu);
    connect(m_tree, &SidebarTree::deleteRequested, this,
            [this] { m_menus.actions().confirmAndDeletePrompts(m_state->selectedPrompts()); });

    // A reset (prompts added or removed) rebuilds the rows: put expansion,
    // selection and the scroll position back as they were.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        m_savedScroll = m_tree->verticalScrollBar()->value();
        noteSelectedRowOnScreen();
    });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        applyExpansion();
        syncSelectionFromState();
        m_tree->layOutNow();
        m_tree->verticalScrollBar()->setValue(m_savedScroll);
        keepSelectedRowOnScreen();
    });
    // A save moves the saved prompt to the top of its section.
    connect(m_model, &QAbstractItemModel::layoutAboutToBeChanged, this, &SidebarView::noteSelectedRowOnScreen);
    connect(m_model, &QAbstractItemModel::layoutChanged, this, &SidebarView::keepSelectedRowOnScreen);
    connect(m_state, &AppState::selectedPromptIDsChanged, this, &SidebarView::syncSelectionFromState);
    // A new prompt is shown where it was made, even in a folded section.
    connect(m_state, &AppState::pendingEditorFocusIDChanged, this, [this] {
        const std::optional<QString> &id = m_state->pendingEditorFocusID();
        const QModelIndex row = id ? m_model->promptIndex(*id) : QModelIndex();
        if (!row.isValid() || m_tree->isExpanded(row.parent()))
            return;
        setSectionExpanded(row.parent().data(SidebarModel::SectionIdRole).toString(), true);
        m_tree->scrollTo(row);
    });
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

bool SidebarView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_tree && event->type() == QEvent::KeyPress) {
        // Moving with the keys within the list is keyboard use as much as Tab
        // is: the current row shows its focus from now on.
        m_tree->window()->setAttribute(Qt::WA_KeyboardFocusChange);
        if (handleKey(static_cast<QKeyEvent *>(event)))
            return true;
    }
    return QWidget::eventFilter(watched, event);
}

bool SidebarView::handleKey(QKeyEvent *key)
{
    // Copy belongs to the one selected prompt's editor (a window shortcut,
    // which comes first when it is there); the list never copies row texts.
    if (key->matches(QKeySequence::Copy))
        return true;
    if (key->modifiers() != Qt::NoModifier && key->modifiers() != Qt::KeypadModifier)
        return false;
    const QModelIndex current = m_tree->currentIndex();
    if (!current.isValid() || (key->key() != Qt::Key_Left && key->key() != Qt::Key_Right))
        return false;
    // Left and Right fold and unfold the current section; Left on a row
    // goes up to its section's header, as in any outline.
    if (SidebarModel::kind(current) != SidebarModel::RowKind::Header) {
        if (key->key() == Qt::Key_Left)
            m_tree->selectionModel()->setCurrentIndex(current.parent(), QItemSelectionModel::NoUpdate);
        return true;
    }
    setSectionExpanded(current.data(SidebarModel::SectionIdRole).toString(), key->key() == Qt::Key_Right);
    return true;
}

void SidebarView::noteSelectedRowOnScreen()
{
    m_anchorId.clear();
    const QRect screen = m_tree->viewport()->rect();
    for (const QString &id : m_state->selectedPromptIDs()) {
        const QRect row = m_tree->visualRect(m_model->promptIndex(id));
        if (row.intersects(screen) && (m_anchorId.isEmpty() || row.top() < m_anchorTop)) {
            m_anchorId = id;
            m_anchorTop = row.top();
        }
    }
}

void SidebarView::keepSelectedRowOnScreen()
{
    if (m_anchorId.isEmpty())
        return;
    const QModelIndex index = m_model->promptIndex(std::exchange(m_anchorId, QString()));
    if (!index.isValid())
        return;
    m_tree->layOutNow();
    QScrollBar *scroll = m_tree->verticalScrollBar();
    scroll->setValue(scroll->value() + m_tree->visualRect(index).top() - m_anchorTop);
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
    const qsizetype results = m_state->searchResultIndices().size();
    const QString query = m_state->searchQuery();
    m_searchSummary->setText(results > 0
                                 ? QString(PromptText::counted(results, QStringLiteral("result")) + u" for “" + query + u"”")
                                 : QString(u"No results for “" + query + u"”"));
}

void SidebarView::fillContextMenu(QMenu *menu, const QModelIndex &index, bool fromKeyboard)
{
    if (SidebarModel::kind(index) == SidebarModel::RowKind::Header && index.isValid()) {
        const SidebarSection section = SidebarSection::fromId(index.data(SidebarModel::SectionIdRole).toString());
        if (section.isPinned() || section.projectName() == VeskConst::inboxProjectName)
            return;
        if (const std::optional<Project> project = m_state->library()->project(section.projectName()))
            m_menus.addProjectItems(menu, *project);
        return;
    }
    const QSet<QString> &selection = m_state->selectedPromptIDs();
    if (SidebarModel::kind(index) == SidebarModel::RowKind::Prompt && index.isValid()) {
        const QString id = index.data(SidebarModel::PromptIdRole).toString();
        const bool forSelection = selection.contains(id) || (fromKeyboard && !selection.isEmpty());
        m_menus.addPromptItems(menu, forSelection ? selection : QSet<QString>{id});
        return;
    }
    // Elsewhere the keyboard still reaches the selection; a click there is on nothing.
    if (fromKeyboard)
        m_menus.addPromptItems(menu, selection);
}

void SidebarView::showContextMenu(const QModelIndex &index, const QPoint &globalPos, bool fromKeyboard)
{
    QMenu menu(this);
    fillContextMenu(&menu, index, fromKeyboard);
    if (!menu.isEmpty())
        menu.exec(globalPos);
}
