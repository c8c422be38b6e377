// The freedesktop.org Trash ($XDG_DATA_HOME/Trash), as file managers show it.
//
// Everything goes to the home Trash, also from other mounts: a per-volume
// ".Trash-<uid>" folder is not shown by every desktop and would leave folders
// behind at the volume's root. Across mounts the item is copied whole, then
// the original removed; if the original cannot be removed entirely, what was
// removed is put back from the copy and the copy leaves the Trash again, so
// the outcome is all or nothing and retrying never piles up copies.
//
// Trees are walked on the file system's own bytes, so names that are not
// UTF-8 are copied and removed as they are.

#include "Trash.h"

#include "FileOps.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A Trash entry's name plus ".trashinfo" must fit the usual 255-byte limit.
constexpr qsizetype maxEntryNameBytes = 255 - 10;

QString systemError()
{
    return qt_error_string(errno);
}

QString homeTrashPath()
{
    // $XDG_DATA_HOME when it is an absolute path, else ~/.local/share.
    QString dataHome = QFile::decodeName(qgetenv("XDG_DATA_HOME"));
    if (dataHome.isEmpty() || !QDir::isAbsolutePath(dataHome))
        dataHome = QDir::homePath() + u"/.local/share";
    return QDir::cleanPath(dataHome + u"/Trash");
}

// Creates the folder and any missing parents as private to the user (0700),
// as the desktop's base-directory rules ask for.
bool makePrivateDirectory(const QString &path, QString *error)
{
    if (QFileInfo(path).isDir())
        return true;
    const QString parent = QFileInfo(path).absolutePath();
    if (parent != path && !makePrivateDirectory(parent, error))
        return false;
    if (::mkdir(QFile::encodeName(path).constData(), 0700) != 0 && !(errno == EEXIST && QFileInfo(path).isDir())) {
        *error = QStringLiteral("Could not create %1: %2").arg(path, systemError());
        return false;
    }
    return true;
}

QByteArray childPath(const QByteArray &folder, const QByteArray &name)
{
    return folder + '/' + name;
}

// The names in a folder, "." and ".." left out; nullopt when it cannot be read.
std::optional<QList<QByteArray>> listFolder(const QByteArray &folder)
{
    DIR *dir = ::opendir(folder.constData());
    if (!dir)
        return std::nullopt;
    QList<QByteArray> names;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    ::closedir(dir);
    return names;
}

// `name` cut so that, with `tail` after it, it fits `budget` bytes of UTF-8,
// without splitting a character.
QString shortened(const QString &name, qsizetype budget)
{
    QString result = name;
    while (!result.isEmpty() && result.toUtf8().size() > budget) {
        result.chop(1);
        if (!result.isEmpty() && result.back().isHighSurrogate())
            result.chop(1);
    }
    return result;
}

// The name of the n-th Trash entry for `fileName` ("a.md", "a 2.md", …),
// shortened to fit when the original name is at the file system's limit.
QString entryName(const QString &fileName, int n)
{
    const QFileInfo parts(fileName);
    const bool hasSuffix = !parts.completeBaseName().isEmpty() && !parts.suffix().isEmpty();
    QString stem = hasSuffix ? parts.completeBaseName() : fileName;
    QString suffix = hasSuffix ? u'.' + parts.suffix() : QString();
    const QString number = n == 1 ? QString() : u' ' + QString::number(n);
    if (suffix.toUtf8().size() > 32)
        stem += std::exchange(suffix, QString());
    const qsizetype budget = maxEntryNameBytes - (number + suffix).toUtf8().size();
    if ((stem + number + suffix).toUtf8().size() > maxEntryNameBytes)
        stem = shortened(stem, budget);
    return stem + number + suffix;
}

// Creates `path` exclusively with `content`, checking every write.
bool writeNewFile(const QString &path, const QByteArray &content, QString *error, bool *taken)
{
    *taken = false;
    const QByteArray encoded = QFile::encodeName(path);
    const int fd = ::open(encoded.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        *taken = errno == EEXIST;
        *error = systemError();
        return false;
    }
    qsizetype done = 0;
    int failure = 0;
    while (done < content.size() && !failure) {
        const ssize_t n = ::write(fd, content.constData() + done, size_t(content.size() - done));
        if (n < 0 && errno != EINTR)
            failure = errno;
        else if (n > 0)
            done += n;
    }
    if (!failure && ::fsync(fd) != 0)
        failure = errno;
    if (::close(fd) != 0 && !failure)
        failure = errno;
    if (failure) {
        ::unlink(encoded.constData());
        *error = qt_error_string(failure);
        return false;
    }
    return true;
}

