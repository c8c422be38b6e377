#pragma once

#include "Prompt.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <optional>

// The in-memory mirror of the prompt folder. Every mutation writes to disk and
// then reloads; the lists are never patched in place. Failures are logged as
// one "Vesk: " line and reported to callers only as an empty result.
class PromptLibrary : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView sectionOrderFileName = u".vesk-sections-order";
    static constexpr QStringView legacyProjectsOrderFileName = u".vesk-projects-order";
    static constexpr QStringView pinnedOrderFileName = u".vesk-pinned-order";
    static constexpr QStringView promptOrderFileName = u".vesk-order";

    // Creates the root and "Inbox" when missing, then loads everything.
    explicit PromptLibrary(const QUrl &rootURL, QObject *parent = nullptr);

    const QList<Project> &projects() const { return m_projects; }
    const QList<Prompt> &prompts() const { return m_prompts; }
    const QUrl &rootURL() const { return m_rootURL; }
    QString rootPath() const { return m_rootURL.toLocalFile(); }
    const QStringList &sectionOrder() const { return m_sectionOrder; }
    const QStringList &pinnedOrder() const { return m_pinnedOrder; }
    const QHash<QString, QStringList> &promptOrderByProject() const { return m_promptOrderByProject; }

    std::optional<Prompt> prompt(const QString &id) const;
    std::optional<Project> project(const QString &name) const;

    void reload();

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
    void ensureRoot();
    void removeStaleTemporaryFiles();
    QList<Prompt> loadPrompts(const QString &folder, const QString &projectName);

    // What the last reload read from each file, reused while the file's size
    // and times are unchanged. Files changed within the last seconds before
    // they were read are always read again, so coarse file-system clocks
    // cannot hide an edit.
    struct ReadFile
    {
        qint64 size;
        qint64 modified;        // seconds since the epoch
        qint64 statusChanged;   // seconds since the epoch
        quint64 inode;
        qint64 readAt;          // seconds since the epoch
        std::optional<Prompt> prompt; // none: not UTF-8 text, or too large
        bool tooLarge;
    };
    QHash<QString, ReadFile> m_readFiles;
    QHash<QString, ReadFile> m_nextReadFiles;
    [[noreturn]] static void failOnDuplicateOrderKey(const QString &key);

    QUrl m_rootURL;
    QList<Project> m_projects;
    QList<Prompt> m_prompts;
    QStringList m_sectionOrder;
    QStringList m_pinnedOrder;
    QHash<QString, QStringList> m_promptOrderByProject;
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
