#include "AppState.h"

#include "Alerts.h"

#include "LibraryQueries.h"
#include "ProjectNamePrompter.h"
#include "PromptLibrary.h"
#include "VeskConst.h"

#include <QFileInfo>

AppState::AppState(PromptLibrary *library, QObject *parent)
    : QObject(parent)
    , m_library(library)
{
    // The library's changes are ours: views observe AppState alone. The
    // selection and a pending save are deliberately left alone on a reload.
    connect(m_library, &PromptLibrary::changed, this, [this] {
        ++m_libraryRevision;
        Q_EMIT libraryChanged();
        Q_EMIT changed();
    });
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(saveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &AppState::runScheduledSave);
}

void AppState::setSelectedPromptIDs(const QSet<QString> &ids)
{
    if (ids == m_selectedPromptIDs)
        return;
    // The edit in progress belongs to the old selection, whoever changes it
    // (sidebar, search pick, creation flow): write it before the editor moves on.
    flushPendingSave();
    m_selectedPromptIDs = ids;
    Q_EMIT selectedPromptIDsChanged();
    Q_EMIT changed();
}

void AppState::setSearchQuery(const QString &query)
{
    if (query == m_searchQuery)
        return;
    m_searchQuery = query;
    Q_EMIT searchQueryChanged();
    Q_EMIT changed();
}

void AppState::setPendingEditorFocusID(const std::optional<QString> &id)
{
    if (id == m_pendingEditorFocusID)
        return;
    m_pendingEditorFocusID = id;
    Q_EMIT pendingEditorFocusIDChanged();
    Q_EMIT changed();
}

bool AppState::isSearching() const
{
    return LibraryQueries::isSearchQuery(m_searchQuery);
}

const QList<qsizetype> &AppState::searchResultIndices() const
{
    const QString needle = m_searchQuery.trimmed().toLower();
    if (m_searchMemoRevision != m_libraryRevision) {
        m_searchMemos.clear();
        m_searchMemoRevision = m_libraryRevision;
    }
    // The queries of the last keystrokes: deleting back to one is free, and
    // typing on looks only through the results of the longest query the new
    // one contains (whatever contains the new one contains that one).
    const SearchMemo *narrowest = nullptr;
    for (qsizetype i = 0; i < m_searchMemos.size(); ++i) {
        if (m_searchMemos[i].needle == needle) {
            m_searchMemos.move(i, m_searchMemos.size() - 1);
            return m_searchMemos.last().indices;
        }
        if (!m_searchMemos[i].needle.isEmpty() && needle.contains(m_searchMemos[i].needle)
            && (!narrowest || m_searchMemos[i].indices.size() < narrowest->indices.size()))
            narrowest = &m_searchMemos[i];
    }
    QList<qsizetype> indices = LibraryQueries::searchIndices(m_library->prompts(), m_searchQuery,
                                                             narrowest ? &narrowest->indices : nullptr);
    constexpr qsizetype remembered = 32;
    if (m_searchMemos.size() == remembered)
        m_searchMemos.removeFirst();
    m_searchMemos.append({needle, std::move(indices)});
    return m_searchMemos.last().indices;
}

QList<Prompt> AppState::searchResults() const
{
    const QList<Prompt> &prompts = m_library->prompts();
    QList<Prompt> results;
    for (const qsizetype index : searchResultIndices())
        results.append(prompts[index]);
    return results;
}

QList<Prompt> AppState::pinnedPrompts() const
{
    return LibraryQueries::pinnedPrompts(*m_library);
}

QList<Prompt> AppState::promptsInProject(const QString &name) const
{
    return LibraryQueries::promptsInProject(*m_library, name);
}

QStringList AppState::selectedPromptIDsOnly() const
{
    // Section rows carry "@pinned" or a folder name, never a "/".
    QStringList ids;
    for (const QString &id : m_selectedPromptIDs) {
        if (id.contains(u'/'))
            ids.append(id);
    }
    return ids;
}

std::optional<Prompt> AppState::selectedPrompt() const
{
    const QStringList ids = selectedPromptIDsOnly();
    if (ids.size() != 1)
        return std::nullopt;
    return m_library->prompt(ids.first());
}

QList<Prompt> AppState::selectedPrompts() const
{
    const QStringList idList = selectedPromptIDsOnly();
    const QSet<QString> ids(idList.cbegin(), idList.cend());
    QList<Prompt> prompts;
    for (const Prompt &prompt : m_library->prompts()) {
        if (ids.contains(prompt.id))
            prompts.append(prompt);
    }
    return prompts;
}

void AppState::scheduleSave(const Prompt &prompt)
{
    if (!hasPendingSave(prompt.id))
        m_pendingBase = m_library->prompt(prompt.id);
    m_pendingPrompt = prompt;
    m_saveTimer.start(); // restarts the wait
}

void AppState::runScheduledSave()
{
    if (m_pendingPrompt)
        writePendingPrompt();
}

void AppState::flushPendingSave()
{
    if (!m_pendingPrompt)
        return;
    m_saveTimer.stop();
    writePendingPrompt();
}

