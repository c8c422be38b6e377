#include "PromptText.h"

#include <QTextBoundaryFinder>

namespace PromptText {

QString preview(const QString &body, int limit)
{
    QString line = body;
    line.replace(u'\n', u' ');
    line = line.trimmed();
    if (line.size() <= limit)
        return line; // never more characters than code units
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, line);
    int count = 0;
    qsizetype cut = 0;
    while (count < limit) {
        const qsizetype next = graphemes.toNextBoundary();
        if (next < 0)
            return line;
        cut = next;
        ++count;
    }
    return cut >= line.size() ? line : line.left(cut) + u'…';
}

QString counted(qsizetype count, const QString &noun)
{
    return QString::number(count) + u' ' + noun + (count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace PromptText
