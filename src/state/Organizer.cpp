#include "Organizer.h"

#include "AppState.h"
#include "LibraryQueries.h"
#include "PromptLibrary.h"

#include <QSet>

namespace {

// A dropped id's file name: its last non-empty piece after a "/". The same
// name survives a move, unless the move had to number it.
std::optional<QString> fileNameOfId(const QString &id)
{
    const QStringList pieces = id.split(u'/', Qt::SkipEmptyParts);
    if (pieces.isEmpty())
        return std::nullopt;
    return pieces.last();
}

std::optional<Prompt> withFileInProject(const PromptLibrary &library, const Prompt &prompt)
{
    const QString fileName = prompt.fileName();
    for (const Prompt &candidate : library.prompts()) {
        if (candidate.projectName == prompt.projectName && candidate.fileName() == fileName)
            return candidate;
    }
    return std::nullopt;
}

void savePinned(PromptLibrary &library, Prompt prompt, bool pinned)
{
    prompt.frontMatter.pinned = pinned;
    library.save(prompt);
}

// The prompt `id` names, unpinned first if it was pinned, as the library
// lists it afterwards (found by its file and project); nullopt when gone.
std::optional<Prompt> unpinned(PromptLibrary &library, const QString &id)
{
    const std::optional<Prompt> prompt = library.prompt(id);
    if (!prompt)
        return std::nullopt;
    if (prompt->frontMatter.pinned)
        savePinned(library, *prompt, false);
    return withFileInProject(library, *prompt);
}

} // namespace

QStringList Organizer::insertBefore(const QStringList &items, const QStringList &list, const QString &target)
{
    const QSet<QString> moving(items.cbegin(), items.cend());
    QStringList rest;
    for (const QString &entry : list) {
        if (!moving.contains(entry))
            rest.append(entry);
    }
    const qsizetype at = rest.indexOf(target);
    if (at < 0)
        return rest + items;
    return rest.mid(0, at) + items + rest.mid(at);
}

void Organizer::writeRootOrderFile(QStringView fileName, const QStringList &lines)
{
    PromptLibrary &library = *m_state->library();
    // The writer keeps the first of repeated entries; the refresh after it
    // looks only at what changed (the order file), as after any own write.
    const QString path = library.orderFilePath(fileName);
    PromptLibrary::writeOrderFile(path, lines);
    library.refresh({path});
}

void Organizer::handleDropOnSection(const QList<VeskDrag> &drags, const QString &sectionID)
{
    if (drags.isEmpty())
        return;
    // An edit still waiting to be written belongs to a file that may move.
    m_state->flushPendingSave();
    PromptLibrary &library = *m_state->library();
    for (const VeskDrag &drag : drags) {
        if (drag.kind == VeskDrag::Kind::Section) {
            if (drag.payload.isEmpty())
                continue;
            const QString dragged = drag.payload.first();
            if (dragged != sectionID)
                reorderSection(dragged, sectionID);
        } else if (sectionID != SidebarSection::pinnedId) {
            movePrompts(drag.payload, sectionID);
        } else {
            // Pinning only: newly pinned prompts take the place the pinned
            // order gives them.
            const QSet<QString> ids(drag.payload.cbegin(), drag.payload.cend());
            QList<Prompt> toPin;
            for (const Prompt &prompt : library.prompts()) {
                if (ids.contains(prompt.id) && !prompt.frontMatter.pinned)
                    toPin.append(prompt);
            }
            for (const Prompt &prompt : std::as_const(toPin))
                savePinned(library, prompt, true);
        }
    }
}

void Organizer::reorderSection(const QString &draggedID, const QString &targetID)
{
    const PromptLibrary &library = *m_state->library();
    QStringList current;
    for (const SidebarSection &section : LibraryQueries::sidebarSections(library))
        current.append(section.id());

    QStringList base = library.sectionOrder();
    if (base.isEmpty()) {
        base = current;
    } else {
        for (const QString &id : std::as_const(current)) {
            if (!base.contains(id))
                base.append(id);
        }
    }
    writeRootOrderFile(PromptLibrary::sectionOrderFileName, insertBefore({draggedID}, base, targetID));
}

