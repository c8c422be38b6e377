#pragma once

#include "Prompt.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTimer>

#include <optional>

class Alerts;
class PromptLibrary;
class ProjectNamePrompter;

// The state every view shares: the library, the sidebar selection, the search
// query, and the delayed saving of edits. No view code; main thread only.
class AppState : public QObject
{
    Q_OBJECT

public:
    static constexpr int saveDelayMs = 400;

    explicit AppState(PromptLibrary *library, QObject *parent = nullptr);

    PromptLibrary *library() const { return m_library; }

    const QSet<QString> &selectedPromptIDs() const { return m_selectedPromptIDs; }
    void setSelectedPromptIDs(const QSet<QString> &ids);
    const QString &searchQuery() const { return m_searchQuery; }
    void setSearchQuery(const QString &query);
    const std::optional<QString> &pendingEditorFocusID() const { return m_pendingEditorFocusID; }
    void setPendingEditorFocusID(const std::optional<QString> &id);

    // Derived afresh from the library on every call.
    bool isSearching() const;
    QList<Prompt> searchResults() const;
    // The results as positions in library()->prompts(), without copies.
    const QList<qsizetype> &searchResultIndices() const;
    QList<Prompt> pinnedPrompts() const;
    QList<Prompt> promptsInProject(const QString &name) const;
    std::optional<Prompt> selectedPrompt() const;
    QList<Prompt> selectedPrompts() const;

    // Delayed saving: the last edit is written 400 ms after the last call.
    // A write merges with what another program changed in the file since
    // the edit began: fields the user did not touch take the other
    // program's values; where both changed the body, the user's text is
    // written and the other version is kept (overwrittenVersion()).
    void scheduleSave(const Prompt &prompt);
    void flushPendingSave();
    bool hasPendingSave() const { return m_pendingPrompt.has_value(); }
    bool hasPendingSave(const QString &id) const { return m_pendingPrompt && m_pendingPrompt->id == id; }
    // Writes at once; `prompt` supersedes a pending edit of the same prompt
    // (it is expected to carry that edit), another prompt's is written first.
    void saveNow(const Prompt &prompt);

    // The version another program wrote that the user's edit replaced on
    // disk, kept for this session so that it can be brought back.
    std::optional<Prompt> overwrittenVersion(const QString &id) const;
    void forgetOverwrittenVersion(const QString &id);

    // Creation flows shared by the menus, the toolbar and the welcome screen.
    // With no project to create in, the user is told why when the library
    // folder itself is unusable.
    void createNewPromptInRecent();
    // Says in an alert why the library folder cannot hold prompts (a file
    // stands where it should be, or it cannot be made); false, and nothing
    // shown, when it is a folder.
    bool explainUnusableLibraryFolder();
    void showNewProjectDialog();
    void setProjectNamePrompter(ProjectNamePrompter *prompter) { m_projectNamePrompter = prompter; }

    // Asks the user to confirm trashing and renaming; none answers "Cancel".
    Alerts *alerts() const { return m_alerts; }
    void setAlerts(Alerts *alerts) { m_alerts = alerts; }

Q_SIGNALS:
    // Any change of the library or of the fields below.
    void changed();
    // The library's lists were replaced (emitted before changed()).
    void libraryChanged();
    void selectedPromptIDsChanged();
    void searchQueryChanged();
    void pendingEditorFocusIDChanged();
    void overwrittenVersionKept(const QString &id);

private:
    QStringList selectedPromptIDsOnly() const;
    void runScheduledSave();
    void writePendingPrompt();

    PromptLibrary *m_library;
    QSet<QString> m_selectedPromptIDs;
    QString m_searchQuery;
    std::optional<QString> m_pendingEditorFocusID;
    std::optional<Prompt> m_pendingPrompt;
    std::optional<Prompt> m_pendingBase; // the library's version when the pending edit began
    QHash<QString, Prompt> m_overwrittenVersions;
    QTimer m_saveTimer;
    ProjectNamePrompter *m_projectNamePrompter = nullptr;
    Alerts *m_alerts = nullptr;

    // Several views ask for the results of one query after each change, and
    // queries come a keystroke at a time: the results of the last queries
    // are kept for as long as the library does not change.
    struct SearchMemo
    {
        QString needle; // the query trimmed and lower-cased
        QList<qsizetype> indices;
    };
    mutable QList<SearchMemo> m_searchMemos; // oldest first
    mutable quint64 m_searchMemoRevision = 0;
    quint64 m_libraryRevision = 0;
};
