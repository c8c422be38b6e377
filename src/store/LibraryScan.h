#pragma once

#include "Prompt.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// The reading side of the library: listing folders and reading prompt files,
// spread over all cores. Pure file-system work; no published state.
namespace LibraryScan {

// What a stat says about a file, enough to tell whether it changed.
struct FileStamp
{
    qint64 size = -1;
    qint64 modifiedNs = 0;
    qint64 statusChangedNs = 0;
    quint64 inode = 0;
    bool isSymLink = false; // its target may change without a notification here

    bool sameFile(const FileStamp &other) const
    {
        return size == other.size && modifiedNs == other.modifiedNs && statusChangedNs == other.statusChangedNs
            && inode == other.inode;
    }
};

// One prompt file found in a folder listing, stat'ed through links.
struct ListedFile
{
    QString name;
    FileStamp stamp;
};

struct FolderListing
{
    QList<ListedFile> files;     // regular prompt files, in the file system's order
    std::optional<FileStamp> orderFile; // the folder's ".vesk-order", when it is a regular file
};

// The prompt files of a folder, each stat'ed once; nullopt when the folder
// cannot be listed. With `stat` false only the names are gathered.
std::optional<FolderListing> listFolder(const QString &folder, bool stat = true);

// The stamp of one file (through links); nullopt when it is not a regular file.
std::optional<FileStamp> stampOf(const QString &path);

// Sub-folders of the root that are projects: not hidden, not links.
std::optional<QStringList> listProjects(const QString &root);

// A file to read and the project it belongs to.
struct ReadRequest
{
    QString folder;
    QString fileName;
    QString projectName;
    FileStamp stamp;
};

struct ReadResult
{
    std::optional<Prompt> prompt; // none: unreadable, not UTF-8, or too large
    bool tooLarge = false;
    qint64 size = 0;
};

inline constexpr qint64 maxPromptFileBytes = qint64(64) << 20;
inline constexpr qint64 maxOrderFileBytes = qint64(16) << 20;

// Reads and parses the files, several at a time; results in request order.
// With `searchTexts`, each prompt's search text is made as well.
QList<ReadResult> readPrompts(const QList<ReadRequest> &requests, bool searchTexts = true);

// Reads a regular file of at most maxPromptFileBytes named relative to an
// open folder, without blocking on a pipe; gives its modification time.
std::optional<QByteArray> readFileAt(int folderFd, const QByteArray &name, qint64 *modifiedNs, bool *tooLarge);
// The same into `into`, reusing the memory it holds: for a reader that
// looks at one file after another and keeps none.
bool readFileAt(int folderFd, const QByteArray &name, qint64 *modifiedNs, bool *tooLarge, QByteArray *into);

// One prompt from a file's bytes; nullopt when they are not UTF-8.
std::optional<Prompt> promptFromBytes(const QByteArray &bytes, const ReadRequest &request, bool searchText);

// Runs work(i) for every i below count on all cores (inline when few).
void parallelFor(qsizetype count, qsizetype minimumPerThread, const std::function<void(qsizetype)> &work);

// UTF-8 text as a QString; nullopt when it is not valid UTF-8.
std::optional<QString> decodeUtf8(const QByteArray &bytes);

} // namespace LibraryScan
