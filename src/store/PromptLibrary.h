#pragma once

#include "LibraryScan.h"
#include "Prompt.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <optional>

class FolderWatcher;

// What the last change of the published lists touched, for views that update
// only what changed. Read it in a slot of changed().
struct LibraryChange
{
    QSet<QString> promptIDs;     // prompts added, removed or changed (old and new ids)
    bool projectsChanged = false; // the project list (names, order, counts)
    bool ordersChanged = false;   // section, pinned or project order lists
};

// The in-memory mirror of the prompt folder. Every mutation writes to disk and
// then rebuilds the lists from disk. Failures are logged as one "Vesk: " line
// and reported to callers only as an empty result.
//
// reload() walks the whole folder (one stat per file) and reads again only
// files that changed; a refresh after the app's own write looks only at what
// the platform's change notification reports (plus what was written), and
// walks everything when it is unavailable or lost track. Either way the lists
// equal what a load from scratch would give, and lists that did not change
// are neither rebuilt nor announced.
class PromptLibrary : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView sectionOrderFileName = u".vesk-sections-order";
    static constexpr QStringView legacyProjectsOrderFileName = u".vesk-projects-order";
    static constexpr QStringView pinnedOrderFileName = u".vesk-pinned-order";
    static constexpr QStringView promptOrderFileName = u".vesk-order";

    // A process that reads the library once (the command line) needs neither
    // the change notification nor the prompts' search texts.
    enum class Use { Live, OneShot };

    // Creates the root and "Inbox" when missing, then loads everything.
    explicit PromptLibrary(const QUrl &rootURL, QObject *parent = nullptr, Use use = Use::Live);

    // What opening a library does before loading it: creates the root and
    // "Inbox" when missing, and clears temporary files a killed save left.
    static void prepareRoot(const QString &rootPath);
    ~PromptLibrary() override;

    const QList<Project> &projects() const { return m_projects; }
    const QList<Prompt> &prompts() const { return m_prompts; }
    const QUrl &rootURL() const { return m_rootURL; }
    QString rootPath() const { return m_rootURL.toLocalFile(); }
    const QStringList &sectionOrder() const { return m_sectionOrder; }
    const QStringList &pinnedOrder() const { return m_pinnedOrder; }
    const QHash<QString, QStringList> &promptOrderByProject() const { return m_promptOrderByProject; }

    std::optional<Prompt> prompt(const QString &id) const;
    std::optional<Project> project(const QString &name) const;

    // Everything from disk: what other programs changed shows up here.
    void reload();
    // After a write of the app's own: only what the change notification (and
    // `written`) names is looked at again; a full reload when in doubt.
    void refresh(const QStringList &written = {});

    const LibraryChange &lastChange() const { return m_lastChange; }

    // Persists the manual order (file names) of one loaded project, then reloads.
    void setPromptOrder(const QString &projectName, const QStringList &order);

    static QStringList readOrderFile(const QString &path);
    static void writeOrderFile(const QString &path, const QStringList &lines);
    QString orderFilePath(QStringView orderFileName) const;

    // The one ordering rule: items whose key is listed come first, in the
    // list's order; the rest follow in their incoming order. A repeated entry
    // in `order` stops the process: order files are only written from lists of
    // unique keys, so one is corrupt.
    template<typename T, typename KeyFn>
    static QList<T> sortByOrder(const QList<T> &items, KeyFn key, const QStringList &order);

    // Mutations.
    void save(const Prompt &prompt);
    std::optional<Prompt> createPrompt(const Project &project);
    void deletePrompt(const Prompt &prompt);
    std::optional<Project> createProject(const QString &name);
    void deleteProject(const Project &project);
    std::optional<Project> renameProject(const Project &project, const QString &newName);
    std::optional<Prompt> movePrompt(const Prompt &prompt, const Project &target);

    // Trimmed; "/", ":" and "\" become "-"; empty becomes "Untitled".
    static QString sanitizeProjectName(const QString &name);

