#pragma once

#include <QString>

// A section of the sidebar: the pinned prompts, or one project.
class SidebarSection
{
public:
    enum class Kind { Project, Pinned };

    static SidebarSection pinned() { return SidebarSection(Kind::Pinned, {}); }
    static SidebarSection project(const QString &name) { return SidebarSection(Kind::Project, name); }
    // The section an id names: "@pinned", or a project name.
    static SidebarSection fromId(const QString &id);

    static constexpr QStringView pinnedId = u"@pinned";

    Kind kind() const { return m_kind; }
    bool isPinned() const { return m_kind == Kind::Pinned; }
    const QString &projectName() const { return m_projectName; }

    // "@pinned", or the project name: what the section order file stores.
    QString id() const;
    // "Pinned", "Recent Prompts" for the "Inbox" project, else the project name.
    QString title() const;

    friend bool operator==(const SidebarSection &, const SidebarSection &) = default;

private:
    SidebarSection(Kind kind, QString projectName)
        : m_kind(kind), m_projectName(std::move(projectName)) {}

    Kind m_kind;
    QString m_projectName;
};

// "Recent Prompts" for the "Inbox" project; any other name as it is.
QString projectDisplayName(const QString &projectName);
