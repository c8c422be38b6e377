#pragma once

#include "Prompt.h"
#include "SidebarSection.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

class PromptLibrary;

// The ordered views of a library that the app and the CLI share. Computed
// afresh on every call.
namespace LibraryQueries {

// True when the query holds anything but white space.
bool isSearchQuery(const QString &query);

// The search rule for one prompt: its display title, body or a tag contains
// the trimmed query, ignoring case.
class QueryMatcher
{
public:
    explicit QueryMatcher(const QString &query);
    ~QueryMatcher();
    QueryMatcher(const QueryMatcher &) = delete;
    QueryMatcher &operator=(const QueryMatcher &) = delete;

    bool isEmpty() const { return m_needle.isEmpty(); }
    const QString &needle() const { return m_needle; } // trimmed, lower-cased
    bool matches(const Prompt &prompt) const;

private:
    QString m_needle;
    struct Ascii;
    std::unique_ptr<Ascii> m_ascii; // for ASCII needles: searched in place
};

// Prompts whose display title, body or a tag contains the trimmed query,
// ignoring case; library order, no ranking. The plain rule, prompt by prompt.
QList<Prompt> searchResults(const QList<Prompt> &prompts, const QString &query);

// The same search through each prompt's prepared search text, on all cores:
// the same results in the same order, as indices into `prompts`. With
// `within`, only those indices are looked at: the results of a query that
// this one contains, since whatever contains this query contains that one.
QList<qsizetype> searchIndices(const QList<Prompt> &prompts, const QString &query,
                               const QList<qsizetype> *within = nullptr);

// Pinned prompts in the pinned order (keyed by prompt id).
QList<Prompt> pinnedPrompts(const PromptLibrary &library);

// A project's unpinned prompts in its manual order (keyed by file name).
QList<Prompt> promptsInProject(const PromptLibrary &library, const QString &projectName);

// promptsInProject for every loaded project at once, in one pass.
QHash<QString, QList<Prompt>> promptsByProject(const PromptLibrary &library);

// "Pinned", "Inbox", then the other projects, arranged by the section order.
QList<SidebarSection> sidebarSections(const PromptLibrary &library);

} // namespace LibraryQueries
