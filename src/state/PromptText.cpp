#include "PromptText.h"

#include "Prompt.h"
#include "SidebarSection.h"

#include <QTextBoundaryFinder>

namespace PromptText {

QString spoken(const Prompt &prompt)
{
    QString text = prompt.displayTitle();
    const QString line = preview(prompt.body, 120);
    if (!line.isEmpty())
        text += u", " + line;
    return text + u", in " + projectDisplayName(prompt.projectName);
}

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

QString PromptText::oneLine(const QString &text)
{
    const auto isLineBreak = [](QChar c) {
        return c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f' || c == QChar(0x85) || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator;
    };
    QString clean;
    clean.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!isLineBreak(text[i])) {
            clean.append(text[i]);
            continue;
        }
        clean.append(u' ');
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i; // one break, one space
    }
    return clean;
}
