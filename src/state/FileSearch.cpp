#include "FileSearch.h"

#include "FileOps.h"
#include "LibraryQueries.h"
#include "LibraryScan.h"

#include <QCollator>
#include <QDebug>
#include <QLocale>

#include <string.h>

namespace FileSearch {

namespace {

struct Candidate
{
    qsizetype folder;
    qsizetype listed; // position in the folder's listing
    QString name;
};

struct Found
{
    Prompt prompt;
    qsizetype folder;
    qsizetype listed;
};

bool isAscii(const QByteArray &bytes)
{
    return QtPrivate::isAscii(QLatin1StringView(bytes));
}

// Whether a file's raw text could hold the needle. Every field the search
// looks at is a stretch of the file (title, tags, body), so for ASCII text a
// needle that is not in the lower-cased file is in none of them. The one
// text that is not in the file is the "New prompt" shown for a blank title.
// Other text is lower-cased by Unicode rules, so it is always parsed.
bool couldMatch(const QByteArray &bytes, const QByteArray &needle, bool needleIsAscii, bool inDefaultTitle)
{
    if (inDefaultTitle || !isAscii(bytes))
        return true;
    if (!needleIsAscii)
        return false;
    thread_local QByteArray lowered;
    lowered.resize(bytes.size());
    const char *from = bytes.constData();
    char *to = lowered.data();
    for (qsizetype i = 0; i < bytes.size(); ++i)
        to[i] = char(from[i] >= 'A' && from[i] <= 'Z' ? from[i] + 32 : from[i]);
    return ::memmem(to, size_t(lowered.size()), needle.constData(), size_t(needle.size())) != nullptr;
}

} // namespace

QList<Prompt> search(const QString &root, const QString &query)
{
    const LibraryQueries::QueryMatcher matcher(query);
    if (matcher.isEmpty())
        return {};
    const QByteArray needle = matcher.needle().toUtf8();
    const bool needleIsAscii = isAscii(needle);
    const bool inDefaultTitle = QStringLiteral("new prompt").contains(matcher.needle());

    // Projects as the library orders them, then their files as listed.
    std::optional<QStringList> projects = LibraryScan::listProjects(root);
    if (!projects)
        return {};
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(projects->begin(), projects->end(),
                     [&](const QString &a, const QString &b) { return collator.compare(a, b) < 0; });
    QList<Candidate> files;
    for (qsizetype f = 0; f < projects->size(); ++f) {
        const std::optional<LibraryScan::FolderListing> listing =
            LibraryScan::listFolder(root + u'/' + projects->at(f), false);
        if (!listing)
            continue;
        for (qsizetype i = 0; i < listing->files.size(); ++i)
            files.append({f, i, listing->files[i].name});
    }

    QList<std::optional<Found>> found(files.size());
    QList<qint64> tooLarge(files.size(), -1);
    LibraryScan::parallelFor(files.size(), 64, [&](qsizetype i) {
        const Candidate &file = files[i];
        const QString folder = root + u'/' + projects->at(file.folder);
        LibraryScan::ReadRequest request{folder, file.name, projects->at(file.folder), {}};
        FileOps::ReadFailure failure = FileOps::ReadFailure::None;
        const std::optional<QByteArray> bytes = FileOps::readRegularFile(
            folder + u'/' + file.name, LibraryScan::maxPromptFileBytes, &failure, &request.stamp.modifiedNs);
        if (!bytes) {
            if (failure == FileOps::ReadFailure::TooLarge) {
                const std::optional<LibraryScan::FileStamp> stamp = LibraryScan::stampOf(folder + u'/' + file.name);
                tooLarge[i] = stamp ? stamp->size : 0;
            }
            return;
        }
        if (!couldMatch(*bytes, needle, needleIsAscii, inDefaultTitle))
            return;
        std::optional<Prompt> prompt = LibraryScan::promptFromBytes(*bytes, request, false);
        if (prompt && matcher.matches(*prompt))
            found[i] = Found{std::move(*prompt), file.folder, file.listed};
    });
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
        if (a->prompt.frontMatter.pinned != b->prompt.frontMatter.pinned)
            return a->prompt.frontMatter.pinned;
        const qint64 aTime = a->prompt.modifiedAt.toMSecsSinceEpoch();
        const qint64 bTime = b->prompt.modifiedAt.toMSecsSinceEpoch();
        if (aTime != bTime)
            return aTime > bTime;
        return a->folder != b->folder ? a->folder < b->folder : a->listed < b->listed;
    });
    QList<Prompt> results;
    results.reserve(qsizetype(matches.size()));
    for (Found *f : matches)
        results.append(std::move(f->prompt));
    return results;
}

} // namespace FileSearch
