#pragma once

#include "LibraryActions.h"
#include "Organizer.h"

#include <QSet>
#include <QString>

#include <functional>

class AppState;
class QMenu;

// The sidebar's two context menus, rebuilt from the library and the
// selection each time one opens: one for prompts, one for a project header.
class SidebarMenus
{
public:
    explicit SidebarMenus(AppState *state);

    // The items for the prompts with these ids; none when no prompt has one.
    void addPromptItems(QMenu *menu, const QSet<QString> &ids);
    // Reveal, Rename…, Move to Trash… for a project folder.
    void addProjectItems(QMenu *menu, const Project &project);

    // Shows a file or folder in the desktop's file manager; tests replace it.
    std::function<void(const QString &path)> reveal;

    LibraryActions &actions() { return m_actions; }

private:
    void addSinglePromptItems(QMenu *menu, const Prompt &prompt);
    void addSeveralPromptItems(QMenu *menu, const QList<Prompt> &prompts);

    AppState *m_state;
    LibraryActions m_actions;
    Organizer m_organizer;
};
