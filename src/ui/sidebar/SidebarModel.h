#pragma once

#include "Organizer.h"
#include "Prompt.h"
#include "SidebarSection.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QSet>

class AppState;

// The sidebar as a two-level model: one top-level row per section (its
// header), under it the section's prompts or one placeholder row. Rebuilt
// from AppState on every change; when only contents change (the common
// autosave case) rows are updated in place, so views keep their state.
class SidebarModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum class RowKind { Header, Prompt, Empty };
    enum Role {
        KindRole = Qt::UserRole + 1, // RowKind as int
        PromptIdRole,                // prompt rows: the prompt's id
        SectionIdRole,               // every row: its section's id
        PreviewRole,                 // prompt rows: the body on one line, cut to 120
        TitleRole,                   // prompt rows: the trimmed title
        ProjectLineRole,             // prompt rows in the pinned section: "Located in ‘…’"
        VariableCountRole,           // prompt rows: number of distinct variables
        ExtraLinesRole,              // prompt rows: ExtraLine flags, cheap (for row heights)
    };
    enum ExtraLine { TitleLine = 1, ProjectLine = 2 };

    explicit SidebarModel(AppState *state, QObject *parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // The tree's one column, named for screen readers (the header is hidden).
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Drag and drop. Headers drag their section and take prompt and section
    // drops; prompt rows drag dragIDs() and take prompt drops only. A drop
    // is on a row (row -1, parent the row) or before row `row` of `parent`.
    // Rows are never removed by a drag: only the library's reload changes them.
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;
    Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

    // The ids a drag started on this prompt row carries: the whole selection
    // when the row is selected along with others, else just its own.
    QStringList dragIDs(const QModelIndex &promptRow) const;
    // The symbol and label shown under the pointer while dragging `index`.
    struct DragLabel
    {
        QString symbol;
        QString text;
    };
    DragLabel dragLabel(const QModelIndex &index) const;

    QModelIndex sectionIndex(const QString &sectionId) const;
    QModelIndex promptIndex(const QString &promptId) const;
    static RowKind kind(const QModelIndex &index);

    // Re-reads AppState; called on each of its changes.
    void refresh();

private:
    struct Section
    {
        SidebarSection section;
        QList<Prompt> prompts;
        QList<quint8> extraLines; // per prompt, for row heights without building texts
    };
    QList<Section> buildSections() const;
    // The current sections with only those holding (or now to hold) the
    // given prompts built again: what a save or a pin changes.
    QList<Section> rebuildSectionsOf(const QSet<QString> &promptIds) const;
    Section buildSection(const SidebarSection &section) const;
    // m_sections replaced, and where each prompt's row is: all of them, or
    // only the sections named as changed (the others are the same lists).
    void setSections(QList<Section> sections);
    void replaceSections(QList<Section> sections, const QList<int> &changed);
    // Contents: same rows in the same places; Order: same rows of each
    // section, moved; Rows: anything else (rows or sections come or go).
    enum class Change { Contents, Order, Rows };
    static Change compare(const QList<Section> &before, const QList<Section> &after);
    static QList<int> changedSections(const QList<Section> &before, const QList<Section> &after);
    void updateInPlace(QList<Section> sections);
    void reorder(QList<Section> sections);
    QVariant promptData(const Section &section, const Prompt &prompt, int role) const;
    QModelIndex dropTarget(int row, const QModelIndex &parent) const;
    QStringList acceptedDragTypes(const QModelIndex &target) const;

    AppState *m_state;
    Organizer m_organizer;
    QList<Section> m_sections;
    QHash<QString, std::pair<int, int>> m_promptRows; // prompt id: section row, row
};
