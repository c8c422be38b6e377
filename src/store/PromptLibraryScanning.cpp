// How PromptLibrary finds out what is on disk: the full walk of reload() and
// the refresh that follows the change notification after the app's own writes.

#include "PromptLibrary.h"

#include "VeskConst.h"
#include "platform/FolderWatcher.h"

#include <QCollator>
#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QLocale>

#include <numeric>

namespace {

// A file whose times are this close to when it was read may have changed
// again within the same clock tick (some file systems count whole seconds,
// FAT counts in 2 s steps), so a full walk reads it again.
constexpr qint64 settleSeconds = 3;

bool settled(const LibraryScan::FileStamp &stamp, qint64 readAtSeconds)
{
    return readAtSeconds - stamp.modifiedNs / 1000000000 > settleSeconds
        && readAtSeconds - stamp.statusChangedNs / 1000000000 > settleSeconds;
}

QString sizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeIecFormat);
}

const QStringView rootOrderFiles[3] = {PromptLibrary::sectionOrderFileName,
                                       PromptLibrary::legacyProjectsOrderFileName,
                                       PromptLibrary::pinnedOrderFileName};

// Whether the names both lists hold come in the same order in both.
bool sameRelativeOrder(const QStringList &before, const QStringList &after)
{
    const QSet<QString> kept = QSet<QString>(before.cbegin(), before.cend())
                                   .intersect(QSet<QString>(after.cbegin(), after.cend()));
    auto a = before.cbegin();
    auto b = after.cbegin();
    for (;;) {
        while (a != before.cend() && !kept.contains(*a))
            ++a;
        while (b != after.cend() && !kept.contains(*b))
            ++b;
        if (a == before.cend() || b == after.cend())
            return a == before.cend() && b == after.cend();
        if (*a++ != *b++)
            return false;
    }
}

} // namespace

void PromptLibrary::logTooLarge(const Folder &folder, const QString &fileName, qint64 size,
                                const LoadedFile *before) const
{
    // Once per file, not at every reload while it stays that large.
    if (before && before->tooLarge)
        return;
    qWarning().noquote() << u"Vesk: skipped " + folder.name + u'/' + fileName + u": " + sizeText(size)
            + u" is more than a prompt file may hold (" + sizeText(LibraryScan::maxPromptFileBytes) + u")";
}

void PromptLibrary::setFolders(const QStringList &names, Delta *delta)
{
    QStringList current;
    for (const Folder &folder : std::as_const(m_folders))
        current.append(folder.name);
    if (names == current)
        return;
    delta->foldersChanged = true;

    const QSet<QString> staying(names.cbegin(), names.cend());
    for (const Folder &folder : std::as_const(m_folders)) {
        if (staying.contains(folder.name))
            continue;
        for (auto file = folder.files.cbegin(); file != folder.files.cend(); ++file) {
            if (file->prompt)
                delta->promptIDs.insert(file->prompt->id);
        }
        if (m_watcher)
            m_watcher->unwatch(folder.path);
    }
    QList<Folder> folders;
    folders.reserve(names.size());
    for (const QString &name : names) {
        const auto existing = m_folderIndex.constFind(name);
        if (existing != m_folderIndex.constEnd()) {
            folders.append(std::move(m_folders[*existing]));
            continue;
        }
        Folder folder;
        folder.name = name;
        folder.path = rootPath() + u'/' + name;
        if (m_watcher && !m_watcher->watch(folder.path))
            m_watchingAll = false;
        folders.append(std::move(folder));
    }
    m_folders = std::move(folders);
    m_folderIndex.clear();
    for (qsizetype i = 0; i < m_folders.size(); ++i)
        m_folderIndex.insert(m_folders[i].name, i);
}

bool PromptLibrary::rereadRootOrders()
{
    bool changed = false;
    for (int i = 0; i < 3; ++i) {
        const QString path = orderFilePath(rootOrderFiles[i]);
        const std::optional<LibraryScan::FileStamp> stamp = LibraryScan::stampOf(path);
        const bool same = stamp && m_rootOrderStamps[i] && stamp->sameFile(*m_rootOrderStamps[i])
            && settled(*stamp, QDateTime::currentSecsSinceEpoch());
        if (same || (!stamp && !m_rootOrderStamps[i] && m_loadedOnce))
            continue;
        QStringList order = stamp ? readOrderFile(path) : QStringList();
        m_rootOrderStamps[i] = stamp;
        if (order != m_rootOrders[i]) {
            m_rootOrders[i] = std::move(order);
            changed = true;
        }
    }
    return changed;
}

