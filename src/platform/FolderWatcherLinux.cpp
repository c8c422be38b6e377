// inotify: the kernel queues events as changes happen, so draining the queue
// at a refresh sees every change made through these folders before it.
#include "FolderWatcher.h"

#include <QFile>
#include <QHash>

#include <cerrno>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr uint32_t folderEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr uint32_t fileEvents = IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB;
constexpr uint32_t selfEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT;

class InotifyWatcher final : public FolderWatcher
{
public:
    explicit InotifyWatcher(int fd) : m_fd(fd) {}
    ~InotifyWatcher() override { ::close(m_fd); }

    bool watch(const QString &folder) override
    {
        const int wd = ::inotify_add_watch(m_fd, QFile::encodeName(folder).constData(),
                                           folderEvents | fileEvents | selfEvents | IN_ONLYDIR);
        if (wd < 0)
            return false;
        m_folderByWatch.insert(wd, folder);
        m_watchByFolder.insert(folder, wd);
        return true;
    }

    void unwatch(const QString &folder) override
    {
        const auto it = m_watchByFolder.constFind(folder);
        if (it == m_watchByFolder.constEnd())
            return;
        ::inotify_rm_watch(m_fd, *it);
        m_folderByWatch.remove(*it);
        m_watchByFolder.erase(it);
    }

    void unwatchAll() override
    {
        for (auto it = m_folderByWatch.cbegin(); it != m_folderByWatch.cend(); ++it)
            ::inotify_rm_watch(m_fd, it.key());
        m_folderByWatch.clear();
        m_watchByFolder.clear();
    }

    Changes takeChanges() override
    {
        Changes changes;
        alignas(inotify_event) char buffer[64 * 1024];
        for (;;) {
            const ssize_t n = ::read(m_fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                if (errno != EAGAIN)
                    changes.lostTrack = true;
                break;
            }
            if (n == 0)
                break;
            for (ssize_t offset = 0; offset < n;) {
                const auto *event = reinterpret_cast<const inotify_event *>(buffer + offset);
                offset += ssize_t(sizeof(inotify_event) + event->len);
                record(*event, &changes);
            }
        }
        return changes;
    }

private:
    void record(const inotify_event &event, Changes *changes)
    {
        if (event.mask & IN_Q_OVERFLOW) {
            changes->lostTrack = true;
            return;
        }
        const QString folder = m_folderByWatch.value(event.wd);
        if (event.mask & IN_IGNORED) {
            // The folder went away (or was unwatched): its parent's events say so.
            m_watchByFolder.remove(folder);
            m_folderByWatch.remove(event.wd);
            return;
        }
        if (folder.isEmpty())
            return;
        if (event.mask & selfEvents) {
            changes->lostTrack = true;
            return;
        }
        const QString name = event.len ? QFile::decodeName(event.name) : QString();
        if (name.isEmpty())
            return;
        if (event.mask & folderEvents)
            changes->folders.insert(folder);
        changes->files.insert(folder + u'/' + name);
    }

    int m_fd;
    QHash<int, QString> m_folderByWatch;
    QHash<QString, int> m_watchByFolder;
};

} // namespace

std::unique_ptr<FolderWatcher> FolderWatcher::create()
{
    const int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0)
        return nullptr;
    return std::make_unique<InotifyWatcher>(fd);
}
