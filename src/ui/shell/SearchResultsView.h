#pragma once

#include "Prompt.h"

#include <QAbstractListModel>
#include <QStackedWidget>

class AppState;
class QListView;

// The results of a search, one row per prompt, in library order.
class SearchResultsModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { PromptIdRole = Qt::UserRole + 1, PreviewRole, SubtitleRole, PinnedRole };
    using QAbstractListModel::QAbstractListModel;

    // The results as positions in `prompts` (the library's list, which this
    // shares rather than copies); nothing is announced when they are the same.
    void setResults(const QList<Prompt> &prompts, const QList<qsizetype> &indices);
    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    QList<Prompt> m_prompts;
    QList<qsizetype> m_indices;
};

// The detail area while searching: the results, or "No matches".
class SearchResultsView : public QStackedWidget
{
    Q_OBJECT

public:
    explicit SearchResultsView(AppState *state, QWidget *parent = nullptr);

    void setResults(const QList<Prompt> &prompts, const QList<qsizetype> &indices);
    QListView *list() const { return m_list; }
    SearchResultsModel *model() const { return m_model; }
    // Keyboard focus into the results, on the first one, without picking it.
    bool enterFromSearchField();
    // Picks the first result, as a click on it would; false when there is none.
    bool pickFirst();

private:
    AppState *m_state;
    SearchResultsModel *m_model;
    QListView *m_list;
    QWidget *m_noMatches;
};