void PromptLibrary::listAndRead(const QList<qsizetype> &folders, QList<LibraryScan::ReadRequest> *requests,
                                QList<qsizetype> *requestFolders, Delta *delta)
{
    QList<std::optional<LibraryScan::FolderListing>> listings(folders.size());
    LibraryScan::parallelFor(folders.size(), 8, [&](qsizetype i) {
        listings[i] = LibraryScan::listFolder(m_folders[folders[i]].path);
    });

    const qint64 now = QDateTime::currentSecsSinceEpoch();
    for (qsizetype i = 0; i < folders.size(); ++i) {
        Folder &folder = m_folders[folders[i]];
        delta->touchedFolders.insert(folders[i]);
        QStringList listing;
        QHash<QString, LoadedFile> files;
        QSet<QString> linked;
        std::optional<LibraryScan::FileStamp> orderStamp;
        if (listings[i]) {
            orderStamp = listings[i]->orderFile;
            for (const LibraryScan::ListedFile &listed : std::as_const(listings[i]->files)) {
                listing.append(listed.name);
                if (listed.stamp.isSymLink)
                    linked.insert(listed.name);
                auto old = folder.files.find(listed.name);
                const bool known = old != folder.files.end();
                if (known && old->stamp.sameFile(listed.stamp) && settled(listed.stamp, old->readAtSeconds)) {
                    files.insert(listed.name, std::move(*old));
                    continue;
                }
                // Keeps what was read before, so that reading it again can
                // tell whether the prompt really changed.
                LoadedFile pending;
                pending.stamp = listed.stamp;
                pending.readAtSeconds = now;
                if (known) {
                    pending.prompt = std::move(old->prompt);
                    pending.tooLarge = old->tooLarge;
                }
                files.insert(listed.name, std::move(pending));
                requests->append({folder.path, listed.name, folder.name, listed.stamp});
                requestFolders->append(folders[i]);
            }
        }
        // What is gone from the folder is gone from the lists.
        for (auto old = folder.files.cbegin(); old != folder.files.cend(); ++old) {
            if (old->prompt && !files.contains(old.key()))
                delta->promptIDs.insert(old->prompt->id);
        }
        if (!sameRelativeOrder(folder.listing, listing))
            delta->listingReordered = true;
        folder.files = std::move(files);
        folder.linked = std::move(linked);
        folder.listing = std::move(listing);
        folder.rank.clear();
        for (qsizetype r = 0; r < folder.listing.size(); ++r)
            folder.rank.insert(folder.listing[r], r);

        const bool orderSame = orderStamp && folder.orderStamp && orderStamp->sameFile(*folder.orderStamp)
            && settled(*orderStamp, now);
        if (!orderSame && (orderStamp || folder.orderStamp)) {
            QStringList order = orderStamp ? readOrderFile(folder.path + u'/' + promptOrderFileName) : QStringList();
            folder.orderStamp = orderStamp;
            if (order != folder.order) {
                folder.order = std::move(order);
                delta->projectOrdersChanged = true;
            }
        }
    }
}

void PromptLibrary::applyReads(const QList<LibraryScan::ReadRequest> &requests,
                               const QList<qsizetype> &requestFolders, Delta *delta)
{
    const QList<LibraryScan::ReadResult> results = LibraryScan::readPrompts(requests, m_searchTexts);
    for (qsizetype i = 0; i < requests.size(); ++i) {
        Folder &folder = m_folders[requestFolders[i]];
        delta->touchedFolders.insert(requestFolders[i]);
        const auto file = folder.files.find(requests[i].fileName);
        if (file == folder.files.end())
            continue;
        if (results[i].tooLarge)
            logTooLarge(folder, requests[i].fileName, results[i].size, &*file);
        if (file->prompt != results[i].prompt)
            delta->promptIDs.insert(folder.name + u'/' + requests[i].fileName);
        file->prompt = results[i].prompt;
        file->tooLarge = results[i].tooLarge;
    }
}

