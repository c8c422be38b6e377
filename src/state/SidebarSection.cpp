#include "SidebarSection.h"

#include "VeskConst.h"

SidebarSection SidebarSection::fromId(const QString &id)
{
    return id == pinnedId ? pinned() : project(id);
}

QString SidebarSection::id() const
{
    return isPinned() ? pinnedId.toString() : m_projectName;
}

QString SidebarSection::title() const
{
    return isPinned() ? QStringLiteral("Pinned") : projectDisplayName(m_projectName);
}

QString projectDisplayName(const QString &projectName)
{
    return projectName == VeskConst::inboxProjectName ? QStringLiteral("Recent Prompts") : projectName;
}
