#pragma once

#include "Prompt.h"
#include "SidebarSection.h"

#include <QHash>
#include <QList>
#include <QString>

class PromptLibrary;

// The ordered views of a library that the app and the CLI share. Computed
// afresh on every call.
namespace LibraryQueries {

// True when the query holds anything but white space.
bool isSearchQuery(const QString &query);

// Prompts whose display title, body or a tag contains the trimmed query,
// ignoring case; library order, no ranking.
QList<Prompt> searchResults(const QList<Prompt> &prompts, const QString &query);

// Pinned prompts in the pinned order (keyed by prompt id).
QList<Prompt> pinnedPrompts(const PromptLibrary &library);

// A project's unpinned prompts in its manual order (keyed by file name).
QList<Prompt> promptsInProject(const PromptLibrary &library, const QString &projectName);

// promptsInProject for every loaded project at once, in one pass.
QHash<QString, QList<Prompt>> promptsByProject(const PromptLibrary &library);

// "Pinned", "Inbox", then the other projects, arranged by the section order.
QList<SidebarSection> sidebarSections(const PromptLibrary &library);

} // namespace LibraryQueries