void PromptLibrary::fullScan(Delta *delta)
{
    // Whatever the notification queued so far is covered by this walk.
    if (m_watcher)
        m_watcher->takeChanges();

    std::optional<QStringList> names = LibraryScan::listProjects(rootPath());
    if (!names) {
        // The root is gone: no projects, no prompts; the orders stay.
        delta->rootUnreadable = true;
        setFolders({}, delta);
        m_watchingAll = false;
        return;
    }
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(names->begin(), names->end(),
                     [&](const QString &a, const QString &b) { return collator.compare(a, b) < 0; });
    if (m_watcher && !m_watchingAll) {
        m_watchingAll = m_watcher->watch(rootPath());
        for (const Folder &folder : std::as_const(m_folders))
            m_watchingAll = m_watcher->watch(folder.path) && m_watchingAll;
    }
    setFolders(*names, delta);

    if (rereadRootOrders())
        delta->rootOrdersChanged = true;
    QList<qsizetype> all(m_folders.size());
    std::iota(all.begin(), all.end(), 0);
    QList<LibraryScan::ReadRequest> requests;
    QList<qsizetype> requestFolders;
    listAndRead(all, &requests, &requestFolders, delta);
    applyReads(requests, requestFolders, delta);
}

bool PromptLibrary::refreshFromHints(const QStringList &written, Delta *delta)
{
    if (!m_watcher || !m_watchingAll || !m_loadedOnce)
        return false;
    FolderWatcher::Changes changes = m_watcher->takeChanges();
    if (changes.lostTrack)
        return false;
    const QString root = rootPath();
    for (const QString &path : written) {
        changes.files.insert(path);
        changes.folders.insert(QFileInfo(path).path());
    }

    if (changes.folders.contains(root)) {
        std::optional<QStringList> names = LibraryScan::listProjects(root);
        if (!names)
            return false;
        QStringList current;
        for (const Folder &folder : std::as_const(m_folders))
            current.append(folder.name);
        if (QSet<QString>(names->cbegin(), names->cend()) != QSet<QString>(current.cbegin(), current.cend()))
            return false; // projects came or went: walk everything
    }

    // Folders whose entries changed are listed again (one stat per file);
    // files changed in place are read again.
    QList<qsizetype> dirtyFolders;
    for (const QString &path : std::as_const(changes.folders)) {
        const QFileInfo info(path);
        const auto folder = m_folderIndex.constFind(info.fileName());
        if (info.path() == root && folder != m_folderIndex.constEnd())
            dirtyFolders.append(*folder);
    }
    QList<LibraryScan::ReadRequest> requests;
    QList<qsizetype> requestFolders;
    listAndRead(dirtyFolders, &requests, &requestFolders, delta);

    bool rootOrdersDirty = false;
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    auto readAgain = [&](qsizetype index, const QString &name, bool force) {
        Folder &folder = m_folders[index];
        const auto file = folder.files.find(name);
        if (file == folder.files.end())
            return;
        const std::optional<LibraryScan::FileStamp> stamp = LibraryScan::stampOf(folder.path + u'/' + name);
        if (!stamp || (!force && stamp->sameFile(file->stamp)))
            return;
        file->stamp = *stamp;
        file->readAtSeconds = now;
        requests.append({folder.path, name, folder.name, *stamp});
        requestFolders.append(index);
    };
    for (const QString &path : std::as_const(changes.files)) {
        const QFileInfo info(path);
        const QString name = info.fileName();
        if (info.path() == root) {
            rootOrdersDirty = rootOrdersDirty || name.startsWith(u".vesk-");
            continue;
        }
        const QFileInfo parent(info.path());
        const auto folder = m_folderIndex.constFind(parent.fileName());
        if (parent.path() != root || folder == m_folderIndex.constEnd() || dirtyFolders.contains(*folder))
            continue;
        if (name == promptOrderFileName) {
            Folder &f = m_folders[*folder];
            const std::optional<LibraryScan::FileStamp> stamp = LibraryScan::stampOf(path);
            QStringList order = stamp ? readOrderFile(path) : QStringList();
            f.orderStamp = stamp;
            if (order != f.order) {
                f.order = std::move(order);
                delta->projectOrdersChanged = true;
            }
        } else if (!name.startsWith(u'.') && VeskConst::isPromptFileName(name)) {
            // Reported, so read: a rewrite within one clock tick keeps size and times.
            readAgain(*folder, name, true);
        }
    }
    // A link's target may live elsewhere, where no notification reaches.
    for (qsizetype index = 0; index < m_folders.size(); ++index) {
        if (dirtyFolders.contains(index))
            continue;
        const QSet<QString> linked = m_folders[index].linked;
        for (const QString &name : linked)
            readAgain(index, name, false);
    }
    if (rootOrdersDirty && rereadRootOrders())
        delta->rootOrdersChanged = true;
    applyReads(requests, requestFolders, delta);
    return true;
}
