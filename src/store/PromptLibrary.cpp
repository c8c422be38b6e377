#include "PromptLibrary.h"

#include "FileOps.h"
#include "FrontMatter.h"
#include "VeskConst.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QLocale>
#include <QStringDecoder>

#include <sys/stat.h>

namespace {

// Far beyond any prompt a person writes, and small enough to read whole.
constexpr qint64 maxPromptFileBytes = qint64(64) << 20;
constexpr qint64 maxOrderFileBytes = qint64(16) << 20;

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

std::optional<Prompt> promptFromBytes(const QByteArray &bytes, const QString &path, const QString &fileName,
                                      const QString &projectName, const QDateTime &modified)
{
    std::optional<QString> text = decodeUtf8(bytes);
    if (!text)
        return std::nullopt;
    FrontMatter::ParseResult parsed = FrontMatter::parse(*text);

    Prompt prompt;
    prompt.id = projectName + u'/' + fileName;
    prompt.projectName = projectName;
    prompt.fileURL = QUrl::fromLocalFile(path);
    prompt.frontMatter = FrontMatter::fromMatter(parsed.matter);
    prompt.body = std::move(parsed.body);
    prompt.modifiedAt = modified.isValid() ? modified : QDateTime::currentDateTimeUtc();
    return prompt;
}

QDateTime modificationDate(const struct stat &st)
{
    const auto time = FileOps::modificationTime(st);
    return QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000, Qt::UTC);
}

QString sizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeIecFormat);
}

QString joinPath(const QString &folder, QStringView name)
{
    if (folder.endsWith(u'/'))
        return folder + name;
    return folder + u'/' + name;
}

} // namespace

PromptLibrary::PromptLibrary(const QUrl &rootURL, QObject *parent)
    : QObject(parent)
    , m_rootURL(rootURL)
{
    ensureRoot();
    removeStaleTemporaryFiles();
    reload();
}

void PromptLibrary::removeStaleTemporaryFiles()
{
    // A save killed between its write and its rename leaves a hidden
    // temporary file; those older than a day cannot belong to a live save.
    FileOps::removeStaleTemporaryFiles(rootPath());
    QDirIterator folders(rootPath(), QDir::Dirs | QDir::NoDotAndDotDot);
    while (folders.hasNext()) {
        folders.next();
        if (!folders.fileInfo().isSymLink())
            FileOps::removeStaleTemporaryFiles(folders.filePath());
    }
}

void PromptLibrary::ensureRoot()
{
    QDir().mkpath(rootPath());
    const QString inbox = joinPath(rootPath(), VeskConst::inboxProjectName);
    const QFileInfo inboxInfo(inbox);
    if (!inboxInfo.exists() && !inboxInfo.isSymLink())
        QDir().mkpath(inbox);
}

std::optional<Prompt> PromptLibrary::prompt(const QString &id) const
{
    for (const Prompt &p : m_prompts) {
        if (p.id == id)
            return p;
    }
    return std::nullopt;
}

std::optional<Project> PromptLibrary::project(const QString &name) const
{
    for (const Project &p : m_projects) {
        if (p.name == name)
            return p;
    }
    return std::nullopt;
}

QString PromptLibrary::orderFilePath(QStringView orderFileName) const
{
    return joinPath(rootPath(), orderFileName);
}

void PromptLibrary::reload()
{
    const QString root = rootPath();
    const QDir rootDir(root);
    if (!rootDir.exists() || !rootDir.isReadable()) {
        m_readFiles.clear();
        m_projects.clear();
        Q_EMIT projectsChanged();
        m_prompts.clear();
        Q_EMIT promptsChanged();
        Q_EMIT changed();
        return;
    }

    QFileInfoList entries = rootDir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System,
                                                  QDir::Unsorted);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(entries.begin(), entries.end(), [&](const QFileInfo &a, const QFileInfo &b) {
        return collator.compare(a.fileName(), b.fileName()) < 0;
    });

    QList<Project> projects;
    QList<Prompt> prompts;
    m_nextReadFiles.clear();
    for (const QFileInfo &entry : std::as_const(entries)) {
        // A symbolic link is not a folder of the library, even if it points at one.
        if (!entry.isDir() || entry.isSymLink())
            continue;
        const QString name = entry.fileName();
        QList<Prompt> loaded = loadPrompts(entry.filePath(), name);
        projects.append({name, QUrl::fromLocalFile(entry.filePath()), int(loaded.size())});
        prompts.append(std::move(loaded));
    }
    m_readFiles = std::exchange(m_nextReadFiles, {});

    QStringList sectionOrder = readOrderFile(orderFilePath(sectionOrderFileName));
    if (sectionOrder.isEmpty())
        sectionOrder = readOrderFile(orderFilePath(legacyProjectsOrderFileName));
    m_sectionOrder = std::move(sectionOrder);
    Q_EMIT sectionOrderChanged();

    m_pinnedOrder = readOrderFile(orderFilePath(pinnedOrderFileName));
    Q_EMIT pinnedOrderChanged();

    QHash<QString, QStringList> orderByProject;
    for (const Project &project : std::as_const(projects))
        orderByProject.insert(project.name, readOrderFile(joinPath(project.path(), promptOrderFileName)));
    m_promptOrderByProject = std::move(orderByProject);
    Q_EMIT promptOrderByProjectChanged();

    m_projects = sortByOrder(projects, [](const Project &p) { return p.name; }, m_sectionOrder);
    Q_EMIT projectsChanged();

    std::stable_sort(prompts.begin(), prompts.end(), [](const Prompt &a, const Prompt &b) {
        if (a.frontMatter.pinned != b.frontMatter.pinned)
            return a.frontMatter.pinned;
        return a.modifiedAt > b.modifiedAt;
    });
    m_prompts = std::move(prompts);
    Q_EMIT promptsChanged();
    Q_EMIT changed();
}