void AppState::saveNow(const Prompt &prompt)
{
    if (m_pendingPrompt && m_pendingPrompt->id != prompt.id)
        flushPendingSave();
    scheduleSave(prompt);
    flushPendingSave();
}

namespace {

bool changedOnDiskSinceRead(const Prompt &published)
{
    const QFileInfo file(published.filePath());
    return file.exists() && file.lastModified().toUTC() != published.modifiedAt;
}

template<typename T>
const T &mergedField(const T &base, const T &mine, const T &theirs)
{
    return mine == base ? theirs : mine;
}

} // namespace

void AppState::writePendingPrompt()
{
    // Another program may have written the file since the library last read
    // it; read it now, so that its change is merged rather than overwritten.
    // The edit is still pending meanwhile: views keep showing it.
    const QString id = m_pendingPrompt->id;
    std::optional<Prompt> theirs = m_library->prompt(id);
    if (theirs && changedOnDiskSinceRead(*theirs)) {
        m_library->reload();
        theirs = m_library->prompt(id);
    }
    if (!m_pendingPrompt)
        return; // written while the reload was announced
    Prompt mine = *std::exchange(m_pendingPrompt, std::nullopt);
    const std::optional<Prompt> base = std::exchange(m_pendingBase, std::nullopt);
    if (base && theirs && !(*theirs == *base)) {
        PromptFrontMatter &matter = mine.frontMatter;
        const PromptFrontMatter &was = base->frontMatter;
        const PromptFrontMatter &now = theirs->frontMatter;
        const auto bothChanged = [](const QString &was, const QString &mine, const QString &theirs) {
            return mine != was && theirs != was && mine != theirs;
        };
        // Where both changed the text, the user's wins and theirs stays at hand.
        const bool overwrites = bothChanged(was.title, matter.title, now.title)
            || bothChanged(base->body, mine.body, theirs->body);
        matter.title = mergedField(was.title, matter.title, now.title);
        matter.tags = mergedField(was.tags, matter.tags, now.tags);
        matter.model = mergedField(was.model, matter.model, now.model);
        matter.pinned = mergedField(was.pinned, matter.pinned, now.pinned);
        mine.body = mergedField(base->body, mine.body, theirs->body);
        if (overwrites) {
            m_overwrittenVersions.insert(mine.id, *theirs);
            m_library->save(mine);
            Q_EMIT overwrittenVersionKept(mine.id);
            return;
        }
    }
    m_library->save(mine);
}

std::optional<Prompt> AppState::overwrittenVersion(const QString &id) const
{
    const auto it = m_overwrittenVersions.constFind(id);
    return it == m_overwrittenVersions.constEnd() ? std::nullopt : std::optional<Prompt>(*it);
}

void AppState::forgetOverwrittenVersion(const QString &id)
{
    m_overwrittenVersions.remove(id);
}

void AppState::createNewPromptInRecent()
{
    // A blank prompt being typed into is not blank any more: write the edit
    // first, so it is neither reused nor emptied.
    flushPendingSave();
    const QList<Project> &projects = m_library->projects();
    if (projects.isEmpty()) {
        explainUnusableLibraryFolder();
        return;
    }
    const Project target = m_library->project(VeskConst::inboxProjectName.toString()).value_or(projects.first());

    // An untouched blank prompt is reused rather than a second one made,
    // but only while it is blank on disk too: another device may have just
    // filled it in, and typing into it would write over that.
    for (bool checkDisk = true;; checkDisk = false) {
        const Prompt *blank = nullptr;
        for (const Prompt &prompt : m_library->prompts()) {
            if (prompt.projectName == target.name && prompt.frontMatter.title.trimmed().isEmpty()
                && prompt.body.trimmed().isEmpty()) {
                blank = &prompt;
                break;
            }
        }
        if (blank && checkDisk && changedOnDiskSinceRead(*blank)) {
            m_library->reload();
            continue;
        }
        if (blank) {
            const QString id = blank->id;
            setSelectedPromptIDs({id});
            setPendingEditorFocusID(id);
            return;
        }
        break;
    }
    if (const std::optional<Prompt> created = m_library->createPrompt(target)) {
        setSelectedPromptIDs({created->id});
        setPendingEditorFocusID(created->id);
    }
}

bool AppState::explainUnusableLibraryFolder()
{
    const QString root = m_library->rootPath();
    const QFileInfo info(root);
    if (info.isDir())
        return false;
    if (m_alerts) {
        Alert alert;
        alert.message = QStringLiteral("Vesk can't use its prompts folder");
        if (info.exists())
            alert.informative = u"“" + root + u"” is a file, not a folder. Move it aside or rename it, then open Vesk again.";
        else
            alert.informative = u"“" + root + u"” doesn't exist and couldn't be created. Check that its parent folder "
                                u"exists and can be written to, then open Vesk again.";
        m_alerts->run(alert);
    }
    return true;
}

void AppState::showNewProjectDialog()
{
    if (!m_projectNamePrompter)
        return;
    const std::optional<QString> answer = m_projectNamePrompter->askForProjectName();
    if (!answer)
        return;
    const QString name = answer->trimmed();
    if (name.isEmpty())
        return;
    m_library->createProject(name);
}
