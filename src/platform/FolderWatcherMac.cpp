// FSEvents: one stream over the library's root (it covers the sub-folders)
// with per-file events, delivered on a private dispatch queue and collected
// under a lock until the next takeChanges(). FSEvents delivers
// asynchronously, so takeChanges() first flushes the stream: Apple documents
// that when FSEventStreamFlushSync returns, the callback has run for every
// event that had occurred before the call. A refresh then sees another
// program's change made a moment before it, as a walk would.
#include "FolderWatcher.h"

#include <QFile>
#include <QFileInfo>

#include <CoreServices/CoreServices.h>
#include <dispatch/dispatch.h>

#include <mutex>

namespace {

constexpr FSEventStreamEventFlags lostTrackFlags = kFSEventStreamEventFlagMustScanSubDirs
    | kFSEventStreamEventFlagUserDropped | kFSEventStreamEventFlagKernelDropped
    | kFSEventStreamEventFlagRootChanged | kFSEventStreamEventFlagMount | kFSEventStreamEventFlagUnmount;
constexpr FSEventStreamEventFlags entryFlags = kFSEventStreamEventFlagItemCreated
    | kFSEventStreamEventFlagItemRemoved | kFSEventStreamEventFlagItemRenamed;

class FSEventsWatcher final : public FolderWatcher
{
public:
    FSEventsWatcher() : m_queue(dispatch_queue_create("io.vesk.folder-watcher", DISPATCH_QUEUE_SERIAL)) {}

    ~FSEventsWatcher() override
    {
        stop();
        // stop() waited for a callback already running on the queue, so
        // nothing touches the members once they go.
        dispatch_release(m_queue);
    }

    bool watch(const QString &folder) override
    {
        // The first folder is the root; the stream covers everything below it.
        if (m_stream)
            return folder.startsWith(m_root + u'/') || folder == m_root;
        m_root = folder;
        // Events name real paths (/private/var/… for /var/…): map them back.
        m_realRoot = QFileInfo(folder).canonicalFilePath();
        const QByteArray path = QFile::encodeName(folder);
        CFStringRef cfPath = CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, path.constData());
        if (!cfPath)
            return false;
        CFArrayRef paths = CFArrayCreate(kCFAllocatorDefault, reinterpret_cast<const void **>(&cfPath), 1,
                                         &kCFTypeArrayCallBacks);
        CFRelease(cfPath);
        FSEventStreamContext context{0, this, nullptr, nullptr, nullptr};
        m_stream = FSEventStreamCreate(kCFAllocatorDefault, &FSEventsWatcher::callback, &context, paths,
                                       kFSEventStreamEventIdSinceNow, 0.0,
                                       kFSEventStreamCreateFlagFileEvents | kFSEventStreamCreateFlagNoDefer
                                           | kFSEventStreamCreateFlagWatchRoot);
        CFRelease(paths);
        if (!m_stream)
            return false;
        FSEventStreamSetDispatchQueue(m_stream, m_queue);
        m_started = FSEventStreamStart(m_stream);
        if (!m_started) {
            stop();
            return false;
        }
        return true;
    }

    void unwatch(const QString &folder) override
    {
        if (folder == m_root)
            stop();
    }

    void unwatchAll() override { stop(); }

    Changes takeChanges() override
    {
        // Every event that occurred before this call reaches the callback
        // first. Not under the lock, which the callback takes.
        if (m_started)
            FSEventStreamFlushSync(m_stream);
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_pending, Changes{});
    }

private:
    static void callback(ConstFSEventStreamRef, void *info, size_t count, void *eventPaths,
                         const FSEventStreamEventFlags flags[], const FSEventStreamEventId[])
    {
        auto *self = static_cast<FSEventsWatcher *>(info);
        char **paths = static_cast<char **>(eventPaths);
        std::lock_guard<std::mutex> lock(self->m_mutex);
        for (size_t i = 0; i < count; ++i) {
            if (flags[i] & lostTrackFlags) {
                self->m_pending.lostTrack = true;
                continue;
            }
            QString path = QFile::decodeName(paths[i]);
            if (path.startsWith(self->m_realRoot) && self->m_realRoot != self->m_root)
                path = self->m_root + path.mid(self->m_realRoot.size());
            if (flags[i] & entryFlags)
                self->m_pending.folders.insert(QFileInfo(path).path());
            self->m_pending.files.insert(path);
        }
    }

    void stop()
    {
        if (!m_stream)
            return;
        // Stop only what started; invalidating takes the stream off the
        // queue (it was set on one in watch()), so no callback starts after it.
        if (m_started)
            FSEventStreamStop(m_stream);
        m_started = false;
        FSEventStreamInvalidate(m_stream);
        // A callback that began before is still running on the serial
        // queue: an empty task after it returns once it has finished.
        dispatch_sync_f(m_queue, nullptr, [](void *) {});
        FSEventStreamRelease(m_stream);
        m_stream = nullptr;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pending.lostTrack = true;
    }

    dispatch_queue_t m_queue;
    FSEventStreamRef m_stream = nullptr;
    bool m_started = false; // FSEventStreamStart succeeded and no Stop since
    QString m_root;
    QString m_realRoot;
    std::mutex m_mutex;
    Changes m_pending;
};

} // namespace

std::unique_ptr<FolderWatcher> FolderWatcher::create()
{
    return std::make_unique<FSEventsWatcher>();
}
