#include "FrontMatter.h"

#include <QTextBoundaryFinder>

QStringView trimSpacesAndTabs(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && (text[begin] == u' ' || text[begin] == u'\t'))
        ++begin;
    while (end > begin && (text[end - 1] == u' ' || text[end - 1] == u'\t'))
        --end;
    return text.sliced(begin, end - begin);
}

namespace FrontMatter {

namespace {

// Where the header lines start. The opening line is skipped as a count of
// user-perceived characters: after "---\r\n" that count (5) also swallows the
// first character of the next line. Files written that way must keep reading
// the same, so the quirk stays.
qsizetype headerStart(const QString &text)
{
    if (text.startsWith(u"---\n"))
        return 4;
    if (!text.startsWith(u"---\r\n"))
        return -1;
    const qsizetype afterOpening = 5; // "---" and the CR LF pair, one character
    if (afterOpening >= text.size())
        return afterOpening;
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, text);
    graphemes.setPosition(afterOpening);
    const qsizetype next = graphemes.toNextBoundary();
    return next < 0 ? text.size() : next;
}

bool needsQuotes(QStringView scalar)
{
    if (scalar.isEmpty())
        return false;
    if (scalar.contains(u':') || scalar.contains(u'"'))
        return true;
    const QChar first = scalar.front();
    return first == u'-' || first == u'[' || first == u'{' || first == u'#';
}

QString scalar(const QString &value)
{
    if (!needsQuotes(value))
        return value;
    QString escaped = value;
    escaped.replace(u'"', QStringLiteral("\\\""));
    return u'"' + escaped + u'"';
}

} // namespace

ParseResult parse(const QString &text)
{
    return parse(QString(text));
}

ParseResult parse(QString &&text)
{
    const qsizetype start = headerStart(text);
    if (start < 0)
        return {{}, std::move(text)};

    // Lines split at line feeds only; a carriage return stays on its line.
    QList<QStringView> headerLines;
    qsizetype lineStart = start;
    qsizetype bodyStart = -1;
    while (true) {
        const qsizetype lineFeed = text.indexOf(u'\n', lineStart);
        const qsizetype lineEnd = lineFeed < 0 ? text.size() : lineFeed;
        const QStringView line = QStringView(text).sliced(lineStart, lineEnd - lineStart);
        if (trimSpacesAndTabs(line) == u"---") {
            bodyStart = lineFeed < 0 ? text.size() : lineFeed + 1;
            break;
        }
        headerLines.append(line);
        if (lineFeed < 0)
            break;
        lineStart = lineFeed + 1;
    }
    if (bodyStart < 0)
        return {{}, std::move(text)};

    ParseResult result;
    for (const QStringView line : std::as_const(headerLines)) {
        const qsizetype colon = line.indexOf(u':');
        if (colon < 0)
            continue;
        const QStringView key = trimSpacesAndTabs(line.first(colon));
        if (key.isEmpty())
            continue;
        result.matter.insert(key.toString(), trimSpacesAndTabs(line.sliced(colon + 1)).toString());
    }
    headerLines.clear(); // they view the text that becomes the body
    text.remove(0, bodyStart);
    result.body = std::move(text);
    return result;
}

QStringList parseList(const QString &value)
{
    QStringView items = trimSpacesAndTabs(value);
    if (items.startsWith(u'[') && items.endsWith(u']'))
        items = items.sliced(1, items.size() - 2);
    QStringList result;
    for (const QStringView piece : items.split(u',')) {
        const QStringView item = trimSpacesAndTabs(piece);
        if (!item.isEmpty())
            result.append(item.toString());
    }
    return result;
}

QString serialize(const PromptFrontMatter &matter)
{
    QString out = QStringLiteral("---\ntitle: ") + scalar(matter.title) + u'\n';
    if (!matter.tags.isEmpty())
        out += u"tags: [" + matter.tags.join(u", ") + u"]\n";
    if (!matter.model.isEmpty())
        out += u"model: " + scalar(matter.model) + u'\n';
    if (matter.pinned)
        out += u"pinned: true\n";
    out += u"---\n";
    return out;
}

QString bodyAfterHeader(QStringView body)
{
    if (body.startsWith(u'\n'))
        return body.toString();
    return u'\n' + body;
}

PromptFrontMatter fromMatter(const QHash<QString, QString> &matter)
{
    PromptFrontMatter fields;
    fields.title = matter.value(QStringLiteral("title"));
    fields.tags = parseList(matter.value(QStringLiteral("tags")));
    fields.model = matter.value(QStringLiteral("model"));
    fields.pinned = matter.value(QStringLiteral("pinned")).toLower() == u"true";
    return fields;
}

} // namespace FrontMatter
