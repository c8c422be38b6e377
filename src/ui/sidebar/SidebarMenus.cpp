#include "SidebarMenus.h"

#include "AppState.h"
#include "PromptLibrary.h"
#include "SidebarSection.h"
#include "platform/Workspace.h"

#include <QMenu>

SidebarMenus::SidebarMenus(AppState *state)
    : reveal(Workspace::revealInFileBrowser)
    , m_state(state)
    , m_actions(state)
    , m_organizer(state)
{
}

void SidebarMenus::addPromptItems(QMenu *menu, const QSet<QString> &ids)
{
    QList<Prompt> selected;
    for (const Prompt &prompt : m_state->library()->prompts()) {
        if (ids.contains(prompt.id))
            selected.append(prompt);
    }
    if (selected.size() == 1)
        addSinglePromptItems(menu, selected.first());
    else if (selected.size() >= 2)
        addSeveralPromptItems(menu, selected);
}

void SidebarMenus::addSinglePromptItems(QMenu *menu, const Prompt &prompt)
{
    menu->addAction(Workspace::revealActionTitle(), menu, [this, prompt] { reveal(prompt.filePath()); });
    const bool pinned = prompt.frontMatter.pinned;
    menu->addAction(pinned ? QStringLiteral("Unpin") : QStringLiteral("Pin"), menu,
                    [this, prompt, pinned] { m_actions.setPinned({prompt}, !pinned); });

    QMenu *move = menu->addMenu(QStringLiteral("Move to Project"));
    for (const Project &project : m_state->library()->projects()) {
        if (project.name != prompt.projectName)
            move->addAction(projectDisplayName(project.name), move,
                            [this, prompt, project] { m_actions.movePrompt(prompt, project); });
    }
    move->setEnabled(!move->isEmpty());

    menu->addSeparator();
    menu->addAction(QStringLiteral("Move to Trash…"), menu,
                    [this, prompt] { m_actions.confirmAndDeletePrompts({prompt}); });
}

void SidebarMenus::addSeveralPromptItems(QMenu *menu, const QList<Prompt> &prompts)
{
    // Both titles count the whole selection, also when only some would change.
    const QString count = QString::number(prompts.size());
    const bool anyPinned = std::any_of(prompts.cbegin(), prompts.cend(),
                                       [](const Prompt &p) { return p.frontMatter.pinned; });
    const bool allPinned = std::all_of(prompts.cbegin(), prompts.cend(),
                                       [](const Prompt &p) { return p.frontMatter.pinned; });
    if (!allPinned)
        menu->addAction(u"Pin " + count + u" prompts", menu, [this, prompts] { m_actions.setPinned(prompts, true); });
    if (anyPinned)
        menu->addAction(u"Unpin " + count + u" prompts", menu,
                        [this, prompts] { m_actions.setPinned(prompts, false); });

    QMenu *move = menu->addMenu(u"Move " + count + u" prompts to Project");
    for (const Project &project : m_state->library()->projects())
        move->addAction(projectDisplayName(project.name), move,
                        [this, prompts, project] { m_organizer.batchMove(prompts, project); });
    move->setEnabled(!move->isEmpty());

    menu->addSeparator();
    menu->addAction(u"Move " + count + u" prompts to Trash…", menu,
                    [this, prompts] { m_actions.confirmAndDeletePrompts(prompts); });
}

void SidebarMenus::addProjectItems(QMenu *menu, const Project &project)
{
    menu->addAction(Workspace::revealActionTitle(), menu, [this, project] { reveal(project.path()); });
    menu->addAction(QStringLiteral("Rename…"), menu, [this, project] { m_actions.renameProject(project); });
    menu->addSeparator();
    menu->addAction(QStringLiteral("Move to Trash…"), menu,
                    [this, project] { m_actions.confirmAndDeleteProject(project); });
}
