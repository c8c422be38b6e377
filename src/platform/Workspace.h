#pragma once

#include <QString>
#include <QUrl>

#include <functional>

namespace Workspace {

// Opens a file-browser window with the item at `path` selected.
void revealInFileBrowser(const QString &path);

// The menu item that does it: "Reveal in Finder" on macOS, the file
// manager's own term elsewhere.
QString revealActionTitle();

// Other applications: found by bundle identifier and opened, or an address
// opened in the default browser. The platform's comes from current(); tests
// put a recording stand-in there.
class Applications
{
public:
    virtual ~Applications() = default;

    // Where the application with this bundle identifier is installed; empty
    // when it is not. macOS: the app bundle. Linux: its desktop entry, named
    // after the identifier as Flatpak names them, or as its package does.
    virtual QUrl urlForApplication(const QString &bundleIdentifier) = 0;
    // Launches the application found there, or activates it when it runs,
    // bringing it to the front. `completion` runs on the main thread once the
    // system reports back, whether or not the application opened.
    virtual void openApplication(const QUrl &location, std::function<void()> completion) = 0;
    // The default browser (or the address's handler) opens `url`.
    virtual void openUrl(const QUrl &url);
    // Whether Vesk itself is the active application, taking the keyboard.
    virtual bool isVeskFrontmost() const;

    static Applications &current();
    // `replacement` answers from now on; nullptr restores the platform's.
    static void setCurrent(Applications *replacement);

private:
    static Applications &platform();
};

} // namespace Workspace
