#include "SidebarModel.h"

#include "AppState.h"
#include "LibraryQueries.h"
#include "PromptLibrary.h"
#include "PromptText.h"
#include "Variables.h"
#include "VeskConst.h"

#include <QKeySequence>
#include <QMimeData>
#include <QSet>

namespace {
// Child rows carry their section's row + 1; header rows carry 0.
constexpr quintptr headerId = 0;

bool hasVisibleText(const QString &text)
{
    for (const QChar c : text) {
        if (!c.isSpace())
            return true;
    }
    return false;
}

// The lines a row shows beyond its first (the preview or the title): the
// title under a preview, the project line in the pinned section.
quint8 extraLines(const Prompt &prompt, bool showsProject)
{
    const bool titleLine = hasVisibleText(prompt.body) && hasVisibleText(prompt.frontMatter.title);
    return quint8((titleLine ? SidebarModel::TitleLine : 0) | (showsProject ? SidebarModel::ProjectLine : 0));
}
} // namespace

SidebarModel::SidebarModel(AppState *state, QObject *parent)
    : QAbstractItemModel(parent)
    , m_state(state)
    , m_organizer(state)
{
    setSections(buildSections());
    // Only the library's lists shape the sidebar; a search or a selection does not.
    connect(state, &AppState::libraryChanged, this, &SidebarModel::refresh);
}

SidebarModel::Section SidebarModel::buildSection(const SidebarSection &section) const
{
    const PromptLibrary &library = *m_state->library();
    Section built{section,
                  section.isPinned() ? LibraryQueries::pinnedPrompts(library)
                                     : LibraryQueries::promptsInProject(library, section.projectName()),
                  {}};
    built.extraLines.reserve(built.prompts.size());
    for (const Prompt &prompt : std::as_const(built.prompts))
        built.extraLines.append(extraLines(prompt, section.isPinned()));
    return built;
}

QList<SidebarModel::Section> SidebarModel::buildSections() const
{
    const PromptLibrary &library = *m_state->library();
    const QHash<QString, QList<Prompt>> byProject = LibraryQueries::promptsByProject(library);
    QList<Section> sections;
    for (const SidebarSection &section : LibraryQueries::sidebarSections(library)) {
        Section built{section, section.isPinned() ? LibraryQueries::pinnedPrompts(library)
                                                  : byProject.value(section.projectName()), {}};
        built.extraLines.reserve(built.prompts.size());
        for (const Prompt &prompt : std::as_const(built.prompts))
            built.extraLines.append(extraLines(prompt, section.isPinned()));
        sections.append(std::move(built));
    }
    return sections;
}

QList<SidebarModel::Section> SidebarModel::rebuildSectionsOf(const QSet<QString> &promptIds) const
{
    const PromptLibrary &library = *m_state->library();
    QSet<QString> affected; // section ids, where the prompts were and where they are now
    for (const QString &id : promptIds) {
        const auto row = m_promptRows.constFind(id);
        if (row != m_promptRows.constEnd())
            affected.insert(m_sections[row->first].section.id());
        if (const std::optional<Prompt> prompt = library.prompt(id))
            affected.insert(prompt->frontMatter.pinned ? SidebarSection::pinned().id() : prompt->projectName);
    }
    QList<Section> sections = m_sections; // shares every section it does not rebuild
    for (Section &section : sections) {
        if (affected.contains(section.section.id()))
            section = buildSection(section.section);
    }
    return sections;
}

void SidebarModel::setSections(QList<Section> sections)
{
    m_sections = std::move(sections);
    m_promptRows.clear();
    for (int i = 0; i < m_sections.size(); ++i) {
        for (int row = 0; row < m_sections[i].prompts.size(); ++row)
            m_promptRows.insert(m_sections[i].prompts[row].id, {i, row});
    }
}

