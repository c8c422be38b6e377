#include "FileOps.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

namespace FileOps {

bool writeTextAtomically(const QString &path, const QString &text, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        *error = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}

bool entryExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool makeDirectory(const QString &path, QString *error)
{
    if (::mkdir(QFile::encodeName(path).constData(), 0777) == 0)
        return true;
    *error = qt_error_string(errno);
    return false;
}

bool renameEntry(const QString &from, const QString &to, QString *error)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return true;
    *error = qt_error_string(errno);
    return false;
}

} // namespace FileOps
