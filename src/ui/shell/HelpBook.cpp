#include "HelpBook.h"

#include "platform/DesktopConventions.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace HelpBook {

namespace {

bool isFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

} // namespace

Locations Locations::forApplication()
{
    return forExecutableFolder(QCoreApplication::applicationDirPath());
}

Locations Locations::forExecutableFolder(const QString &executableFolder)
{
    Locations locations;
    locations.executableFolder = executableFolder;
    for (const QString &folder : DesktopConventions::resourceFolders(executableFolder))
        locations.resourceFolders.append(QDir::cleanPath(folder + u'/' + bookFolder));
    return locations;
}

QStringList developmentLocations()
{
    return {QStringLiteral("../../Vesk.help/Contents/Resources/en.lproj/"),
            QStringLiteral("../../../Vesk.help/Contents/Resources/en.lproj/"),
            QStringLiteral("../../../../Vesk.help/Contents/Resources/en.lproj/")};
}

QString findPage(const Locations &locations, const QString &page)
{
    // A resource is named without its extension, which is then added back,
    // so "index" and "index.html" both find index.html.
    const QString resourceName = QString(page).remove(QStringLiteral(".html")) + u".html";
    for (const QString &folder : locations.resourceFolders) {
        const QString path = QDir::cleanPath(folder + u'/' + resourceName);
        if (isFile(path))
            return path;
    }
    // A program run straight from a build folder finds the book beside it.
    if (!locations.executableFolder.isEmpty()) {
        for (const QString &relative : developmentLocations()) {
            const QString path = QDir::cleanPath(locations.executableFolder + u'/' + relative + page);
            if (isFile(path))
                return path;
        }
    }
    return {};
}

QString fallbackHtml()
{
    return QStringList{
        QStringLiteral("<html><body style=\"font-family:-apple-system;padding:40px;color:#999;text-align:center;"
                       "color-scheme:light dark\">"),
        QStringLiteral("<h2>Help Not Found</h2>"),
        QStringLiteral("<p>The help files could not be located.<br>Build with <code>./build.zsh dev</code> to "
                       "include the help book.</p>"),
        QStringLiteral("</body></html>")}
        .join(u'\n');
}

} // namespace HelpBook