void SidebarModel::replaceSections(QList<Section> sections, const QList<int> &changed)
{
    m_sections.swap(sections); // `sections` now holds the previous ones
    for (const int i : changed) {
        if (i >= sections.size())
            continue;
        for (const Prompt &prompt : std::as_const(sections[i].prompts)) {
            const auto row = m_promptRows.constFind(prompt.id);
            if (row != m_promptRows.constEnd() && row->first == i)
                m_promptRows.erase(row);
        }
    }
    for (const int i : changed) {
        for (int row = 0; row < m_sections[i].prompts.size(); ++row)
            m_promptRows.insert(m_sections[i].prompts[row].id, {i, row});
    }
}

SidebarModel::Change SidebarModel::compare(const QList<Section> &before, const QList<Section> &after)
{
    if (before.size() != after.size())
        return Change::Rows;
    Change change = Change::Contents;
    for (qsizetype i = 0; i < before.size(); ++i) {
        const QList<Prompt> &was = before[i].prompts;
        const QList<Prompt> &now = after[i].prompts;
        if (!(before[i].section == after[i].section) || was.size() != now.size())
            return Change::Rows;
        if (was.isSharedWith(now))
            continue;
        bool sameOrder = true;
        for (qsizetype j = 0; j < was.size() && sameOrder; ++j)
            sameOrder = was[j].id == now[j].id;
        if (sameOrder)
            continue;
        QSet<QString> ids;
        for (const Prompt &p : was)
            ids.insert(p.id);
        for (const Prompt &p : now) {
            if (!ids.contains(p.id))
                return Change::Rows;
        }
        change = Change::Order;
    }
    return change;
}

// The sections whose prompt lists are not the very lists they were.
QList<int> SidebarModel::changedSections(const QList<Section> &before, const QList<Section> &after)
{
    QList<int> changed;
    for (int i = 0; i < after.size(); ++i) {
        if (i >= before.size() || !before[i].prompts.isSharedWith(after[i].prompts))
            changed.append(i);
    }
    return changed;
}

void SidebarModel::refresh()
{
    const LibraryChange &change = m_state->library()->lastChange();
    // A save or a pin touches a prompt or two: only their sections are built
    // again. Anything that moves sections or orders builds them all.
    constexpr qsizetype fewPrompts = 64;
    const bool few = !change.projectsChanged && !change.ordersChanged && change.promptIDs.size() <= fewPrompts;
    QList<Section> sections = few ? rebuildSectionsOf(change.promptIDs) : buildSections();
    switch (compare(m_sections, sections)) {
    case Change::Contents:
        updateInPlace(std::move(sections));
        break;
    case Change::Order:
        reorder(std::move(sections)); // a saved prompt moved up in its section
        break;
    case Change::Rows:
        beginResetModel();
        setSections(std::move(sections));
        endResetModel();
        break;
    }
}

void SidebarModel::reorder(QList<Section> sections)
{
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    QList<std::pair<int, QString>> keys; // section row, prompt id (empty for headers)
    for (const QModelIndex &index : before) {
        if (index.internalId() == headerId)
            keys.append({index.row(), QString()});
        else
            keys.append({int(index.internalId() - 1), index.data(PromptIdRole).toString()});
    }
    const QList<int> changed = changedSections(m_sections, sections);
    replaceSections(std::move(sections), changed);
    QModelIndexList after;
    for (const auto &[sectionRow, promptId] : std::as_const(keys)) {
        const QModelIndex header = index(sectionRow, 0);
        after.append(promptId.isEmpty() ? header : promptIndex(promptId));
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

void SidebarModel::updateInPlace(QList<Section> sections)
{
    // Same rows in the same places: tell views only about rows that changed.
    const QList<int> changed = changedSections(m_sections, sections);
    const QList<Section> previous = m_sections;
    replaceSections(std::move(sections), changed);
    for (const int i : changed) {
        const QModelIndex header = index(i, 0);
        const QList<Prompt> &now = m_sections[i].prompts;
        const QList<Prompt> &before = previous[i].prompts;
        for (int row = 0; row < now.size(); ++row) {
            if (!(now[row] == before[row]))
                Q_EMIT dataChanged(index(row, 0, header), index(row, 0, header));
        }
    }
}

QModelIndex SidebarModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0 || row >= rowCount(parent))
        return {};
    return createIndex(row, 0, parent.isValid() ? quintptr(parent.row() + 1) : headerId);
}

