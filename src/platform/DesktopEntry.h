#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

// An installed application as Linux desktops know it: a desktop entry file
// (freedesktop.org's desktop entry format) in an "applications"
// folder of the XDG data folders.
class DesktopEntry
{
public:
    // $XDG_DATA_HOME and then each of $XDG_DATA_DIRS (or their defaults),
    // each with "/applications" appended, the one that wins first.
    static QStringList applicationFolders();
    // The path of the first of `fileNames` installed as a launchable
    // application; empty when none is. A name is decided by the first folder
    // that has it: a hidden entry there hides the same name further down.
    static QString find(const QStringList &fileNames);
    // The [Desktop Entry] group of the file; nothing when it cannot be read
    // or has no such group.
    static std::optional<DesktopEntry> read(const QString &path);

    const QString &path() const { return m_path; }
    // A key's value with the desktop-entry escapes (\s \n \t \r \\)
    // resolved; localised variants ("Name[de]") are not looked at.
    QString value(const QString &key) const { return m_values.value(key); }
    bool isTrue(const QString &key) const { return value(key) == u"true"; }

    // An application that can be started: Type=Application, not Hidden, its
    // TryExec program present, and an Exec line or D-Bus activation.
    bool isLaunchable() const;
    bool isDBusActivatable() const { return isTrue(QStringLiteral("DBusActivatable")); }
    // The D-Bus name and object path of a D-Bus activatable application:
    // the file name without ".desktop", and that with "." as "/" and "-" as "_".
    QString dbusName() const;
    QString dbusObjectPath() const;
    // The Exec line split into the program and its arguments as a launch
    // with no files or addresses to open gives them: quoting resolved, %f %F
    // %u %U and the deprecated codes dropped, %i %c %k %% expanded.
    QStringList command() const;

private:
    QString m_path;
    QHash<QString, QString> m_values;
};
