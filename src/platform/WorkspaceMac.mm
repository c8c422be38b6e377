#include "Workspace.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QProcess>

#import <AppKit/AppKit.h>

namespace Workspace {

void revealInFileBrowser(const QString &path)
{
    // Finder opens a window with the item selected.
    QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path});
}

QString revealActionTitle()
{
    return QStringLiteral("Reveal in Finder");
}

namespace {

class MacApplications final : public Applications
{
public:
    QUrl urlForApplication(const QString &bundleIdentifier) override
    {
        NSURL *url = [[NSWorkspace sharedWorkspace] URLForApplicationWithBundleIdentifier:bundleIdentifier.toNSString()];
        return url ? QUrl::fromNSURL(url) : QUrl();
    }

    void openApplication(const QUrl &location, std::function<void()> completion) override
    {
        NSWorkspaceOpenConfiguration *configuration = [NSWorkspaceOpenConfiguration configuration];
        [[NSWorkspace sharedWorkspace] openApplicationAtURL:location.toNSURL()
                                              configuration:configuration
                                          completionHandler:^(NSRunningApplication *app, NSError *error) {
                                              // AppKit calls this on a queue of its own: touch nothing
                                              // here, carry on on the main thread. Whether the app
                                              // opened does not matter to the caller.
                                              (void)app;
                                              (void)error;
                                              QMetaObject::invokeMethod(QCoreApplication::instance(), completion,
                                                                        Qt::QueuedConnection);
                                          }];
    }
};

} // namespace

Applications &Applications::platform()
{
    static MacApplications applications;
    return applications;
}

} // namespace Workspace
