#pragma once

#include "Prompt.h"
#include "VeskDrag.h"

#include <QList>
#include <QString>
#include <QStringList>

class AppState;

// What a drop in the sidebar does to the library: re-ordering sections,
// pinning, re-ordering prompts, moving them between projects. The sidebar's
// drops, its "Move to Project" menu and vesk-cli all call these. Acts only
// through the library and the selection; holds no state of its own.
class Organizer
{
public:
    explicit Organizer(AppState *state) : m_state(state) {}

    // A drop on a section header ("@pinned" or a project name).
    void handleDropOnSection(const QList<VeskDrag> &drags, const QString &sectionID);

    // Puts the dragged section directly above the target section.
    void reorderSection(const QString &draggedID, const QString &targetID);

    // `list` without `items`, with `items` inserted before `target` (or at
    // the end when `target` is not left in the list).
    static QStringList insertBefore(const QStringList &items, const QStringList &list, const QString &target);

    // A prompt drop on the row of `target`: into its section, before it.
    void reorderPrompts(const QStringList &droppedIDs, const Prompt &target);

    // A prompt drop on a project header: into that project, at its end. The
    // moved prompts become the selection; returns their new ids, in order.
    QStringList movePrompts(const QStringList &ids, const QString &projectName);

    // "Move to Project" for several prompts: no unpinning, no order change.
    // The moved prompts become the selection; returns their new ids, in order.
    QStringList batchMove(const QList<Prompt> &prompts, const Project &project);

private:
    void writeRootOrderFile(QStringView fileName, const QStringList &lines);

    AppState *m_state;
};
