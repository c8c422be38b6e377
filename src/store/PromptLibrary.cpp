#include "PromptLibrary.h"

#include "FileOps.h"
#include "FrontMatter.h"
#include "VeskConst.h"
#include "platform/FolderWatcher.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace {

QString joinPath(const QString &folder, QStringView name)
{
    if (folder.endsWith(u'/'))
        return folder + name;
    return folder + u'/' + name;
}

// Beyond this many changed prompts, sorting everything again is cheaper than
// moving each into place.
constexpr qsizetype maxPlacedOneByOne = 256;

} // namespace

PromptLibrary::PromptLibrary(const QUrl &rootURL, QObject *parent, Use use)
    : QObject(parent)
    , m_rootURL(rootURL)
    , m_searchTexts(use == Use::Live)
    , m_watcher(use == Use::Live ? FolderWatcher::create() : nullptr)
{
    prepareRoot(rootPath());
    reload();
}

PromptLibrary::~PromptLibrary() = default;

void PromptLibrary::prepareRoot(const QString &root)
{
    QDir().mkpath(root);
    const QString inbox = joinPath(root, VeskConst::inboxProjectName);
    const QFileInfo inboxInfo(inbox);
    if (!inboxInfo.exists() && !inboxInfo.isSymLink())
        QDir().mkpath(inbox);

    // A save killed between its write and its rename leaves a hidden
    // temporary file; those older than a day cannot belong to a live save.
    FileOps::removeStaleTemporaryFiles(root);
    if (const std::optional<QStringList> projects = LibraryScan::listProjects(root)) {
        for (const QString &name : *projects)
            FileOps::removeStaleTemporaryFiles(joinPath(root, name));
    }
}

std::optional<Prompt> PromptLibrary::prompt(const QString &id) const
{
    const qsizetype slash = id.indexOf(u'/');
    if (slash < 0)
        return std::nullopt;
    const auto folder = m_folderIndex.constFind(id.left(slash));
    if (folder == m_folderIndex.constEnd())
        return std::nullopt;
    const auto file = m_folders[*folder].files.constFind(id.mid(slash + 1));
    if (file == m_folders[*folder].files.constEnd())
        return std::nullopt;
    return file->prompt;
}

std::optional<Project> PromptLibrary::project(const QString &name) const
{
    for (const Project &p : m_projects) {
        if (p.name == name)
            return p;
    }
    return std::nullopt;
}

QString PromptLibrary::orderFilePath(QStringView orderFileName) const
{
    return joinPath(rootPath(), orderFileName);
}

void PromptLibrary::reload()
{
    Delta delta;
    fullScan(&delta);
    publish(delta);
}

void PromptLibrary::refresh(const QStringList &written)
{
    Delta delta;
    if (!refreshFromHints(written, &delta)) {
        delta = {};
        fullScan(&delta);
    }
    publish(delta);
}

bool PromptLibrary::loadsBefore(const Prompt &a, const Prompt &b) const
{
    // Pinned first, then newest first, then load order: folders by name,
    // files in the order their folder lists them.
    if (a.frontMatter.pinned != b.frontMatter.pinned)
        return a.frontMatter.pinned;
    const qint64 aTime = a.modifiedAt.toMSecsSinceEpoch();
    const qint64 bTime = b.modifiedAt.toMSecsSinceEpoch();
    if (aTime != bTime)
        return aTime > bTime;
    const qsizetype aFolder = m_folderIndex.value(a.projectName);
    const qsizetype bFolder = m_folderIndex.value(b.projectName);
    if (aFolder != bFolder)
        return aFolder < bFolder;
    return m_folders[aFolder].rank.value(a.fileName()) < m_folders[bFolder].rank.value(b.fileName());
}

void PromptLibrary::rebuildPrompts(const Delta &delta)
{
    if (!delta.foldersChanged && !delta.listingReordered && delta.promptIDs.size() <= maxPlacedOneByOne) {
        // Few prompts changed: take each out and put its new version where the
        // order says, rather than sorting everything again.
        for (const QString &id : delta.promptIDs) {
            const auto old = std::find_if(m_prompts.cbegin(), m_prompts.cend(),
                                          [&](const Prompt &p) { return p.id == id; });
            if (old != m_prompts.cend())
                m_prompts.erase(old);
        }
        for (const QString &id : delta.promptIDs) {
            const std::optional<Prompt> current = prompt(id);
            if (!current)
                continue;
            const auto at = std::lower_bound(m_prompts.cbegin(), m_prompts.cend(), *current,
                                             [&](const Prompt &a, const Prompt &b) { return loadsBefore(a, b); });
            m_prompts.insert(at, *current);
        }
        return;
    }

    // Gathered in load order, so a stable sort by pinned and date leaves
    // equal dates in load order.
    struct Keyed
    {
        bool pinned;
        qint64 time;
        const Prompt *prompt;
    };
    std::vector<Keyed> keyed;
    for (const Folder &folder : std::as_const(m_folders)) {
        for (const QString &name : folder.listing) {
            const auto file = folder.files.constFind(name);
            if (file != folder.files.constEnd() && file->prompt)
                keyed.push_back({file->prompt->frontMatter.pinned, file->prompt->modifiedAt.toMSecsSinceEpoch(),
                                 &*file->prompt});
        }
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed &a, const Keyed &b) {
        if (a.pinned != b.pinned)
            return a.pinned;
        return a.time > b.time;
    });
    QList<Prompt> prompts;
    prompts.reserve(qsizetype(keyed.size()));
    for (const Keyed &k : keyed)
        prompts.append(*k.prompt);
    m_prompts = std::move(prompts);
}