// Reserves a unique name in the Trash by creating its .trashinfo file
// exclusively; returns the name, or an empty string on failure.
QString reserveTrashName(const QString &trash, const QString &fileName, const QByteArray &originalPath,
                         QString *error)
{
    const QByteArray info = "[Trash Info]\nPath=" + originalPath.toPercentEncoding("/") + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(Qt::ISODate).left(19).toUtf8() + '\n';

    for (int n = 1; n < 10000; ++n) {
        const QString name = entryName(fileName, n);
        if (FileOps::entryExists(trash + u"/files/" + name))
            continue;
        bool taken = false;
        if (writeNewFile(trash + u"/info/" + name + u".trashinfo", info, error, &taken))
            return name;
        if (!taken)
            return {};
    }
    *error = QStringLiteral("No free name in the Trash for %1").arg(fileName);
    return {};
}

// Before copying anything: every folder whose entries would be removed must
// allow it (read-only mounts and folders refuse even root).
bool checkRemovable(const QByteArray &path, const struct stat &st, QString *error)
{
    if (!S_ISDIR(st.st_mode))
        return true;
    if (::access(path.constData(), W_OK | X_OK) != 0) {
        *error = QStringLiteral("Cannot remove the contents of %1: %2").arg(QFile::decodeName(path), systemError());
        return false;
    }
    const std::optional<QList<QByteArray>> names = listFolder(path);
    if (!names) {
        *error = QStringLiteral("Cannot read %1: %2").arg(QFile::decodeName(path), systemError());
        return false;
    }
    for (const QByteArray &name : *names) {
        struct stat child;
        const QByteArray childAt = childPath(path, name);
        if (::lstat(childAt.constData(), &child) == 0 && !checkRemovable(childAt, child, error))
            return false;
    }
    return true;
}

// Copies a file, a symbolic link, a named pipe or a whole folder tree to
// `to`, which must not exist. Other kinds (sockets, devices) are refused.
bool copyEntry(const QByteArray &from, const QByteArray &to, QString *error)
{
    struct stat st;
    if (::lstat(from.constData(), &st) != 0) {
        *error = systemError();
        return false;
    }
    if (S_ISREG(st.st_mode))
        return FileOps::copyRegularFile(from, to, error);
    if (S_ISLNK(st.st_mode)) {
        QByteArray target(qsizetype(st.st_size) + 1, '\0');
        const ssize_t n = ::readlink(from.constData(), target.data(), size_t(target.size()));
        if (n < 0 || ::symlink(target.left(n).constData(), to.constData()) != 0) {
            *error = systemError();
            return false;
        }
        return true;
    }
    if (S_ISFIFO(st.st_mode)) {
        // A pipe holds no data: make a new one rather than read it.
        if (::mkfifo(to.constData(), st.st_mode & 07777) != 0) {
            *error = systemError();
            return false;
        }
        return true;
    }
    if (!S_ISDIR(st.st_mode)) {
        *error = QStringLiteral("%1 is a socket or device, which cannot be copied to the Trash")
                     .arg(QFile::decodeName(from));
        return false;
    }

    if (::mkdir(to.constData(), 0700) != 0) {
        *error = systemError();
        return false;
    }
    const std::optional<QList<QByteArray>> names = listFolder(from);
    if (!names) {
        *error = systemError();
        return false;
    }
    for (const QByteArray &name : *names) {
        if (!copyEntry(childPath(from, name), childPath(to, name), error))
            return false;
    }
    const struct timespec times[2] = {FileOps::accessTime(st), FileOps::modificationTime(st)};
    ::chmod(to.constData(), st.st_mode & 07777);
    ::utimensat(AT_FDCWD, to.constData(), times, AT_SYMLINK_NOFOLLOW);
    return true;
}

