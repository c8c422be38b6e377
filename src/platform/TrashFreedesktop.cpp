// The freedesktop.org Trash ($XDG_DATA_HOME/Trash), as file managers show it.
//
// Everything goes to the home Trash, also from other mounts: a per-volume
// ".Trash-<uid>" folder is not shown by every desktop and would leave folders
// behind at the volume's root. Across mounts the item is copied, then the
// original removed, so a failure never loses data.

#include "Trash.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace Trash {

namespace {

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
        *error = QStringLiteral("Could not create %1: %2").arg(path, qt_error_string(errno));
        return false;
    }
    return true;
}

QString systemError()
{
    return qt_error_string(errno);
}

bool lstatPath(const QString &path, struct stat *st)
{
    return ::lstat(QFile::encodeName(path).constData(), st) == 0;
}

// Reserves a unique name in the Trash by creating its .trashinfo file
// exclusively; returns the name, or an empty string on failure.
QString reserveTrashName(const QString &trash, const QString &fileName, const QString &originalPath,
                         QString *error)
{
    const QFileInfo parts(fileName);
    const QString stem = parts.completeBaseName().isEmpty() ? fileName : parts.completeBaseName();
    const QString suffix = parts.completeBaseName().isEmpty() || parts.suffix().isEmpty()
        ? QString() : u'.' + parts.suffix();

    const QByteArray info = "[Trash Info]\nPath="
        + QUrl::toPercentEncoding(originalPath, "/")
        + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(Qt::ISODate).left(19).toUtf8() + '\n';

    for (int n = 1; n < 10000; ++n) {
        const QString name = n == 1 ? fileName : stem + u' ' + QString::number(n) + suffix;
        struct stat st;
        if (lstatPath(trash + u"/files/" + name, &st))
            continue;
        QFile infoFile(trash + u"/info/" + name + u".trashinfo");
        if (!infoFile.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            if (infoFile.exists())
                continue;
            *error = infoFile.errorString();
            return {};
        }
        if (infoFile.write(info) != info.size() || !infoFile.flush()) {
            *error = infoFile.errorString();
            infoFile.close();
            infoFile.remove();
            return {};
        }
        return name;
    }
    *error = QStringLiteral("No free name in the Trash for %1").arg(fileName);
    return {};
}

bool copyFileKeepingTimes(const QString &from, const QString &to, QString *error)
{
    QFile source(from);
    if (!source.copy(to)) {
        *error = source.errorString();
        return false;
    }
    QFile copy(to);
    if (copy.open(QIODevice::ReadWrite))
        copy.setFileTime(QFileInfo(from).lastModified(), QFileDevice::FileModificationTime);
    return true;
}

// Copies a file, a symbolic link or a whole folder tree.
bool copyEntry(const QString &from, const QString &to, QString *error)
{
    struct stat st;
    if (!lstatPath(from, &st)) {
        *error = systemError();
        return false;
    }
    if (S_ISLNK(st.st_mode)) {
        QByteArray target(qsizetype(st.st_size) + 1, '\0');
        const ssize_t n = ::readlink(QFile::encodeName(from).constData(), target.data(), target.size());
        if (n < 0 || ::symlink(target.left(n).constData(), QFile::encodeName(to).constData()) != 0) {
            *error = systemError();
            return false;
        }
        return true;
    }
    if (!S_ISDIR(st.st_mode))
        return copyFileKeepingTimes(from, to, error);

    if (::mkdir(QFile::encodeName(to).constData(), st.st_mode & 07777) != 0) {
        *error = systemError();
        return false;
    }
    const QDir dir(from);
    const QStringList children = dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                               | QDir::NoDotAndDotDot);
    for (const QString &child : children) {
        if (!copyEntry(from + u'/' + child, to + u'/' + child, error))
            return false;
    }
    return true;
}

bool removeEntry(const QString &path)
{
    struct stat st;
    if (!lstatPath(path, &st))
        return false;
    if (S_ISDIR(st.st_mode))
        return QDir(path).removeRecursively();
    return QFile::remove(path);
}

} // namespace

bool moveToTrash(const QString &path, QString *error)
{
    // Absolute without resolving links: trashing a link trashes the link.
    const QString original = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    struct stat st;
    if (!lstatPath(original, &st)) {
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

    const QString name = reserveTrashName(trash, QFileInfo(original).fileName(), original, error);
    if (name.isEmpty())
        return false;
    const QString infoPath = trash + u"/info/" + name + u".trashinfo";
    const QString destination = trash + u"/files/" + name;

    if (std::rename(QFile::encodeName(original).constData(), QFile::encodeName(destination).constData()) == 0)
        return true;
    if (errno != EXDEV) {
        *error = systemError();
        QFile::remove(infoPath);
        return false;
    }

    // Another mount: copy everything first; only a complete copy lets the
    // original go.
    if (!copyEntry(original, destination, error)) {
        removeEntry(destination);
        QFile::remove(infoPath);
        return false;
    }
    if (!removeEntry(original)) {
        *error = QStringLiteral("Could not remove %1 after copying it to the Trash").arg(original);
        // A file that could not be removed is whole: undo the copy. A folder
        // may be partly gone, so the Trash keeps the full copy.
        if (!S_ISDIR(st.st_mode)) {
            removeEntry(destination);
            QFile::remove(infoPath);
        }
        return false;
    }
    return true;
}

} // namespace Trash