void PromptLibrary::publish(const Delta &delta)
{
    // Lists are replaced in the order a full load assigns them, and only
    // those that changed are announced.
    m_lastChange = {};
    bool anything = false;

    if (!delta.rootUnreadable) {
        QStringList sectionOrder = m_rootOrders[0];
        if (sectionOrder.isEmpty())
            sectionOrder = m_rootOrders[1];
        if (!m_loadedOnce || sectionOrder != m_sectionOrder) {
            m_sectionOrder = std::move(sectionOrder);
            m_lastChange.ordersChanged = anything = true;
            Q_EMIT sectionOrderChanged();
        }
        if (!m_loadedOnce || m_rootOrders[2] != m_pinnedOrder) {
            m_pinnedOrder = m_rootOrders[2];
            m_lastChange.ordersChanged = anything = true;
            Q_EMIT pinnedOrderChanged();
        }
        if (!m_loadedOnce || delta.foldersChanged || delta.projectOrdersChanged) {
            QHash<QString, QStringList> orderByProject;
            for (const Folder &folder : std::as_const(m_folders))
                orderByProject.insert(folder.name, folder.order);
            if (!m_loadedOnce || orderByProject != m_promptOrderByProject) {
                m_promptOrderByProject = std::move(orderByProject);
                m_lastChange.ordersChanged = anything = true;
                Q_EMIT promptOrderByProjectChanged();
            }
        }
    }

    QList<Project> projects;
    projects.reserve(m_folders.size());
    for (qsizetype i = 0; i < m_folders.size(); ++i) {
        Folder &folder = m_folders[i];
        if (delta.foldersChanged || delta.touchedFolders.contains(i)) {
            folder.promptCount = 0;
            for (const LoadedFile &file : std::as_const(folder.files))
                folder.promptCount += file.prompt.has_value();
        }
        projects.append({folder.name, QUrl::fromLocalFile(folder.path), folder.promptCount});
    }
    projects = sortByOrder(projects, [](const Project &p) { return p.name; }, m_sectionOrder);
    if (!m_loadedOnce || projects != m_projects) {
        m_projects = std::move(projects);
        m_lastChange.projectsChanged = anything = true;
        Q_EMIT projectsChanged();
    }

    if (!m_loadedOnce || delta.foldersChanged || delta.listingReordered || !delta.promptIDs.isEmpty()) {
        rebuildPrompts(delta);
        m_lastChange.promptIDs = delta.promptIDs;
        anything = true;
        Q_EMIT promptsChanged();
    }
    m_loadedOnce = true;
    if (anything)
        Q_EMIT changed();
}

void PromptLibrary::setPromptOrder(const QString &projectName, const QStringList &order)
{
    const std::optional<Project> target = project(projectName);
    if (!target)
        return;
    const QString path = joinPath(target->path(), promptOrderFileName);
    writeOrderFile(path, order);
    refresh({path});
}

QStringList PromptLibrary::readOrderFile(const QString &path)
{
    const std::optional<QByteArray> bytes = FileOps::readRegularFile(path, LibraryScan::maxOrderFileBytes);
    const std::optional<QString> text = bytes ? LibraryScan::decodeUtf8(*bytes) : std::nullopt;
    QStringList entries;
    if (!text)
        return entries;
    // Lines end at a line feed that is not part of a CR LF pair: such a pair is
    // one character, so a CR LF file reads as one entry that matches nothing.
    qsizetype start = 0;
    const qsizetype size = text->size();
    for (qsizetype i = 0; i <= size; ++i) {
        const bool lineEnd = i == size || (text->at(i) == u'\n' && (i == 0 || text->at(i - 1) != u'\r'));
        if (!lineEnd)
            continue;
        const QStringView entry = trimSpacesAndTabs(QStringView(*text).sliced(start, i - start));
        if (!entry.isEmpty())
            entries.append(entry.toString());
        start = i + 1;
    }
    return entries;
}

void PromptLibrary::writeOrderFile(const QString &path, const QStringList &lines)
{
    // A repeated entry stops every later load, so the writer never makes one:
    // after trimming, the first of equal entries stays, and an entry holding
    // a line break (it would read back as other entries) is left out.
    QString text;
    QSet<QStringView> written;
    for (const QString &line : lines) {
        const QStringView entry = trimSpacesAndTabs(line);
        if (entry.isEmpty() || entry.contains(u'\n') || entry.contains(u'\r') || written.contains(entry))
            continue;
        written.insert(entry);
        text += entry + u'\n';
    }
    if (text.isEmpty())
        text = QStringLiteral("\n");
    QString ignored;
    FileOps::writeTextAtomically(path, text, &ignored);
}

void PromptLibrary::failOnDuplicateOrderKey(const QString &key)
{
    qFatal("Duplicate values for key: '%s'", qUtf8Printable(key));
}
