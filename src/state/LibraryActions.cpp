#include "LibraryActions.h"

#include "AppState.h"
#include "PromptLibrary.h"

#include <QSet>

namespace {

const QString moveToTrash = QStringLiteral("Move to Trash");
const QString cancel = QStringLiteral("Cancel");

} // namespace

bool LibraryActions::confirmed(const Alert &alert) const
{
    Alerts *alerts = m_state->alerts();
    return alerts && alerts->run(alert).button == 0;
}

void LibraryActions::setPinned(const QList<Prompt> &prompts, bool pinned)
{
    m_state->flushPendingSave();
    PromptLibrary &library = *m_state->library();
    for (Prompt prompt : prompts) {
        if (prompt.frontMatter.pinned == pinned)
            continue;
        // The file as it is now: the pending edit may just have been written.
        if (const std::optional<Prompt> current = library.prompt(prompt.id))
            prompt = *current;
        prompt.frontMatter.pinned = pinned;
        library.save(prompt);
    }
}

void LibraryActions::movePrompt(const Prompt &prompt, const Project &project)
{
    m_state->flushPendingSave();
    if (const std::optional<Prompt> moved = m_state->library()->movePrompt(prompt, project))
        m_state->setSelectedPromptIDs({moved->id});
}

Alert LibraryActions::deletePromptsAlert(const QList<Prompt> &prompts)
{
    if (prompts.size() >= 2)
        return {Alert::Style::Warning, u"Move " + QString::number(prompts.size()) + u" prompts to Trash?",
                QStringLiteral("The selected prompt files will be moved to the Trash. You can restore them from there."),
                {moveToTrash, cancel}, std::nullopt};
    return {Alert::Style::Warning, u"Move “" + prompts.value(0).displayTitle() + u"” to Trash?",
            QStringLiteral("The prompt file will be moved to the Trash. You can restore it from there."),
            {moveToTrash, cancel}, std::nullopt};
}

void LibraryActions::confirmAndDeletePrompts(const QList<Prompt> &prompts)
{
    if (prompts.isEmpty() || !confirmed(deletePromptsAlert(prompts)))
        return;
    // Whatever the editor still holds for these files goes with them.
    m_state->flushPendingSave();
    QSet<QString> selection = m_state->selectedPromptIDs();
    for (const Prompt &prompt : prompts)
        selection.remove(prompt.id);
    m_state->setSelectedPromptIDs(selection);
    for (const Prompt &prompt : prompts)
        m_state->library()->deletePrompt(prompt);
}

Alert LibraryActions::renameProjectAlert(const Project &project)
{
    return {Alert::Style::Informational, u"Rename “" + project.name + u"”",
            QStringLiteral("Choose a new name for this project. Slashes, colons, and backslashes are replaced with "
                           "hyphens."),
            {QStringLiteral("Rename"), cancel}, project.name};
}

Alert LibraryActions::renameRefusedAlert()
{
    return {Alert::Style::Warning, QStringLiteral("Couldn't rename project."),
            QStringLiteral("A project with that name may already exist."), {}, std::nullopt};
}

void LibraryActions::renameProject(const Project &project)
{
    Alerts *alerts = m_state->alerts();
    if (!alerts)
        return;
    const AlertAnswer answer = alerts->run(renameProjectAlert(project));
    if (answer.button != 0)
        return;
    const QString newName = answer.fieldText.trimmed();
    if (newName.isEmpty() || newName == project.name)
        return;
    // The edit in progress is written to the file's present path first.
    m_state->flushPendingSave();
    if (!m_state->library()->renameProject(project, newName))
        alerts->run(renameRefusedAlert());
}

Alert LibraryActions::deleteProjectAlert(const Project &project)
{
    const int count = project.promptCount;
    const QString informative = count < 1
        ? QStringLiteral("The project folder will be moved to the Trash.")
        : u"This project contains " + QString::number(count) + (count == 1 ? u" prompt" : u" prompts")
            + u". They will be moved to the Trash with the folder.";
    return {Alert::Style::Warning, u"Move “" + project.name + u"” to Trash?", informative, {moveToTrash, cancel},
            std::nullopt};
}

void LibraryActions::confirmAndDeleteProject(const Project &project)
{
    if (!confirmed(deleteProjectAlert(project)))
        return;
    m_state->flushPendingSave();
    QSet<QString> selection = m_state->selectedPromptIDs();
    for (const Prompt &prompt : m_state->library()->prompts()) {
        if (prompt.projectName == project.name)
            selection.remove(prompt.id);
    }
    m_state->setSelectedPromptIDs(selection);
    m_state->library()->deleteProject(project);
}
