#pragma once

#include "ProjectNamePrompter.h"

#include <QDialog>

class QLineEdit;

// "New Project": a name field with "Create" (the default) and "Cancel".
class NewProjectDialog : public QDialog
{
    Q_OBJECT

public:
    explicit NewProjectDialog(QWidget *parent = nullptr);
    QLineEdit *nameField() const { return m_name; }

private:
    QLineEdit *m_name;
};

// Answers AppState's question with the modal dialog.
class DialogProjectNamePrompter : public ProjectNamePrompter
{
public:
    explicit DialogProjectNamePrompter(QWidget *parentWindow) : m_parent(parentWindow) {}
    std::optional<QString> askForProjectName() override;

private:
    QWidget *m_parent;
};
