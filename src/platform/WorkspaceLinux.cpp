#include "Workspace.h"

#include "DesktopEntry.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace Workspace {

void revealInFileBrowser(const QString &path)
{
    // The file manager's D-Bus interface selects the item; without one,
    // opening the folder that holds it is the next best thing.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 3000);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

QString revealActionTitle()
{
    return QStringLiteral("Show in File Manager");
}

namespace {

// How long a D-Bus activated application may take to start and answer.
constexpr int activationTimeoutMs = 10000;

// The desktop entries that stand for a bundle identifier: the identifier
// itself, as Flatpak names its entries, and the names the assistant's Linux
// packages use.
QStringList entryNames(const QString &bundleIdentifier)
{
    QStringList names{bundleIdentifier + u".desktop"};
    // Packages of Anthropic's desktop app for Linux name their entry after
    // the app's own id, and earlier after the package.
    if (bundleIdentifier == u"com.anthropic.claudefordesktop")
        names << QStringLiteral("com.anthropic.Claude.desktop") << QStringLiteral("claude-desktop.desktop");
    return names;
}

void startCommand(const DesktopEntry &entry)
{
    QStringList arguments = entry.command();
    if (arguments.isEmpty())
        return;
    const QString program = arguments.takeFirst();
    if (!QProcess::startDetached(program, arguments, entry.value(QStringLiteral("Path"))))
        qWarning("Vesk: could not start %s from %s", qUtf8Printable(program), qUtf8Printable(entry.path()));
}

class LinuxApplications final : public Applications
{
public:
    QUrl urlForApplication(const QString &bundleIdentifier) override
    {
        const QString path = DesktopEntry::find(entryNames(bundleIdentifier));
        return path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path);
    }

    // As the desktop launches an entry: D-Bus activation when the entry asks
    // for it (the bus starts the application, or it is already running and
    // comes to the front), else its Exec line. The application brings itself
    // to the front; single-instance apps hand a second start to the first.
    void openApplication(const QUrl &location, std::function<void()> completion) override
    {
        const std::optional<DesktopEntry> entry = DesktopEntry::read(location.toLocalFile());
        if (entry && entry->isDBusActivatable()) {
            activate(*entry, std::move(completion));
            return;
        }
        if (entry)
            startCommand(*entry);
        completion(); // the launch has started
    }

private:
    static void activate(const DesktopEntry &entry, std::function<void()> completion)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(entry.dbusName(), entry.dbusObjectPath(),
                                                           QStringLiteral("org.freedesktop.Application"),
                                                           QStringLiteral("Activate"));
        call << QVariantMap(); // platform data: none
        auto *watcher = new QDBusPendingCallWatcher(
            QDBusConnection::sessionBus().asyncCall(call, activationTimeoutMs), QCoreApplication::instance());
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, QCoreApplication::instance(),
                         [watcher, entry, completion = std::move(completion)] {
                             watcher->deleteLater();
                             // Nobody answers to the name: start the program as a plain one.
                             if (watcher->isError())
                                 startCommand(entry);
                             completion();
                         });
    }
};

} // namespace

Applications &Applications::platform()
{
    static LinuxApplications applications;
    return applications;
}

} // namespace Workspace
