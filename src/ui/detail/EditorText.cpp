#include "EditorText.h"

#include <QTextDocument>

namespace EditorText {

namespace {

bool isLineBreak(QChar c)
{
    return c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

bool isPairAt(const QString &text, qsizetype i)
{
    return i + 1 < text.size() && text[i] == u'\r' && text[i + 1] == u'\n';
}

// The line end the body uses most; a line feed when it has none.
QString usualLineEnd(const QString &body)
{
    qsizetype pairs = 0, feeds = 0, returns = 0;
    for (qsizetype i = 0; i < body.size(); ++i) {
        if (isPairAt(body, i)) {
            ++pairs;
            ++i;
        } else if (body[i] == u'\n') {
            ++feeds;
        } else if (body[i] == u'\r') {
            ++returns;
        }
    }
    if (pairs > feeds && pairs >= returns)
        return QStringLiteral("\r\n");
    if (returns > feeds && returns > pairs)
        return QStringLiteral("\r");
    return QStringLiteral("\n");
}

// Index in `body` of the character shown at `shown` in the editor.
qsizetype bodyIndexFromFront(const QString &body, qsizetype shown)
{
    qsizetype i = 0;
    for (qsizetype j = 0; j < shown; ++j)
        i += isPairAt(body, i) ? 2 : 1;
    return i;
}

// Index in `body` where its last `shownFromBack` editor characters start.
qsizetype bodyIndexFromBack(const QString &body, qsizetype shownFromBack)
{
    qsizetype i = body.size();
    for (qsizetype j = 0; j < shownFromBack; ++j)
        i -= (i >= 2 && body[i - 1] == u'\n' && body[i - 2] == u'\r') ? 2 : 1;
    return i;
}

} // namespace

QString fromBody(const QString &body)
{
    QString text = body;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar &c : text) {
        if (isLineBreak(c))
            c = u'\n';
    }
    return text;
}

QString fromDocument(const QTextDocument *document)
{
    // Not toPlainText(): it also turns no-break spaces into plain ones.
    QString text = document->toRawText();
    for (QChar &c : text) {
        if (c == QChar::ParagraphSeparator || c == QChar::LineSeparator)
            c = u'\n';
    }
    return text;
}

Change difference(const QString &before, const QString &after)
{
    const qsizetype shorter = std::min(before.size(), after.size());
    qsizetype front = 0;
    while (front < shorter && before[front] == after[front])
        ++front;
    qsizetype back = 0;
    while (back < shorter - front && before[before.size() - 1 - back] == after[after.size() - 1 - back])
        ++back;
    return {int(front), int(before.size() - front - back), int(after.size() - front - back)};
}

namespace {

// Lines with their line feeds, as views into `text`.
QList<QStringView> splitLines(const QString &text)
{
    QList<QStringView> lines;
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype feed = text.indexOf(u'\n', start);
        const qsizetype end = feed < 0 ? text.size() : feed + 1;
        lines.append(QStringView(text).sliced(start, end - start));
        start = end;
    }
    return lines;
}

} // namespace

