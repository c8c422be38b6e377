#include "LibraryScan.h"

#include "FileOps.h"
#include "FrontMatter.h"
#include "UtcTime.h"
#include "VeskConst.h"

#include <QFile>
#include <QHash>
#include <QStringDecoder>
#include <QUrl>

#include <atomic>
#include <thread>
#include <vector>

#include <cerrno>
#include <dirent.h>
#include <unistd.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace LibraryScan {

namespace {

FileStamp stampFrom(const struct stat &st, bool isSymLink)
{
    const auto modified = FileOps::modificationTime(st);
    const auto changed = FileOps::statusChangeTime(st);
    return {qint64(st.st_size), qint64(modified.tv_sec) * 1000000000 + modified.tv_nsec,
            qint64(changed.tv_sec) * 1000000000 + changed.tv_nsec, quint64(st.st_ino), isSymLink};
}

// A name as the file system stores it, when it survives the trip through
// QString (names that are not UTF-8 could not be opened by path again).
std::optional<QString> decodedName(const char *bytes)
{
    QString name = QFile::decodeName(bytes);
    if (QFile::encodeName(name) != bytes)
        return std::nullopt;
    return name;
}

class Directory
{
public:
    explicit Directory(const QString &path) : m_dir(::opendir(QFile::encodeName(path).constData())) {}
    ~Directory()
    {
        if (m_dir)
            ::closedir(m_dir);
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;
    bool isOpen() const { return m_dir != nullptr; }
    int fd() const { return ::dirfd(m_dir); }
    const dirent *next() { return ::readdir(m_dir); }

private:
    DIR *m_dir;
};

} // namespace

std::optional<QString> decodeUtf8(const QByteArray &bytes)
{
    // A byte-order mark is kept: such a file has no front matter.
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<FolderListing> listFolder(const QString &folder, bool stat)
{
    Directory dir(folder);
    if (!dir.isOpen())
        return std::nullopt;
    FolderListing listing;
    while (const dirent *entry = dir.next()) {
        const char *bytes = entry->d_name;
        if (bytes[0] == '.') {
            if (stat && std::strcmp(bytes, ".vesk-order") == 0) {
                struct stat st;
                if (::fstatat(dir.fd(), bytes, &st, 0) == 0 && S_ISREG(st.st_mode))
                    listing.orderFile = stampFrom(st, false);
            }
            continue;
        }
        const std::optional<QString> name = decodedName(bytes);
        if (!name || !VeskConst::isPromptFileName(*name))
            continue;
        if (!stat) {
            listing.files.append({*name, {}});
            continue;
        }
        // One stat, through links: only regular files are prompts (a FIFO
        // would block a read, a device never ends).
        struct stat st;
        if (::fstatat(dir.fd(), bytes, &st, 0) != 0 || !S_ISREG(st.st_mode))
            continue;
        bool isLink = entry->d_type == DT_LNK;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat own;
            isLink = ::fstatat(dir.fd(), bytes, &own, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(own.st_mode);
        }
        listing.files.append({*name, stampFrom(st, isLink)});
    }
    return listing;
}

std::optional<FileStamp> stampOf(const QString &path)
{
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    struct stat own;
    const bool isLink = ::lstat(QFile::encodeName(path).constData(), &own) == 0 && S_ISLNK(own.st_mode);
    return stampFrom(st, isLink);
}

std::optional<QStringList> listProjects(const QString &root)
{
    Directory dir(root);
    if (!dir.isOpen())
        return std::nullopt;
    QStringList projects;
    while (const dirent *entry = dir.next()) {
        if (entry->d_name[0] == '.')
            continue;
        // A symbolic link is not a folder of the library, even if it points at one.
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st;
            isFolder = ::fstatat(dir.fd(), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        if (!isFolder)
            continue;
        if (const std::optional<QString> name = decodedName(entry->d_name))
            projects.append(*name);
    }
    return projects;
}

void parallelFor(qsizetype count, qsizetype minimumPerThread, const std::function<void(qsizetype)> &work)
{
    const qsizetype cores = qMax<qsizetype>(1, std::thread::hardware_concurrency());
    const qsizetype threads = qBound<qsizetype>(1, count / qMax<qsizetype>(1, minimumPerThread), cores);
    std::atomic<qsizetype> next{0};
    auto run = [&] {
        for (qsizetype i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    for (qsizetype t = 1; t < threads; ++t)
        helpers.emplace_back(run);
    run();
    for (std::thread &helper : helpers)
        helper.join();
}

std::optional<Prompt> promptFromBytes(const QByteArray &bytes, const ReadRequest &request, bool searchText)
{
    std::optional<QString> text = decodeUtf8(bytes);
    if (!text)
        return std::nullopt;
    FrontMatter::ParseResult parsed = FrontMatter::parse(std::move(*text));
    Prompt prompt;
    prompt.id = request.projectName + u'/' + request.fileName;
    prompt.projectName = request.projectName;
    prompt.fileURL = QUrl::fromLocalFile(request.folder + u'/' + request.fileName);
    prompt.frontMatter = FrontMatter::fromMatter(parsed.matter);
    prompt.body = std::move(parsed.body);
    prompt.modifiedAt = UtcTime::fromMSecsSinceEpoch(request.stamp.modifiedNs / 1000000);
    if (searchText) {
        // In ASCII text a character is a byte, so the body's bytes are the
        // file's last body.size() bytes.
        if (QtPrivate::isAscii(QLatin1StringView(bytes)))
            prompt.searchText = Prompt::makeSearchText(prompt.displayTitle(), QByteArrayView(bytes).last(prompt.body.size()),
                                                       prompt.frontMatter.tags);
        else
            prompt.searchText = Prompt::makeSearchText(prompt.displayTitle(), prompt.body, prompt.frontMatter.tags);
    }
    return prompt;
}

namespace {

// Reads a file the folder walk has just stat'ed: opened relative to its
// folder (no path to resolve again), read in one go sized from that stat.
// Non-blocking and bounded, so a file that became a pipe or a device since
// the stat neither blocks nor runs on.
// Fills `bytes` (reusing what it holds); false when the file cannot be read.
bool readOpened(int fd, qint64 expectedSize, bool *tooLarge, QByteArray *bytes)
{
    if (expectedSize > maxPromptFileBytes) {
        *tooLarge = true;
        return false;
    }
    bytes->resize(qMax<qint64>(expectedSize, 0) + 1);
    qsizetype filled = 0;
    for (;;) {
        if (filled == bytes->size()) {
            if (bytes->size() > maxPromptFileBytes) {
                *tooLarge = true;
                return false;
            }
            bytes->resize(bytes->size() + 4096); // it grew since the stat
        }
        const ssize_t n = ::read(fd, bytes->data() + filled, size_t(bytes->size() - filled));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            break;
        filled += n;
        // A short read that ends where the stat said the file ends is its
        // end: one system call fewer per file than reading on to zero.
        if (filled == expectedSize && filled < bytes->size())
            break;
    }
    bytes->truncate(filled);
    return true;
}

std::optional<QByteArray> readOpened(int fd, qint64 expectedSize, bool *tooLarge)
{
    QByteArray bytes;
    if (!readOpened(fd, expectedSize, tooLarge, &bytes))
        return std::nullopt;
    return bytes;
}

std::optional<QByteArray> readListedFile(int folderFd, const QString &name, qint64 expectedSize, bool *tooLarge)
{
    if (expectedSize > maxPromptFileBytes) {
        *tooLarge = true;
        return std::nullopt;
    }
    const int fd = ::openat(folderFd, QFile::encodeName(name).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    std::optional<QByteArray> bytes = readOpened(fd, expectedSize, tooLarge);
    ::close(fd);
    return bytes;
}

} // namespace

bool readFileAt(int folderFd, const QByteArray &name, qint64 *modifiedNs, bool *tooLarge, QByteArray *into)
{
    const int fd = ::openat(folderFd, name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st;
    bool read = false;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) {
        const auto modified = FileOps::modificationTime(st);
        *modifiedNs = qint64(modified.tv_sec) * 1000000000 + modified.tv_nsec;
        read = readOpened(fd, st.st_size, tooLarge, into);
    }
    ::close(fd);
    return read;
}

std::optional<QByteArray> readFileAt(int folderFd, const QByteArray &name, qint64 *modifiedNs, bool *tooLarge)
{
    QByteArray bytes;
    if (!readFileAt(folderFd, name, modifiedNs, tooLarge, &bytes))
        return std::nullopt;
    return bytes;
}

QList<ReadResult> readPrompts(const QList<ReadRequest> &requests, bool searchTexts)
{
    // Each folder opened once, its files opened relative to it.
    QHash<QString, int> folderFds;
    for (const ReadRequest &request : requests) {
        if (!folderFds.contains(request.folder))
            folderFds.insert(request.folder, ::open(QFile::encodeName(request.folder).constData(),
                                                    O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    QList<ReadResult> results(requests.size());
    parallelFor(requests.size(), 32, [&](qsizetype i) {
        const ReadRequest &request = requests[i];
        ReadResult &result = results[i];
        result.size = request.stamp.size;
        const int folderFd = folderFds.value(request.folder, -1);
        if (folderFd < 0)
            return;
        const std::optional<QByteArray> bytes =
            readListedFile(folderFd, request.fileName, request.stamp.size, &result.tooLarge);
        if (bytes)
            result.prompt = promptFromBytes(*bytes, request, searchTexts);
    });
    for (const int fd : std::as_const(folderFds)) {
        if (fd >= 0)
            ::close(fd);
    }
    return results;
}

} // namespace LibraryScan
