#include "Prompt.h"

QString Prompt::fileName() const
{
    const QString path = filePath();
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString Prompt::displayTitle() const
{
    const QString title = frontMatter.title.trimmed();
    return title.isEmpty() ? QStringLiteral("New prompt") : title;
}