// Removes a tree depth first, stopping at the first entry that will not go.
bool removeEntry(const QByteArray &path, QString *error)
{
    struct stat st;
    if (::lstat(path.constData(), &st) != 0) {
        if (errno == ENOENT)
            return true;
        *error = systemError();
        return false;
    }
    if (S_ISDIR(st.st_mode)) {
        const std::optional<QList<QByteArray>> names = listFolder(path);
        if (!names) {
            *error = systemError();
            return false;
        }
        for (const QByteArray &name : *names) {
            if (!removeEntry(childPath(path, name), error))
                return false;
        }
        if (::rmdir(path.constData()) != 0) {
            *error = QStringLiteral("Could not remove %1: %2").arg(QFile::decodeName(path), systemError());
            return false;
        }
        return true;
    }
    if (::unlink(path.constData()) != 0) {
        *error = QStringLiteral("Could not remove %1: %2").arg(QFile::decodeName(path), systemError());
        return false;
    }
    return true;
}

// Puts back into `original` every entry of `copy` that is missing there.
bool restoreMissing(const QByteArray &copy, const QByteArray &original)
{
    struct stat st;
    if (::lstat(original.constData(), &st) != 0) {
        QString ignored;
        return copyEntry(copy, original, &ignored);
    }
    if (!S_ISDIR(st.st_mode))
        return true;
    const std::optional<QList<QByteArray>> names = listFolder(copy);
    if (!names)
        return false;
    bool restored = true;
    for (const QByteArray &name : *names)
        restored = restoreMissing(childPath(copy, name), childPath(original, name)) && restored;
    return restored;
}

// The original lives on another mount than the Trash.
bool moveAcrossMounts(const QByteArray &original, const struct stat &st, const QByteArray &destination,
                      QString *error)
{
    const QByteArray parent = QFile::encodeName(QFileInfo(QFile::decodeName(original)).absolutePath());
    if (::access(parent.constData(), W_OK | X_OK) != 0) {
        *error = QStringLiteral("Cannot remove %1: %2").arg(QFile::decodeName(original), systemError());
        return false;
    }
    if (!checkRemovable(original, st, error))
        return false;

    QString ignored;
    if (!copyEntry(original, destination, error)) {
        removeEntry(destination, &ignored);
        return false;
    }
    if (removeEntry(original, error))
        return true;

    // Something would not go: put back what did, then take the copy out of
    // the Trash again. Should putting back fail, the copy stays where the
    // user can restore it from.
    if (restoreMissing(destination, original)) {
        removeEntry(destination, &ignored);
        *error += QStringLiteral("; nothing was moved to the Trash");
        return false;
    }
    *error += QStringLiteral("; the complete copy stays in the Trash");
    return false;
}

class FreedesktopTrash final : public Trash
{
public:
    bool trashItem(const QString &path, QString *error) override;
};

bool FreedesktopTrash::trashItem(const QString &path, QString *error)
{
    // Absolute without resolving links: trashing a link trashes the link.
    const QString original = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QByteArray originalBytes = QFile::encodeName(original);
    struct stat st;
    if (::lstat(originalBytes.constData(), &st) != 0) {
        *error = systemError();
        return false;
    }

    const QString trash = homeTrashPath();
    if (original == trash || original.startsWith(trash + u'/')) {
        *error = QStringLiteral("The item is already in the Trash");
        return false;
    }
    if (!makePrivateDirectory(trash + u"/files", error) || !makePrivateDirectory(trash + u"/info", error))
        return false;

    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString name = reserveTrashName(trash, QFileInfo(original).fileName(), originalBytes, error);
        if (name.isEmpty())
            return false;
        const QString infoPath = trash + u"/info/" + name + u".trashinfo";
        const QString destination = trash + u"/files/" + name;

        const int renamed = FileOps::renameNoReplace(original, destination, error);
        if (renamed == 0)
            return true;
        if (renamed == EXDEV) {
            if (moveAcrossMounts(originalBytes, st, QFile::encodeName(destination), error))
                return true;
            QFile::remove(infoPath);
            return false;
        }
        QFile::remove(infoPath);
        if (renamed != EEXIST) // else another item took the name meanwhile: take the next
            return false;
    }
    *error = QStringLiteral("No free name in the Trash for %1").arg(original);
    return false;
}

} // namespace

Trash &Trash::platform()
{
    static FreedesktopTrash trash;
    return trash;
}
