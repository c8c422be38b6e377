#pragma once

#include <QSet>
#include <QString>

#include <memory>

// Tells which folders and files may have changed since the last call, so that
// a refresh after the app's own write looks at those alone. It is only a
// hint: when it is unavailable or lost track (queue overflow), the caller
// falls back to walking everything. One implementation per platform.
class FolderWatcher
{
public:
    struct Changes
    {
        bool lostTrack = false;   // something may have changed anywhere
        QSet<QString> folders;    // folders whose entries were added, removed or renamed
        QSet<QString> files;      // files whose content or attributes changed
    };

    // nullptr where the platform offers no notification.
    static std::unique_ptr<FolderWatcher> create();
    virtual ~FolderWatcher() = default;

    // Watches the entries of one folder (not its sub-folders). False when the
    // folder cannot be watched (then the caller must not rely on the hints).
    virtual bool watch(const QString &folder) = 0;
    virtual void unwatch(const QString &folder) = 0;
    virtual void unwatchAll() = 0;

    // Everything reported since the previous call.
    virtual Changes takeChanges() = 0;
};
