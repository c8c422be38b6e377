#include "LibraryQueries.h"

#include "PromptLibrary.h"
#include "VeskConst.h"

namespace LibraryQueries {

bool isSearchQuery(const QString &query)
{
    return !query.trimmed().isEmpty();
}

QList<Prompt> searchResults(const QList<Prompt> &prompts, const QString &query)
{
    const QString needle = query.trimmed().toLower();
    QList<Prompt> results;
    if (needle.isEmpty())
        return results;
    const auto matches = [&needle](const Prompt &prompt) {
        if (prompt.displayTitle().toLower().contains(needle) || prompt.body.toLower().contains(needle))
            return true;
        for (const QString &tag : prompt.frontMatter.tags) {
            if (tag.toLower().contains(needle))
                return true;
        }
        return false;
    };
    for (const Prompt &prompt : prompts) {
        if (matches(prompt))
            results.append(prompt);
    }
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

QList<Prompt> promptsInProject(const PromptLibrary &library, const QString &projectName)
{
    QList<Prompt> inProject;
    for (const Prompt &prompt : library.prompts()) {
        if (prompt.projectName == projectName && !prompt.frontMatter.pinned)
            inProject.append(prompt);
    }
    return PromptLibrary::sortByOrder(inProject, [](const Prompt &p) { return p.fileName(); },
                                      library.promptOrderByProject().value(projectName));
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
