#include "Variables.h"

#include <QRegularExpression>
#include <QSet>

namespace Variables {

namespace {

const QRegularExpression &placeholderPattern()
{
    // The white-space class is spelled out as the Unicode White_Space
    // property (what ICU's \s matches: tab to carriage return, next line and
    // the separators), so that matching does not depend on the regex engine.
    static const QRegularExpression pattern(QStringLiteral(
        R"(\{\{[\t-\r\x{85}\p{Z}]*([A-Za-z_][A-Za-z0-9_]*)[\t-\r\x{85}\p{Z}]*\}\})"));
    return pattern;
}

} // namespace

QStringList extract(const QString &text)
{
    QStringList names;
    if (!text.contains(u"{{"))
        return names;
    QSet<QString> seen;
    auto matches = placeholderPattern().globalMatch(text);
    while (matches.hasNext()) {
        QString name = matches.next().captured(1);
        if (!seen.contains(name)) {
            seen.insert(name);
            names.append(std::move(name));
        }
    }
    return names;
}

QString substitute(const QString &text, const QHash<QString, QString> &values)
{
    if (values.isEmpty() || !text.contains(u"{{"))
        return text;
    // One pass: the text between placeholders and each value are appended
    // in order, so the cost is linear in the text and the values.
    QString result;
    qsizetype copiedUpTo = 0;
    auto it = placeholderPattern().globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const auto value = values.constFind(match.captured(1));
        if (value == values.constEnd())
            continue;
        if (result.isEmpty())
            result.reserve(text.size());
        result += QStringView(text).sliced(copiedUpTo, match.capturedStart() - copiedUpTo);
        result += *value;
        copiedUpTo = match.capturedEnd();
    }
    if (copiedUpTo == 0)
        return text;
    result += QStringView(text).sliced(copiedUpTo);
    return result;
}

} // namespace Variables