QModelIndex SidebarModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || child.internalId() == headerId)
        return {};
    return createIndex(int(child.internalId() - 1), 0, headerId);
}

int SidebarModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return int(m_sections.size());
    if (parent.internalId() != headerId || parent.row() >= m_sections.size())
        return 0;
    return int(std::max<qsizetype>(1, m_sections[parent.row()].prompts.size())); // an empty row
}

int SidebarModel::columnCount(const QModelIndex &) const
{
    return 1;
}

SidebarModel::RowKind SidebarModel::kind(const QModelIndex &index)
{
    return RowKind(index.data(KindRole).toInt());
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    switch (kind(index)) {
    case RowKind::Prompt:
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    case RowKind::Header:
        return Qt::ItemIsEnabled | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    case RowKind::Empty:
        return Qt::NoItemFlags;
    }
    return Qt::NoItemFlags;
}

QVariant SidebarModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (index.internalId() == headerId) {
        const Section &section = m_sections.at(index.row());
        switch (role) {
        case KindRole:
            return int(RowKind::Header);
        case Qt::DisplayRole:
            return section.section.title();
        case SectionIdRole:
            return section.section.id();
        default:
            return {};
        }
    }

    const Section &section = m_sections.at(int(index.internalId() - 1));
    if (section.prompts.isEmpty()) {
        switch (role) {
        case KindRole:
            return int(RowKind::Empty);
        case Qt::DisplayRole:
            if (section.section.isPinned())
                return QStringLiteral("No pinned prompts");
            if (section.section.projectName() == VeskConst::inboxProjectName)
                return QStringLiteral("Press %1 to add a prompt").arg(
                    QKeySequence(QKeySequence::New).toString(QKeySequence::NativeText));
            return QStringLiteral("Empty");
        case SectionIdRole:
            return section.section.id();
        default:
            return {};
        }
    }
    if (role == ExtraLinesRole)
        return int(section.extraLines.at(index.row()));
    return promptData(section, section.prompts.at(index.row()), role);
}

QVariant SidebarModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return QStringLiteral("Prompts");
    return {};
}

QVariant SidebarModel::promptData(const Section &section, const Prompt &prompt, int role) const
{
    switch (role) {
    case Qt::AccessibleTextRole:
        return PromptText::spoken(prompt);
    case KindRole:
        return int(RowKind::Prompt);
    case PromptIdRole:
        return prompt.id;
    case SectionIdRole:
        return section.section.id();
    case PreviewRole:
        return PromptText::preview(prompt.body, 120);
    case TitleRole:
        return prompt.frontMatter.title.trimmed();
    case Qt::DisplayRole: {
        const QString preview = PromptText::preview(prompt.body, 120);
        return preview.isEmpty() ? prompt.displayTitle() : preview;
    }
    case Qt::ToolTipRole:
        return prompt.displayTitle();
    case ProjectLineRole:
        if (!section.section.isPinned())
            return {};
        return QString(u"Located in ‘" + projectDisplayName(prompt.projectName) + u"’");
    case VariableCountRole:
        return int(Variables::extract(prompt.body).size());

    default:
        return {};
    }
}

QModelIndex SidebarModel::sectionIndex(const QString &sectionId) const
{
    for (int i = 0; i < m_sections.size(); ++i) {
        if (m_sections[i].section.id() == sectionId)
            return index(i, 0);
    }
    return {};
}

QModelIndex SidebarModel::promptIndex(const QString &promptId) const
{
    const auto row = m_promptRows.constFind(promptId);
    if (row == m_promptRows.constEnd())
        return {};
    return index(row->second, 0, index(row->first, 0));
}

