#include "VeskConst.h"

#include <QDir>
#include <QStandardPaths>

namespace VeskConst {

bool isPromptExtension(QStringView suffix)
{
    return suffix.compare(u"md", Qt::CaseInsensitive) == 0
        || suffix.compare(u"markdown", Qt::CaseInsensitive) == 0;
}

bool isPromptFileName(QStringView fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot >= 0 && isPromptExtension(fileName.mid(dot + 1));
}

QUrl defaultPromptsFolder()
{
    // GenericDataLocation is ~/Library/Application Support on macOS and
    // ~/.local/share (or $XDG_DATA_HOME) on Linux.
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (base.isEmpty())
        base = QDir::homePath();
    return QUrl::fromLocalFile(QDir::cleanPath(base + u"/Vesk/prompts"));
}

} // namespace VeskConst
