#pragma once

#include "Alerts.h"
#include "Prompt.h"

#include <QList>

class AppState;

// What the sidebar's menus and keys do to prompts and projects: pinning,
// moving one prompt, and the trash and rename flows with their alerts.
class LibraryActions
{
public:
    explicit LibraryActions(AppState *state) : m_state(state) {}

    // Saves each prompt whose pinned flag differs; the others are not written.
    void setPinned(const QList<Prompt> &prompts, bool pinned);

    // Moves one prompt; the moved prompt becomes the whole selection.
    void movePrompt(const Prompt &prompt, const Project &project);

    // Asks, then moves the prompts' files to the Trash.
    void confirmAndDeletePrompts(const QList<Prompt> &prompts);
    // Asks for a new name and renames; tells the user when that is refused.
    void renameProject(const Project &project);
    // Asks, then moves the project's folder to the Trash.
    void confirmAndDeleteProject(const Project &project);

    static Alert deletePromptsAlert(const QList<Prompt> &prompts);
    static Alert renameProjectAlert(const Project &project);
    static Alert renameRefusedAlert();
    static Alert deleteProjectAlert(const Project &project);

private:
    bool confirmed(const Alert &alert) const;

    AppState *m_state;
};
