#include "FileSearch.h"

#include "AsciiText.h"
#include "FrontMatter.h"
#include "LibraryQueries.h"
#include "LibraryScan.h"
#include "UtcTime.h"

#include <QCollator>
#include <QDebug>
#include <QLocale>

#include <QFile>

#include <atomic>

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace FileSearch {

namespace {

struct Candidate
{
    qsizetype folder;
    qsizetype listed; // position in the folder's listing
    QString name;
    QByteArray encodedName;
};

struct Found
{
    Match match;
    bool pinned;
    qint64 time;
    qsizetype folder;
    qsizetype listed;
};

bool isAscii(const QByteArray &bytes)
{
    return QtPrivate::isAscii(QLatin1StringView(bytes));
}

// The header of an ASCII file, and where the body starts (in ASCII a
// character is a byte). The same rules as the front-matter parser, read
// straight from the bytes: the opening line, the character a CR LF opening
// skips, lines split at line feeds only, later keys winning; a header that
// never closes is no header.
struct Header
{
    PromptFrontMatter matter;
    qsizetype bodyStart;
};

QByteArrayView trimmed(QByteArrayView text)
{
    while (!text.isEmpty() && (text.front() == ' ' || text.front() == '\t'))
        text = text.sliced(1);
    while (!text.isEmpty() && (text.back() == ' ' || text.back() == '\t'))
        text.chop(1);
    return text;
}

Header asciiHeader(const QByteArray &bytes)
{
    qsizetype lineStart;
    if (bytes.startsWith("---\n"))
        lineStart = 4;
    else if (bytes.startsWith("---\r\n")) // one character, then the next is skipped
        lineStart = bytes.size() <= 5 ? 5 : QByteArrayView(bytes).sliced(5).startsWith("\r\n") ? 7 : 6;
    else
        return Header{{}, 0}; // no front matter: all of it is the body
    QByteArrayView title, tags, model, pinned;
    for (;;) {
        const qsizetype lineFeed = bytes.indexOf('\n', lineStart);
        const qsizetype lineEnd = lineFeed < 0 ? bytes.size() : lineFeed;
        const QByteArrayView line = QByteArrayView(bytes).sliced(lineStart, lineEnd - lineStart);
        if (trimmed(line) == "---") {
            Header header{{}, lineFeed < 0 ? bytes.size() : lineFeed + 1};
            header.matter.title = QString::fromLatin1(title);
            header.matter.tags = FrontMatter::parseList(QString::fromLatin1(tags));
            header.matter.model = QString::fromLatin1(model);
            header.matter.pinned = pinned.compare("true", Qt::CaseInsensitive) == 0;
            return header;
        }
        if (const qsizetype colon = line.indexOf(':'); colon >= 0) {
            const QByteArrayView key = trimmed(line.first(colon));
            const QByteArrayView value = trimmed(line.sliced(colon + 1));
            if (key == "title")
                title = value;
            else if (key == "tags")
                tags = value;
            else if (key == "model")
                model = value;
            else if (key == "pinned")
                pinned = value;
        }
        if (lineFeed < 0)
            return Header{{}, 0}; // never closed: all of it is the body
        lineStart = lineFeed + 1;
    }
}

QList<Match> scan(const QString &root, const LibraryQueries::QueryMatcher *matcher, qint64 keepBytes = 0);

} // namespace

QList<Match> search(const QString &root, const QString &query)
{
    const LibraryQueries::QueryMatcher matcher(query);
    if (matcher.isEmpty())
        return {};
    return scan(root, &matcher);
}

QList<Match> all(const QString &root, qint64 keepBytes)
{
    return scan(root, nullptr, keepBytes);
}

namespace {

// The prompts of the library at `root` that `matcher` accepts (all of them
// without one), in library order, with up to `keepBytes` of their files.
QList<Match> scan(const QString &root, const LibraryQueries::QueryMatcher *matcher, qint64 keepBytes)
{
    std::atomic<qint64> kept{0};
    const QByteArray needle = matcher ? matcher->needle().toUtf8() : QByteArray();
    const bool needleIsAscii = isAscii(needle);
    const bool inDefaultTitle = matcher && QStringLiteral("new prompt").contains(matcher->needle());

    // Projects as the library orders them, then their files as listed.
    std::optional<QStringList> projects = LibraryScan::listProjects(root);
    if (!projects)
        return {};
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(projects->begin(), projects->end(),
                     [&](const QString &a, const QString &b) { return collator.compare(a, b) < 0; });
    QList<std::optional<LibraryScan::FolderListing>> listings(projects->size());
    LibraryScan::parallelFor(projects->size(), 8, [&](qsizetype f) {
        listings[f] = LibraryScan::listFolder(root + u'/' + projects->at(f), false);
    });
    QList<Candidate> files;
    for (qsizetype f = 0; f < projects->size(); ++f) {
        if (!listings[f])
            continue;
        for (qsizetype i = 0; i < listings[f]->files.size(); ++i)
            files.append({f, i, listings[f]->files[i].name, QFile::encodeName(listings[f]->files[i].name)});
    }
    listings.clear();
    // Each folder opened once; its files are opened relative to it.
    QList<int> folderFds;
    for (const QString &project : std::as_const(*projects))
        folderFds.append(::open(QFile::encodeName(root + u'/' + project).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));

    QList<std::optional<Found>> found(files.size());
    QList<qint64> tooLarge(files.size(), -1);
    QStringList folders;
    for (const QString &project : std::as_const(*projects))
        folders.append(root + u'/' + project);
    LibraryScan::parallelFor(files.size(), 64, [&](qsizetype i) {
        const Candidate &file = files[i];
        const QString &folder = folders[file.folder];
        LibraryScan::ReadRequest request{folder, file.name, projects->at(file.folder), {}};
        bool tooBig = false;
        const int folderFd = folderFds[file.folder];
        // One buffer per thread: most files are looked at and let go.
        thread_local QByteArray buffer;
        const QByteArray *bytes = &buffer;
        if (folderFd < 0
            || !LibraryScan::readFileAt(folderFd, file.encodedName, &request.stamp.modifiedNs, &tooBig, &buffer)) {
            if (tooBig) {
                const std::optional<LibraryScan::FileStamp> stamp = LibraryScan::stampOf(folder + u'/' + file.name);
                tooLarge[i] = stamp ? stamp->size : 0;
            }
            return;
        }
        const auto keep = [&](const QString &id, const QString &displayTitle, bool pinned) {
            found[i] = Found{{folder, file.name, request.projectName, id, displayTitle, {}, -1}, pinned,
                             request.stamp.modifiedNs / 1000000, file.folder, file.listed};
            if (keepBytes > 0 && kept.fetch_add(bytes->size()) + bytes->size() <= keepBytes) {
                found[i]->match.bytes = QByteArray(bytes->constData(), bytes->size());
                found[i]->match.modifiedNs = request.stamp.modifiedNs;
            }
        };
        if (!matcher) {
            // Everything is kept: what the listing shows comes from the header.
            if (isAscii(*bytes)) {
                Prompt head;
                head.frontMatter = asciiHeader(*bytes).matter;
                keep(projects->at(file.folder) + u'/' + file.name, head.displayTitle(), head.frontMatter.pinned);
                return;
            }
            if (const std::optional<Prompt> prompt = LibraryScan::promptFromBytes(*bytes, request, false))
                keep(prompt->id, prompt->displayTitle(), prompt->frontMatter.pinned);
            return;
        }
        // Every field the search looks at is a stretch of the file (title,
        // tags, body), so ASCII text that does not hold the needle matches
        // only through the "New prompt" a blank title shows. Other text is
        // lower-cased by Unicode rules, so it is always parsed whole.
        thread_local QByteArray lowered;
        lowered.resize(bytes->size());
        char *to = lowered.data();
        if (AsciiText::lowerInto(bytes->constData(), to, bytes->size())) {
            if (!needleIsAscii)
                return;
            const auto holds = [&](qsizetype from) {
                return ::memmem(to + from, size_t(lowered.size() - from), needle.constData(), size_t(needle.size()))
                    != nullptr;
            };
            if (!inDefaultTitle && !holds(0))
                return;
            // The header alone decides the title and tags; the body is the rest.
            const Header header = asciiHeader(*bytes);
            Prompt head;
            head.frontMatter = header.matter;
            if (matcher->matches(head) || holds(header.bodyStart))
                keep(projects->at(file.folder) + u'/' + file.name, head.displayTitle(), head.frontMatter.pinned);
            return;
        }
        const std::optional<Prompt> prompt = LibraryScan::promptFromBytes(*bytes, request, false);
        if (prompt && matcher->matches(*prompt))
            keep(prompt->id, prompt->displayTitle(), prompt->frontMatter.pinned);
    });
    for (const int fd : std::as_const(folderFds)) {
        if (fd >= 0)
            ::close(fd);
    }
    const auto size = [](qint64 bytes) { return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeIecFormat); };
    for (qsizetype i = 0; i < files.size(); ++i) {
        if (tooLarge[i] >= 0)
            qWarning().noquote() << u"Vesk: skipped " + projects->at(files[i].folder) + u'/' + files[i].name + u": "
                    + size(tooLarge[i]) + u" is more than a prompt file may hold ("
                    + size(LibraryScan::maxPromptFileBytes) + u")";
    }

    // The library's order: pinned first, newest first, then load order.
    std::vector<Found *> matches;
    for (std::optional<Found> &f : found) {
        if (f)
            matches.push_back(&*f);
    }
    std::sort(matches.begin(), matches.end(), [](const Found *a, const Found *b) {
        if (a->pinned != b->pinned)
            return a->pinned;
        if (a->time != b->time)
            return a->time > b->time;
        return a->folder != b->folder ? a->folder < b->folder : a->listed < b->listed;
    });
    QList<Match> results;
    results.reserve(qsizetype(matches.size()));
    for (Found *f : matches)
        results.append(std::move(f->match));
    return results;
}

} // namespace

