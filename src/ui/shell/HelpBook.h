#pragma once

#include <QString>
#include <QStringList>

// Where the help book's pages are, and what to show when there is none.
namespace HelpBook {

// The places a page is looked for, in order. Tests build their own.
struct Locations
{
    // Folders that hold the pages in the application's own resources
    // (each one an ".../Vesk.help/Contents/Resources/en.lproj").
    QStringList resourceFolders;
    // The folder that holds the program's executable; the development
    // locations are relative to it.
    QString executableFolder;

    // The locations of a program in `executableFolder`: the book in each of
    // the platform's resource folders (DesktopConventions::resourceFolders:
    // the macOS bundle's resources, or on Linux <prefix>/share/vesk beside
    // <prefix>/bin and the desktop's data folders).
    static Locations forExecutableFolder(const QString &executableFolder);
    // The same for the running application.
    static Locations forApplication();
};

// The help book's folder below a resources or data folder.
inline constexpr QStringView bookFolder = u"Vesk.help/Contents/Resources/en.lproj";

// The development locations, relative to the executable's folder, in order.
QStringList developmentLocations();

// The absolute path of `page` (e.g. "index.html"), or an empty string when no
// location holds it. In the resources every ".html" is removed from the name
// and the extension added back; in the development locations the name is
// used as it is.
QString findPage(const Locations &locations, const QString &page);

// The built-in page shown when the book cannot be found.
QString fallbackHtml();

} // namespace HelpBook