QList<Change> lineChanges(const QString &before, const QString &after)
{
    const Change whole = difference(before, after);
    if (whole.removed == 0 && whole.inserted == 0)
        return {};
    const QList<QStringView> a = splitLines(before);
    const QList<QStringView> b = splitLines(after);

    // Longest common subsequence of lines; past a size where that costs too
    // much, one change covers the differing stretch.
    qsizetype front = 0;
    while (front < a.size() && front < b.size() && a[front] == b[front])
        ++front;
    qsizetype back = 0;
    while (back < a.size() - front && back < b.size() - front && a[a.size() - 1 - back] == b[b.size() - 1 - back])
        ++back;
    const qsizetype n = a.size() - front - back;
    const qsizetype m = b.size() - front - back;
    constexpr qsizetype maxCells = 4'000'000;
    if (n == 0 || m == 0 || (n + 1) * (m + 1) > maxCells)
        return {whole};
    QList<int> lengths((n + 1) * (m + 1), 0); // suffix LCS lengths
    const auto at = [&](qsizetype i, qsizetype j) -> int & { return lengths[i * (m + 1) + j]; };
    for (qsizetype i = n - 1; i >= 0; --i) {
        for (qsizetype j = m - 1; j >= 0; --j)
            at(i, j) = a[front + i] == b[front + j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    }

    qsizetype offsetA = 0, offsetB = 0; // character offsets of line `front + i` / `front + j`
    for (qsizetype k = 0; k < front; ++k)
        offsetA += a[k].size();
    offsetB = offsetA;
    QList<Change> changes;
    qsizetype i = 0, j = 0;
    while (i < n || j < m) {
        if (i < n && j < m && a[front + i] == b[front + j]) {
            offsetA += a[front + i++].size();
            offsetB += b[front + j++].size();
            continue;
        }
        // A run of differing lines: collect it, then trim it to the characters.
        qsizetype removed = 0, inserted = 0;
        while ((i < n || j < m) && !(i < n && j < m && a[front + i] == b[front + j])) {
            if (j >= m || (i < n && at(i + 1, j) >= at(i, j + 1)))
                removed += a[front + i++].size();
            else
                inserted += b[front + j++].size();
        }
        const Change inner = difference(before.mid(offsetA, removed), after.mid(offsetB, inserted));
        changes.append({int(offsetA + inner.start), inner.removed, inner.inserted});
        offsetA += removed;
        offsetB += inserted;
    }
    return changes;
}

QString toBody(const QString &body, const QString &before, const QString &after)
{
    if (before == after)
        return body;
    const QString lineEnd = usualLineEnd(body);
    const auto withLineEnds = [&](QString text) {
        if (lineEnd != u"\n")
            text.replace(u'\n', lineEnd);
        return text;
    };
    // `before` must be what the editor showed for `body`; if not, the
    // positions cannot be matched and the whole text takes the usual line end.
    if (body.size() - body.count(QStringLiteral("\r\n")) != before.size())
        return withLineEnds(after);

    const Change change = difference(before, after);
    qsizetype start = change.start;                   // the same in both
    qsizetype end = change.start + change.removed;    // in `before`
    qsizetype afterEnd = change.start + change.inserted;
    while (true) {
        const QString left = body.left(bodyIndexFromFront(body, start));
        const QString middle = withLineEnds(after.mid(start, afterEnd - start));
        const QString right = body.mid(bodyIndexFromBack(body, before.size() - end));
        // A lone CR meeting a lone LF would read as one CR LF break: take
        // the character on the kept side into the changed stretch instead.
        const QString &next = middle.isEmpty() ? right : middle;
        if (left.endsWith(u'\r') && next.startsWith(u'\n')) {
            --start;
            continue;
        }
        if (!middle.isEmpty() && middle.endsWith(u'\r') && right.startsWith(u'\n')) {
            ++end;
            ++afterEnd;
            continue;
        }
        return left + middle + right;
    }
}

int mapCursor(const QString &before, const QString &after, int position)
{
    position = std::clamp(position, 0, int(before.size()));
    if (position == 0)
        return 0;
    // When `after` holds all of `before` in order (quotes or escapes added),
    // the cursor stays behind the character it followed.
    qsizetype j = 0;
    qsizetype behind = -1;
    for (qsizetype i = 0; i < before.size(); ++i, ++j) {
        while (j < after.size() && after[j] != before[i])
            ++j;
        if (j == after.size())
            break;
        if (i == position - 1)
            behind = j;
        if (i == before.size() - 1 && behind >= 0)
            return int(behind + 1);
    }
    // Otherwise: before the change it stays, after it it moves with the text.
    const Change change = difference(before, after);
    if (position <= change.start)
        return position;
    if (position >= change.start + change.removed)
        return position + change.inserted - change.removed;
    return change.start + change.inserted;
}

} // namespace EditorText