QList<Prompt> PromptLibrary::loadPrompts(const QString &folder, const QString &projectName)
{
    // A file whose times are this close to when it was read may have changed
    // again within the same clock tick (stat gives whole seconds here, and
    // FAT counts in 2 s steps).
    constexpr qint64 settleSeconds = 3;
    QList<Prompt> prompts;
    // Unsorted: the file system's own listing order breaks ties between equal dates.
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
    while (it.hasNext()) {
        it.next();
        if (!VeskConst::isPromptFileName(it.fileName()))
            continue;
        const QString path = it.filePath();
        struct stat st;
        // Only regular files (or links to them) are prompts: a FIFO would
        // block the read and a device never ends.
        if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
            continue;
        const auto known = m_readFiles.constFind(path);
        const bool unchanged = known != m_readFiles.constEnd() && known->size == st.st_size
            && known->modified == st.st_mtime && known->statusChanged == st.st_ctime
            && known->inode == quint64(st.st_ino) && known->readAt - st.st_mtime > settleSeconds
            && known->readAt - st.st_ctime > settleSeconds;
        if (unchanged) {
            if (known->prompt)
                prompts.append(*known->prompt);
            m_nextReadFiles.insert(path, *known);
            continue;
        }
        ReadFile read{st.st_size, st.st_mtime, st.st_ctime, quint64(st.st_ino), QDateTime::currentSecsSinceEpoch(),
                      std::nullopt, false};
        FileOps::ReadFailure failure = FileOps::ReadFailure::None;
        const std::optional<QByteArray> bytes = FileOps::readRegularFile(path, maxPromptFileBytes, &failure);
        if (bytes) {
            read.prompt = promptFromBytes(*bytes, path, it.fileName(), projectName, modificationDate(st));
            if (read.prompt)
                prompts.append(*read.prompt);
        } else if (failure == FileOps::ReadFailure::TooLarge) {
            read.tooLarge = true;
            // Once per file, not at every reload while it stays that large.
            if (known == m_readFiles.constEnd() || !known->tooLarge)
                qWarning().noquote() << u"Vesk: skipped " + projectName + u'/' + it.fileName() + u": "
                        + sizeText(st.st_size) + u" is more than a prompt file may hold ("
                        + sizeText(maxPromptFileBytes) + u")";
        }
        m_nextReadFiles.insert(path, std::move(read));
    }
    return prompts;
}

void PromptLibrary::setPromptOrder(const QString &projectName, const QStringList &order)
{
    const std::optional<Project> target = project(projectName);
    if (!target)
        return;
    writeOrderFile(joinPath(target->path(), promptOrderFileName), order);
    reload();
}

QStringList PromptLibrary::readOrderFile(const QString &path)
{
    const std::optional<QByteArray> bytes = FileOps::readRegularFile(path, maxOrderFileBytes);
    const std::optional<QString> text = bytes ? decodeUtf8(*bytes) : std::nullopt;
    QStringList entries;
    if (!text)
        return entries;
    // Lines end at a line feed that is not part of a CR LF pair: such a pair is
    // one character, so a CR LF file reads as one entry that matches nothing.
    qsizetype start = 0;
    const qsizetype size = text->size();
    for (qsizetype i = 0; i <= size; ++i) {
        const bool lineEnd = i == size || (text->at(i) == u'\n' && (i == 0 || text->at(i - 1) != u'\r'));
        if (!lineEnd)
            continue;
        const QStringView entry = trimSpacesAndTabs(QStringView(*text).sliced(start, i - start));
        if (!entry.isEmpty())
            entries.append(entry.toString());
        start = i + 1;
    }
    return entries;
}

void PromptLibrary::writeOrderFile(const QString &path, const QStringList &lines)
{
    // A repeated entry stops every later load, so the writer never makes one:
    // after trimming, the first of equal entries stays, and an entry holding
    // a line break (it would read back as other entries) is left out.
    QString text;
    QSet<QStringView> written;
    for (const QString &line : lines) {
        const QStringView entry = trimSpacesAndTabs(line);
        if (entry.isEmpty() || entry.contains(u'\n') || entry.contains(u'\r') || written.contains(entry))
            continue;
        written.insert(entry);
        text += entry + u'\n';
    }
    if (text.isEmpty())
        text = QStringLiteral("\n");
    QString ignored;
    FileOps::writeTextAtomically(path, text, &ignored);
}

void PromptLibrary::failOnDuplicateOrderKey(const QString &key)
{
    qFatal("Duplicate values for key: '%s'", qUtf8Printable(key));
}
