#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Small file-system primitives that report the system's own error text.
// Every write either completes or leaves the target as it was.
namespace FileOps {

// Temporary files of an atomic write are hidden and named with this prefix,
// so no listing shows them and a later start can clear those a kill left.
inline constexpr QStringView temporaryPrefix = u".vesk-tmp-";

// Writes `bytes` to a hidden temporary file beside `path`, checks every write,
// syncs it, then renames it over `path` (through a final symbolic link to its
// target). On failure the target is untouched and no temporary file is left.
bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *error);
bool writeTextAtomically(const QString &path, const QString &text, QString *error);

// Why a regular file could not be read.
enum class ReadFailure { None, Unreadable, NotRegular, TooLarge };

// Reads a regular file (or one a symbolic link points at) of at most
// `maxBytes`. FIFOs, devices and folders are refused without blocking.
// `modifiedNs`, when given, receives the file's modification time.
std::optional<QByteArray> readRegularFile(const QString &path, qint64 maxBytes, ReadFailure *failure = nullptr,
                                          qint64 *modifiedNs = nullptr);

// True when anything is at `path`, a dangling symbolic link included.
bool entryExists(const QString &path);

bool makeDirectory(const QString &path, QString *error);

// Renames without ever replacing what is at `to`. Returns 0, or the errno:
// EEXIST when `to` is taken (`error` is then left alone).
int renameNoReplace(const QString &from, const QString &to, QString *error);

// Moves a file like renameNoReplace, and also onto another file system: the
// file is copied whole (times and mode kept) before the original goes.
int moveFileNoReplace(const QString &from, const QString &to, QString *error);

// Copies a regular file to `to`, which must not exist, checking every write
// and keeping the mode and modification time. On failure nothing is left at `to`.
bool copyRegularFile(const QString &from, const QString &to, QString *error);
// The same on paths as the file system's own bytes (names need not be UTF-8).
bool copyRegularFile(const QByteArray &from, const QByteArray &to, QString *error);

// Removes the app's temporary files in `folder` that are older than a day.
void removeStaleTemporaryFiles(const QString &folder);

QString systemErrorText(int errorNumber);

// The times of a stat record (st_mtim on Linux, st_mtimespec on macOS).
template<typename Stat>
auto modificationTime(const Stat &st)
{
    if constexpr (requires { st.st_mtim; })
        return st.st_mtim;
    else
        return st.st_mtimespec;
}
template<typename Stat>
auto statusChangeTime(const Stat &st)
{
    if constexpr (requires { st.st_ctim; })
        return st.st_ctim;
    else
        return st.st_ctimespec;
}
template<typename Stat>
auto accessTime(const Stat &st)
{
    if constexpr (requires { st.st_atim; })
        return st.st_atim;
    else
        return st.st_atimespec;
}

} // namespace FileOps