void Organizer::reorderPrompts(const QStringList &droppedIDs, const Prompt &target)
{
    QStringList dropped;
    for (const QString &id : droppedIDs) {
        if (id != target.id)
            dropped.append(id);
    }
    if (dropped.isEmpty())
        return;
    m_state->flushPendingSave();
    PromptLibrary &library = *m_state->library();

    if (target.frontMatter.pinned) {
        for (const QString &id : std::as_const(dropped)) {
            const std::optional<Prompt> prompt = library.prompt(id);
            if (prompt && !prompt->frontMatter.pinned)
                savePinned(library, *prompt, true);
        }
        QStringList base = library.pinnedOrder();
        if (base.isEmpty()) {
            for (const Prompt &prompt : library.prompts()) {
                if (prompt.frontMatter.pinned)
                    base.append(prompt.id);
            }
        }
        writeRootOrderFile(PromptLibrary::pinnedOrderFileName, insertBefore(dropped, base, target.id));
        return;
    }

    const std::optional<Project> project = library.project(target.projectName);
    if (!project)
        return; // a row outside every project folder takes no drops
    for (const QString &id : std::as_const(dropped)) {
        // Dropped among unpinned rows, a pinned prompt is unpinned.
        const std::optional<Prompt> current = unpinned(library, id);
        if (!current)
            continue;
        if (current->projectName != project->name)
            library.movePrompt(*current, *project);
    }

    // The dropped file names, also of skipped ids: a move keeps the name
    // unless it had to number it, and then the listed name is the other file's.
    QStringList names;
    for (const QString &id : std::as_const(dropped)) {
        if (const std::optional<QString> name = fileNameOfId(id))
            names.append(*name);
    }
    // The stored order whenever the project has an entry (every loaded
    // project has one, empty without an order file); else its rows as listed.
    QStringList base;
    if (library.promptOrderByProject().contains(project->name)) {
        base = library.promptOrderByProject().value(project->name);
    } else {
        for (const Prompt &prompt : library.prompts()) {
            if (prompt.projectName == project->name && !prompt.frontMatter.pinned)
                base.append(prompt.fileName());
        }
    }
    library.setPromptOrder(project->name, insertBefore(names, base, target.fileName()));
}

QStringList Organizer::movePrompts(const QStringList &ids, const QString &projectName)
{
    PromptLibrary &library = *m_state->library();
    const std::optional<Project> project = library.project(projectName);
    if (!project)
        return {}; // the header's folder vanished
    m_state->flushPendingSave();

    QStringList newIDs;
    QStringList names;
    for (const QString &id : ids) {
        // Dropped on a project's header, a pinned prompt is unpinned.
        const std::optional<Prompt> current = unpinned(library, id);
        if (!current)
            continue;
        if (current->projectName == project->name) {
            names.append(current->fileName());
            continue;
        }
        if (const std::optional<Prompt> moved = library.movePrompt(*current, *project)) {
            if (!newIDs.contains(moved->id))
                newIDs.append(moved->id);
            names.append(moved->fileName());
        }
    }

    if (!names.isEmpty()) {
        // Moved prompts go to the end of the project.
        QStringList order = library.promptOrderByProject().value(project->name);
        for (const QString &name : std::as_const(names)) {
            if (!order.contains(name))
                order.append(name);
        }
        library.setPromptOrder(project->name, order);
    }
    if (!newIDs.isEmpty())
        m_state->setSelectedPromptIDs(QSet<QString>(newIDs.cbegin(), newIDs.cend()));
    return newIDs;
}

QStringList Organizer::batchMove(const QList<Prompt> &prompts, const Project &project)
{
    m_state->flushPendingSave();
    PromptLibrary &library = *m_state->library();
    QStringList newIDs;
    for (const Prompt &prompt : prompts) {
        if (prompt.projectName == project.name)
            continue;
        if (const std::optional<Prompt> moved = library.movePrompt(prompt, project)) {
            if (!newIDs.contains(moved->id))
                newIDs.append(moved->id);
        }
    }
    if (!newIDs.isEmpty())
        m_state->setSelectedPromptIDs(QSet<QString>(newIDs.cbegin(), newIDs.cend()));
    return newIDs;
}