Reader::Reader(const QList<Match> &matches)
{
    for (const Match &match : matches) {
        if (!m_folders.contains(match.folder))
            m_folders.insert(match.folder,
                             ::open(QFile::encodeName(match.folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
}

Reader::~Reader()
{
    for (const int fd : std::as_const(m_folders)) {
        if (fd >= 0)
            ::close(fd);
    }
}

std::optional<Prompt> Reader::load(const Match &match, AsciiBody *asciiBody) const
{
    LibraryScan::ReadRequest request{match.folder, match.fileName, match.projectName, {}};
    std::optional<QByteArray> bytes;
    if (match.modifiedNs >= 0) {
        bytes = match.bytes;
        request.stamp.modifiedNs = match.modifiedNs;
    } else {
        const int folderFd = m_folders.value(match.folder, -1);
        if (folderFd < 0)
            return std::nullopt;
        bool tooLarge = false;
        bytes = LibraryScan::readFileAt(folderFd, QFile::encodeName(match.fileName), &request.stamp.modifiedNs,
                                        &tooLarge);
    }
    if (!bytes)
        return std::nullopt;
    if (asciiBody && isAscii(*bytes)) {
        Header header = asciiHeader(*bytes);
        Prompt head;
        head.id = match.id;
        head.projectName = match.projectName;
        head.fileURL = QUrl::fromLocalFile(match.folder + u'/' + match.fileName);
        head.frontMatter = std::move(header.matter);
        head.modifiedAt = UtcTime::fromMSecsSinceEpoch(request.stamp.modifiedNs / 1000000);
        *asciiBody = AsciiBody{std::move(*bytes), header.bodyStart};
        return head;
    }
    return LibraryScan::promptFromBytes(*bytes, request, false);
}

} // namespace FileSearch
