#pragma once

#include <QString>

#include <optional>

// Asks the user for a new project's name. The app shows a modal dialog; tests
// answer directly. Keeps dialogs out of the application state.
class ProjectNamePrompter
{
public:
    virtual ~ProjectNamePrompter() = default;
    // The text typed when the user chose "Create"; nothing for "Cancel".
    virtual std::optional<QString> askForProjectName() = 0;
};
