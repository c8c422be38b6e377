#include "FileOps.h"

#include "platform/RenameNoReplace.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <dirent.h>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileOps {

namespace {

constexpr int temporaryRandomLength = 10;

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

QString folderOf(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

// Closes `fd` once, remembering the first error.
class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1) : m_fd(fd) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    // Returns 0 or the errno of close (which may be a late write error).
    int close()
    {
        if (m_fd < 0)
            return 0;
        const int result = ::close(m_fd);
        m_fd = -1;
        return result == 0 ? 0 : errno;
    }

private:
    int m_fd;
};

// Returns 0, or the errno of the failed write.
int writeAll(int fd, const char *data, qint64 size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size_t(size));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        data += written;
        size -= written;
    }
    return 0;
}

QString randomName()
{
    static constexpr char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    // From the system's entropy on every call: a process forked from ours
    // must not draw the same names.
    QString name = temporaryPrefix.toString();
    for (int i = 0; i < temporaryRandomLength; ++i)
        name += QLatin1Char(alphabet[QRandomGenerator::system()->bounded(int(sizeof alphabet - 1))]);
    return name;
}

bool isTemporaryName(const QString &name)
{
    if (name.size() != temporaryPrefix.size() + temporaryRandomLength || !name.startsWith(temporaryPrefix))
        return false;
    for (qsizetype i = temporaryPrefix.size(); i < name.size(); ++i) {
        const char16_t c = name.at(i).unicode();
        if (!((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9')))
            return false;
    }
    return true;
}

// Creates a fresh hidden file in `folder`; returns its descriptor and path.
int createTemporary(const QString &folder, mode_t mode, QString *path)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        *path = folder + u'/' + randomName();
        const int fd = ::open(encoded(*path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    errno = EEXIST;
    return -1;
}

// Follows symbolic links at `path` to the file they name, so that a write
// replaces the linked file and keeps the link.
QString finalTarget(const QString &path)
{
    QString current = path;
    for (int depth = 0; depth < 40; ++depth) {
        const QFileInfo info(current);
        if (!info.isSymLink())
            return current;
        current = info.symLinkTarget();
    }
    return current;
}

// Gives the copy the original's owner when we may (root saving a user's file).
void keepOwner(int fd, const struct stat &original)
{
    if (::geteuid() == 0 && (original.st_uid != 0 || original.st_gid != 0)) {
        const int ignored = ::fchown(fd, original.st_uid, original.st_gid);
        Q_UNUSED(ignored);
    }
}

} // namespace

QString systemErrorText(int errorNumber)
{
    return qt_error_string(errorNumber);
}

bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *error)
{
    const QString target = finalTarget(path);
    struct stat existing;
    bool exists = ::stat(encoded(target).constData(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode)) {
        // A pipe or socket in the file's place holds no data and may be
        // replaced; a folder or a device (say, a link to /dev/zero) never.
        const bool replaceable = (S_ISFIFO(existing.st_mode) || S_ISSOCK(existing.st_mode)) && target == path;
        if (!replaceable) {
            *error = S_ISDIR(existing.st_mode) ? systemErrorText(EISDIR) : QStringLiteral("Not a regular file");
            return false;
        }
        exists = false;
    }
    // A file its owner made read-only stays as it is, as an editor would leave it.
    if (exists && ::access(encoded(target).constData(), W_OK) != 0) {
        *error = systemErrorText(errno);
        return false;
    }

    QString temporary;
    FileDescriptor fd(createTemporary(folderOf(target), 0666, &temporary));
    if (!fd.isOpen()) {
        *error = systemErrorText(errno);
        return false;
    }
    int failure = 0;
    if (exists) {
        keepOwner(fd.get(), existing);
        if (::fchmod(fd.get(), existing.st_mode & 07777) != 0)
            failure = errno;
    }
    if (!failure)
        failure = writeAll(fd.get(), bytes.constData(), bytes.size());
    // Some file systems report a full disk only when the data is flushed.
    if (!failure && ::fsync(fd.get()) != 0)
        failure = errno;
    if (const int closed = fd.close(); !failure)
        failure = closed;
    if (!failure && ::rename(encoded(temporary).constData(), encoded(target).constData()) != 0)
        failure = errno;
    if (failure) {
        ::unlink(encoded(temporary).constData());
        *error = systemErrorText(failure);
        return false;
    }
    return true;
}

bool writeTextAtomically(const QString &path, const QString &text, QString *error)
{
    return writeFileAtomically(path, text.toUtf8(), error);
}

std::optional<QByteArray> readRegularFile(const QString &path, qint64 maxBytes, ReadFailure *failure,
                                          qint64 *modifiedNs)
{
    auto fail = [&](ReadFailure why) -> std::optional<QByteArray> {
        if (failure)
            *failure = why;
        return std::nullopt;
    };
    // Non-blocking, so that opening a FIFO does not wait for a writer.
    FileDescriptor fd(::open(encoded(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!fd.isOpen())
        return fail(ReadFailure::Unreadable);
    struct stat st;
    if (::fstat(fd.get(), &st) != 0)
        return fail(ReadFailure::Unreadable);
    if (!S_ISREG(st.st_mode))
        return fail(ReadFailure::NotRegular);
    if (st.st_size > maxBytes)
        return fail(ReadFailure::TooLarge);
    if (modifiedNs) {
        const auto modified = modificationTime(st);
        *modifiedNs = qint64(modified.tv_sec) * 1000000000 + modified.tv_nsec;
    }

    // Sized from the stat; a file that grows meanwhile is read to its end.
    QByteArray bytes(qsizetype(st.st_size), Qt::Uninitialized);
    qsizetype filled = 0;
    for (;;) {
        if (filled == bytes.size()) {
            if (bytes.size() > maxBytes)
                return fail(ReadFailure::TooLarge);
            bytes.resize(bytes.size() + 4096);
        }
        const ssize_t n = ::read(fd.get(), bytes.data() + filled, size_t(bytes.size() - filled));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return fail(ReadFailure::Unreadable);
        }
        if (n == 0)
            break;
        filled += n;
    }
    if (filled > maxBytes)
        return fail(ReadFailure::TooLarge);
    bytes.truncate(filled);
    if (failure)
        *failure = ReadFailure::None;
    return bytes;
}

bool entryExists(const QString &path)
{
    struct stat st;
    return ::lstat(encoded(path).constData(), &st) == 0;
}

bool makeDirectory(const QString &path, QString *error)
{
    if (::mkdir(encoded(path).constData(), 0777) == 0)
        return true;
    *error = systemErrorText(errno);
    return false;
}

int renameNoReplace(const QString &from, const QString &to, QString *error)
{
    const QByteArray source = encoded(from);
    const QByteArray target = encoded(to);
    int result = renameNoReplaceNative(source.constData(), target.constData());
    if (result == EINVAL || result == ENOTSUP || result == ENOSYS || result == EOPNOTSUPP) {
        // No native support here: claim the name with an operation that
        // fails on an existing target, then move onto the claim.
        struct stat st;
        if (::lstat(source.constData(), &st) != 0) {
            result = errno;
        } else if (S_ISDIR(st.st_mode)) {
            // rename replaces an empty folder, and the empty folder is ours.
            if (::mkdir(target.constData(), 0700) != 0) {
                result = errno;
            } else if (::rename(source.constData(), target.constData()) != 0) {
                result = errno;
                ::rmdir(target.constData());
            } else {
                result = 0;
            }
        } else if (::link(source.constData(), target.constData()) == 0) {
            result = ::unlink(source.constData()) == 0 ? 0 : errno;
            if (result)
                ::unlink(target.constData());
        } else {
            result = errno;
        }
    }
    if (result != 0 && result != EEXIST)
        *error = systemErrorText(result);
    return result;
}

bool copyRegularFile(const QString &from, const QString &to, QString *error)
{
    return copyRegularFile(encoded(from), encoded(to), error);
}

bool copyRegularFile(const QByteArray &from, const QByteArray &target, QString *error)
{
    FileDescriptor in(::open(from.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat st;
    if (!in.isOpen() || ::fstat(in.get(), &st) != 0) {
        *error = systemErrorText(errno);
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        *error = QStringLiteral("Not a regular file: %1").arg(QFile::decodeName(from));
        return false;
    }
    FileDescriptor out(::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!out.isOpen()) {
        *error = systemErrorText(errno);
        return false;
    }

    int failure = 0;
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    for (;;) {
        const ssize_t n = ::read(in.get(), buffer.data(), size_t(buffer.size()));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            failure = errno;
            break;
        }
        if (n == 0)
            break;
        if ((failure = writeAll(out.get(), buffer.constData(), n)))
            break;
    }
    if (!failure) {
        keepOwner(out.get(), st);
        const struct timespec times[2] = {accessTime(st), modificationTime(st)};
        if (::fchmod(out.get(), st.st_mode & 07777) != 0 || ::futimens(out.get(), times) != 0 || ::fsync(out.get()) != 0)
            failure = errno;
    }
    if (const int closed = out.close(); !failure)
        failure = closed;
    if (failure) {
        ::unlink(target.constData());
        *error = systemErrorText(failure);
        return false;
    }
    return true;
}

int moveFileNoReplace(const QString &from, const QString &to, QString *error)
{
    QString renameError;
    const int renamed = renameNoReplace(from, to, &renameError);
    if (renamed != EXDEV) {
        if (renamed != 0 && renamed != EEXIST)
            *error = renameError;
        return renamed;
    }

    // Another file system: a whole copy under a hidden name, put in place
    // without replacing anything, and only then the original removed.
    const QString temporary = folderOf(to) + u'/' + randomName();
    if (!copyRegularFile(from, temporary, error))
        return EIO;
    const int placed = renameNoReplace(temporary, to, error);
    if (placed != 0) {
        ::unlink(encoded(temporary).constData());
        return placed;
    }
    if (::unlink(encoded(from).constData()) != 0) {
        const int failure = errno;
        ::unlink(encoded(to).constData());
        *error = systemErrorText(failure);
        return failure;
    }
    return 0;
}

void removeStaleTemporaryFiles(const QString &folder)
{
    // Names first: only the app's own pattern is looked at more closely, so
    // a large folder costs one listing.
    const qint64 dayAgo = QDateTime::currentSecsSinceEpoch() - 24 * 60 * 60;
    DIR *dir = ::opendir(encoded(folder).constData());
    if (!dir)
        return;
    while (const dirent *entry = ::readdir(dir)) {
        if (entry->d_name[0] != '.' || !isTemporaryName(QFile::decodeName(entry->d_name)))
            continue;
        struct stat st;
        if (::fstatat(::dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(st.st_mode)
            && st.st_mtime < dayAgo)
            ::unlinkat(::dirfd(dir), entry->d_name, 0);
    }
    ::closedir(dir);
}

} // namespace FileOps
