#include "Variables.h"

#include <QRegularExpression>
#include <QSet>

namespace Variables {

namespace {

const QRegularExpression &placeholderPattern()
{
    // The white-space class is spelled out as ICU's \s ([\t\n\f\r\p{Z}]) so
    // that which placeholders match does not depend on the regex engine.
    static const QRegularExpression pattern(QStringLiteral(
        R"(\{\{[\t\n\f\r\p{Z}]*([A-Za-z_][A-Za-z0-9_]*)[\t\n\f\r\p{Z}]*\}\})"));
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
    QList<QRegularExpressionMatch> matches;
    auto it = placeholderPattern().globalMatch(text);
    while (it.hasNext())
        matches.append(it.next());

    QString result = text;
    for (auto match = matches.crbegin(); match != matches.crend(); ++match) {
        const auto value = values.constFind(match->captured(1));
        if (value != values.constEnd())
            result.replace(match->capturedStart(), match->capturedLength(), *value);
    }
    return result;
}

} // namespace Variables