QStringList SidebarModel::mimeTypes() const
{
    return {DragPayloads::promptDragType(), DragPayloads::sectionDragType()};
}

QStringList SidebarModel::dragIDs(const QModelIndex &promptRow) const
{
    const QString id = promptRow.data(PromptIdRole).toString();
    const QSet<QString> &selection = m_state->selectedPromptIDs();
    if (!selection.contains(id) || selection.size() < 2)
        return {id};
    // The set has no order of its own: take the rows' order, so that prompts
    // dropped together land as they were listed.
    QStringList ids;
    for (const Section &section : m_sections) {
        for (const Prompt &prompt : section.prompts) {
            if (selection.contains(prompt.id) && !ids.contains(prompt.id))
                ids.append(prompt.id);
        }
    }
    QStringList unlisted;
    for (const QString &selected : selection) {
        if (!ids.contains(selected))
            unlisted.append(selected);
    }
    unlisted.sort();
    return ids + unlisted;
}

QMimeData *SidebarModel::mimeData(const QModelIndexList &indexes) const
{
    if (indexes.size() == 1 && kind(indexes.first()) == RowKind::Header)
        return DragPayloads::sectionMimeData(indexes.first().data(SectionIdRole).toString());
    if (indexes.size() == 1 && kind(indexes.first()) == RowKind::Prompt)
        return DragPayloads::promptMimeData(dragIDs(indexes.first()));
    QStringList ids;
    for (const QModelIndex &index : indexes) {
        const QString id = index.data(PromptIdRole).toString();
        if (kind(index) == RowKind::Prompt && !ids.contains(id))
            ids.append(id);
    }
    return ids.isEmpty() ? nullptr : DragPayloads::promptMimeData(ids);
}

SidebarModel::DragLabel SidebarModel::dragLabel(const QModelIndex &index) const
{
    if (kind(index) == RowKind::Header)
        return {{}, index.data().toString()};
    const qsizetype count = dragIDs(index).size();
    if (count > 1)
        return {QStringLiteral("doc.on.doc"), QString::number(count) + u" prompts"};
    QString label = index.data(TitleRole).toString();
    if (label.isEmpty())
        label = index.data(PreviewRole).toString();
    if (label.isEmpty())
        label = QStringLiteral("Prompt");
    return {QStringLiteral("doc.text"), label};
}

QModelIndex SidebarModel::dropTarget(int row, const QModelIndex &parent) const
{
    // Dropping between rows means dropping on the row below: it lands before it.
    return row < 0 ? parent : index(row, 0, parent);
}

QStringList SidebarModel::acceptedDragTypes(const QModelIndex &target) const
{
    switch (kind(target)) {
    case RowKind::Header:
        return {DragPayloads::promptDragType(), DragPayloads::sectionDragType()};
    case RowKind::Prompt:
        return {DragPayloads::promptDragType()};
    case RowKind::Empty:
        break;
    }
    return {};
}

bool SidebarModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                   const QModelIndex &parent) const
{
    const QModelIndex target = dropTarget(row, parent);
    return data && target.isValid() && DragPayloads::carriesAny(*data, acceptedDragTypes(target));
}

bool SidebarModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    const QModelIndex target = dropTarget(row, parent);
    const QList<VeskDrag> drags = DragPayloads::decodeAll(*data, acceptedDragTypes(target));
    if (kind(target) == RowKind::Header) {
        m_organizer.handleDropOnSection(drags, target.data(SectionIdRole).toString());
        return true;
    }
    // Each drop below reloads the library; the target row is kept as a value.
    const Prompt targetPrompt = m_sections.at(int(target.internalId() - 1)).prompts.at(target.row());
    for (const VeskDrag &drag : drags) {
        if (drag.kind == VeskDrag::Kind::Prompts)
            m_organizer.reorderPrompts(drag.payload, targetPrompt);
    }
    return true;
}
