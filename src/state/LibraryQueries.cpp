#include "LibraryQueries.h"

#include "LibraryScan.h"
#include "PromptLibrary.h"
#include "VeskConst.h"

#include <optional>

#include <string.h>

namespace LibraryQueries {

bool isSearchQuery(const QString &query)
{
    return !query.trimmed().isEmpty();
}

namespace {

char16_t asciiLower(char16_t c)
{
    return (c >= u'A' && c <= u'Z') ? char16_t(c + 32) : c;
}

// Case-insensitive search of a lower-cased ASCII needle in ASCII text
// (Boyer-Moore-Horspool). For ASCII, lower-casing is the whole of it.
class AsciiNeedle
{
public:
    explicit AsciiNeedle(QStringView needle) : m_needle(needle)
    {
        std::fill(std::begin(m_skip), std::end(m_skip), needle.size());
        for (qsizetype j = 0; j + 1 < needle.size(); ++j)
            m_skip[needle[j].unicode() & 0x7f] = needle.size() - 1 - j;
    }

    bool foundIn(QStringView text) const
    {
        const qsizetype m = m_needle.size();
        const char16_t *hay = reinterpret_cast<const char16_t *>(text.utf16());
        const char16_t *pattern = reinterpret_cast<const char16_t *>(m_needle.utf16());
        for (qsizetype i = m - 1; i < text.size();) {
            const char16_t last = asciiLower(hay[i]);
            if (last == pattern[m - 1]) {
                qsizetype j = m - 2;
                while (j >= 0 && asciiLower(hay[i - (m - 1 - j)]) == pattern[j])
                    --j;
                if (j < 0)
                    return true;
            }
            i += m_skip[last & 0x7f];
        }
        return false;
    }

private:
    QStringView m_needle;
    qsizetype m_skip[128];
};

// Whether `text`, lower-cased, contains `needle` (already lower-cased). ASCII
// text, the common case, is searched in place without a lower-cased copy.
bool containsLowercased(const QString &text, const QString &needle, const AsciiNeedle *asciiNeedle)
{
    if (QtPrivate::isAscii(text))
        return asciiNeedle && asciiNeedle->foundIn(text);
    return text.toLower().contains(needle);
}

} // namespace

struct QueryMatcher::Ascii : AsciiNeedle
{
    using AsciiNeedle::AsciiNeedle;
};

QueryMatcher::QueryMatcher(const QString &query) : m_needle(query.trimmed().toLower())
{
    // A non-ASCII needle cannot occur in lower-cased ASCII text.
    if (!m_needle.isEmpty() && QtPrivate::isAscii(m_needle))
        m_ascii = std::make_unique<Ascii>(m_needle);
}

QueryMatcher::~QueryMatcher() = default;

bool QueryMatcher::matches(const Prompt &prompt) const
{
    // Title, then body, then each tag: the first that holds the query decides.
    if (m_needle.isEmpty())
        return false;
    if (containsLowercased(prompt.displayTitle(), m_needle, m_ascii.get())
        || containsLowercased(prompt.body, m_needle, m_ascii.get()))
        return true;
    for (const QString &tag : prompt.frontMatter.tags) {
        if (containsLowercased(tag, m_needle, m_ascii.get()))
            return true;
    }
    return false;
}

QList<Prompt> searchResults(const QList<Prompt> &prompts, const QString &query)
{
    const QueryMatcher matcher(query);
    QList<Prompt> results;
    for (const Prompt &prompt : prompts) {
        if (matcher.matches(prompt))
            results.append(prompt);
    }
    return results;
}

QList<qsizetype> searchIndices(const QList<Prompt> &prompts, const QString &query, const QList<qsizetype> *within)
{
    const QueryMatcher matcher(query);
    if (matcher.isEmpty())
        return {};
    // Lower-cased UTF-8 holds a lower-cased text's substrings exactly where
    // its UTF-16 does; a needle holding the fields' separator, or half of a
    // surrogate pair, is searched the plain way.
    const QByteArray bytes = matcher.needle().toUtf8();
    const bool prepared = matcher.needle().isValidUtf16() && !bytes.contains('\0');
    const auto matches = [&](const Prompt &prompt) {
        if (!prepared || prompt.searchText.isEmpty())
            return matcher.matches(prompt);
        return ::memmem(prompt.searchText.constData(), size_t(prompt.searchText.size()), bytes.constData(),
                        size_t(bytes.size())) != nullptr;
    };

    // In chunks, on all cores; the chunks' results are joined in order.
    const qsizetype count = within ? within->size() : prompts.size();
    constexpr qsizetype chunkSize = 1024;
    const qsizetype chunks = (count + chunkSize - 1) / chunkSize;
    QList<QList<qsizetype>> found(chunks);
    LibraryScan::parallelFor(chunks, 2, [&](qsizetype chunk) {
        const qsizetype end = qMin(count, (chunk + 1) * chunkSize);
        for (qsizetype i = chunk * chunkSize; i < end; ++i) {
            const qsizetype index = within ? within->at(i) : i;
            if (index < prompts.size() && matches(prompts[index]))
                found[chunk].append(index);
        }
    });
    QList<qsizetype> results;
    for (const QList<qsizetype> &part : std::as_const(found))
        results.append(part);
    return results;
}

QList<Prompt> pinnedPrompts(const PromptLibrary &library)
{
    QList<Prompt> pinned;
    for (const Prompt &prompt : library.prompts()) {
        if (prompt.frontMatter.pinned)
            pinned.append(prompt);
    }
    return PromptLibrary::sortByOrder(pinned, [](const Prompt &p) { return p.id; }, library.pinnedOrder());
}

namespace {

// A project's manual order is keyed by bare file names.
QList<Prompt> inProjectOrder(const PromptLibrary &library, const QString &projectName, const QList<Prompt> &prompts)
{
    return PromptLibrary::sortByOrder(prompts, [](const Prompt &p) { return p.fileName(); },
                                      library.promptOrderByProject().value(projectName));
}

} // namespace

QList<Prompt> promptsInProject(const PromptLibrary &library, const QString &projectName)
{
    QList<Prompt> inProject;
    for (const Prompt &prompt : library.prompts()) {
        if (prompt.projectName == projectName && !prompt.frontMatter.pinned)
            inProject.append(prompt);
    }
    return inProjectOrder(library, projectName, inProject);
}

QHash<QString, QList<Prompt>> promptsByProject(const PromptLibrary &library)
{
    QHash<QString, QList<Prompt>> byProject;
    for (const Prompt &prompt : library.prompts()) {
        if (!prompt.frontMatter.pinned)
            byProject[prompt.projectName].append(prompt);
    }
    for (auto it = byProject.begin(); it != byProject.end(); ++it)
        *it = inProjectOrder(library, it.key(), *it);
    return byProject;
}

QList<SidebarSection> sidebarSections(const PromptLibrary &library)
{
    QList<SidebarSection> sections{SidebarSection::pinned()};
    const QList<Project> &projects = library.projects();
    const bool hasInbox = std::any_of(projects.cbegin(), projects.cend(), [](const Project &p) {
        return p.name == VeskConst::inboxProjectName;
    });
    if (hasInbox)
        sections.append(SidebarSection::project(VeskConst::inboxProjectName.toString()));
    for (const Project &project : projects) {
        if (project.name != VeskConst::inboxProjectName)
            sections.append(SidebarSection::project(project.name));
    }
    return PromptLibrary::sortByOrder(sections, [](const SidebarSection &s) { return s.id(); },
                                      library.sectionOrder());
}

} // namespace LibraryQueries
