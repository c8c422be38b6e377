#include "DesktopEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString unescape(QStringView raw)
{
    QString value;
    value.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (raw[i] != u'\\' || i + 1 == raw.size()) {
            value += raw[i];
            continue;
        }
        const QChar next = raw[++i];
        switch (next.unicode()) {
        case u's': value += u' '; break;
        case u'n': value += u'\n'; break;
        case u't': value += u'\t'; break;
        case u'r': value += u'\r'; break;
        case u'\\': value += u'\\'; break;
        default: // not a string escape: left for the Exec line's own quoting
            value += u'\\';
            value += next;
        }
    }
    return value;
}

QStringList dataFolders()
{
    QString home = qEnvironmentVariable("XDG_DATA_HOME");
    if (home.isEmpty() || QDir::isRelativePath(home))
        home = QDir::homePath() + u"/.local/share";
    QString dirs = qEnvironmentVariable("XDG_DATA_DIRS");
    if (dirs.isEmpty())
        dirs = QStringLiteral("/usr/local/share/:/usr/share/");
    QStringList folders{home};
    for (const QString &dir : dirs.split(u':', Qt::SkipEmptyParts)) {
        if (!QDir::isRelativePath(dir)) // relative entries are invalid and ignored
            folders << dir;
    }
    return folders;
}

bool programExists(const QString &program)
{
    if (program.contains(u'/'))
        return QFileInfo(program).isExecutable();
    return !QStandardPaths::findExecutable(program).isEmpty();
}

} // namespace

QStringList DesktopEntry::applicationFolders()
{
    QStringList folders;
    for (const QString &folder : dataFolders())
        folders << QDir::cleanPath(folder + u"/applications");
    return folders;
}

QString DesktopEntry::find(const QStringList &fileNames)
{
    const QStringList folders = applicationFolders();
    for (const QString &name : fileNames) {
        for (const QString &folder : folders) {
            const QString path = folder + u'/' + name;
            if (!QFileInfo(path).isFile())
                continue;
            const std::optional<DesktopEntry> entry = read(path);
            if (entry && entry->isLaunchable())
                return path;
            break;
        }
    }
    return {};
}

std::optional<DesktopEntry> DesktopEntry::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString text = QString::fromUtf8(file.readAll());
    DesktopEntry entry;
    entry.m_path = path;
    bool inGroup = false;
    bool found = false;
    for (QStringView line : QStringView(text).split(u'\n')) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            if (inGroup)
                break; // only the first [Desktop Entry] group counts
            inGroup = line == u"[Desktop Entry]";
            found = found || inGroup;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inGroup || equals <= 0)
            continue;
        const QString key = line.left(equals).trimmed().toString();
        if (!entry.m_values.contains(key)) // a repeated key: the first one stands
            entry.m_values.insert(key, unescape(line.mid(equals + 1).trimmed()));
    }
    if (!found)
        return std::nullopt;
    return entry;
}

bool DesktopEntry::isLaunchable() const
{
    if (value(QStringLiteral("Type")) != u"Application" || isTrue(QStringLiteral("Hidden")))
        return false;
    const QString tryExec = value(QStringLiteral("TryExec"));
    if (!tryExec.isEmpty() && !programExists(tryExec))
        return false;
    return isDBusActivatable() || !command().isEmpty();
}

QString DesktopEntry::dbusName() const
{
    constexpr QStringView suffix = u".desktop";
    QString name = QFileInfo(m_path).fileName();
    if (name.endsWith(suffix))
        name.chop(suffix.size());
    return name;
}

QString DesktopEntry::dbusObjectPath() const
{
    QString path = u'/' + dbusName();
    path.replace(u'.', u'/');
    path.replace(u'-', u'_');
    return path;
}

QStringList DesktopEntry::command() const
{
    const QString exec = value(QStringLiteral("Exec"));
    QStringList arguments;
    QString argument;
    bool started = false; // `argument` holds something, if only empty quotes
    bool quoted = false;
    const auto finish = [&] {
        if (started)
            arguments << argument;
        argument.clear();
        started = false;
    };
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        const bool hasNext = i + 1 < exec.size();
        if (quoted) {
            if (c == u'"')
                quoted = false;
            else if (c == u'\\' && hasNext)
                argument += exec[++i];
            else
                argument += c;
            continue;
        }
        if (c == u' ' || c == u'\t' || c == u'\n') {
            finish();
        } else if (c == u'"') {
            quoted = true;
            started = true;
        } else if (c == u'\\' && hasNext) {
            argument += exec[++i];
            started = true;
        } else if (c == u'%' && hasNext) {
            switch (exec[++i].unicode()) {
            case u'%':
                argument += u'%';
                started = true;
                break;
            case u'c':
                argument += value(QStringLiteral("Name"));
                started = true;
                break;
            case u'k':
                argument += m_path;
                started = true;
                break;
            case u'i': // two arguments of their own, only where the code stands alone
                if (!started && !value(QStringLiteral("Icon")).isEmpty())
                    arguments << QStringLiteral("--icon") << value(QStringLiteral("Icon"));
                break;
            default: // files and addresses (none here) and deprecated codes
                break;
            }
        } else {
            argument += c;
            started = true;
        }
    }
    finish();
    return arguments;
}