Q_SIGNALS:
    // One signal per list as it is replaced, in reload order, then changed()
    // once the whole reload is done. Views usually need only changed().
    void sectionOrderChanged();
    void pinnedOrderChanged();
    void promptOrderByProjectChanged();
    void projectsChanged();
    void promptsChanged();
    void changed();

private:

    // One file as last read.
    struct LoadedFile
    {
        LibraryScan::FileStamp stamp;
        qint64 readAtSeconds = 0;
        std::optional<Prompt> prompt; // none: not UTF-8 text, or too large
        bool tooLarge = false;
    };
    // One project folder as last listed.
    struct Folder
    {
        QString name;
        QString path;
        QStringList listing;               // prompt files in the file system's order
        QHash<QString, qsizetype> rank;    // position in `listing`
        QHash<QString, LoadedFile> files;  // by file name
        QSet<QString> linked;              // files that are symbolic links
        std::optional<LibraryScan::FileStamp> orderStamp;
        QStringList order;
        int promptCount = 0;
    };
    // What a reload or refresh changed, gathered before anything is published.
    struct Delta
    {
        QSet<QString> promptIDs;
        bool foldersChanged = false;   // folders added, removed or renamed
        bool listingReordered = false; // a folder lists its files in another order
        bool rootOrdersChanged = false;
        bool projectOrdersChanged = false;
        bool rootUnreadable = false;   // only projects and prompts are emptied
        QSet<qsizetype> touchedFolders; // listed or read again
    };

    void fullScan(Delta *delta);
    bool refreshFromHints(const QStringList &written, Delta *delta);
    void listAndRead(const QList<qsizetype> &folders, QList<LibraryScan::ReadRequest> *requests,
                     QList<qsizetype> *requestFolders, Delta *delta);
    void applyReads(const QList<LibraryScan::ReadRequest> &requests, const QList<qsizetype> &requestFolders,
                    Delta *delta);
    bool rereadRootOrders();
    void setFolders(const QStringList &names, Delta *delta);
    void publish(const Delta &delta);
    void rebuildPrompts(const Delta &delta);
    bool loadsBefore(const Prompt &a, const Prompt &b) const;
    void logTooLarge(const Folder &folder, const QString &fileName, qint64 size, const LoadedFile *before) const;

    [[noreturn]] static void failOnDuplicateOrderKey(const QString &key);

    QUrl m_rootURL;
    QList<Project> m_projects;
    QList<Prompt> m_prompts;
    QStringList m_sectionOrder;
    QStringList m_pinnedOrder;
    QHash<QString, QStringList> m_promptOrderByProject;

    QList<Folder> m_folders;                // in display order of names
    QHash<QString, qsizetype> m_folderIndex; // by name
    std::optional<LibraryScan::FileStamp> m_rootOrderStamps[3];
    QStringList m_rootOrders[3];
    bool m_loadedOnce = false;
    bool m_searchTexts = true;
    std::unique_ptr<FolderWatcher> m_watcher;
    bool m_watchingAll = false;
    LibraryChange m_lastChange;
};

template<typename T, typename KeyFn>
QList<T> PromptLibrary::sortByOrder(const QList<T> &items, KeyFn key, const QStringList &order)
{
    if (order.isEmpty())
        return items;

    QHash<QString, qsizetype> position;
    position.reserve(order.size());
    for (qsizetype i = 0; i < order.size(); ++i) {
        if (position.contains(order[i]))
            failOnDuplicateOrderKey(order[i]);
        position.insert(order[i], i);
    }

    // Listed items rank by their line; the others rank behind every line, by
    // incoming index. Equal ranks (a key shared by several items) stay stable.
    struct Ranked
    {
        qsizetype rank;
        qsizetype index;
    };
    QList<Ranked> ranked;
    ranked.reserve(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        const auto found = position.constFind(key(items[i]));
        ranked.append({found != position.constEnd() ? *found : order.size() + i, i});
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const Ranked &a, const Ranked &b) { return a.rank < b.rank; });

    QList<T> sorted;
    sorted.reserve(items.size());
    for (const Ranked &r : std::as_const(ranked))
        sorted.append(items[r.index]);
    return sorted;
}
