#include "NewProjectDialog.h"

#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

NewProjectDialog::NewProjectDialog(QWidget *parent)
    : QDialog(parent)
    , m_name(new QLineEdit(this))
{
    setWindowTitle(QStringLiteral("New Project"));
    setWindowModality(Qt::WindowModal);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(16);
    auto *icon = new QLabel(this);
    icon->setPixmap(Icons::appIcon().pixmap(56, 56));
    layout->addWidget(icon, 0, Qt::AlignTop);

    auto *column = new QVBoxLayout;
    column->setSpacing(8);
    auto *message = new QLabel(QStringLiteral("New Project"), this);
    message->setFont(Theme::font(13, QFont::Bold));
    auto *informative = new QLabel(QStringLiteral("Projects are folders that group related prompts."), this);
    informative->setFont(Theme::font(11));
    informative->setWordWrap(true);
    m_name->setObjectName(QStringLiteral("projectName"));
    m_name->setPlaceholderText(QStringLiteral("Project name"));
    m_name->setFixedWidth(240);
    m_name->setMinimumHeight(22);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    auto *create = new QPushButton(QStringLiteral("Create"), this);
    create->setObjectName(QStringLiteral("createButton"));
    create->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(create, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(cancel);
    buttons->addWidget(create);

    column->addWidget(message);
    column->addWidget(informative);
    column->addWidget(m_name);
    column->addSpacing(6);
    column->addLayout(buttons);
    layout->addLayout(column);
    m_name->setFocus();
}

std::optional<QString> DialogProjectNamePrompter::askForProjectName()
{
    NewProjectDialog dialog(m_parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.nameField()->text();
}
