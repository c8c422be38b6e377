// Placeholders: the one-pass substitution agrees with replacing the matches
// one by one from the last; an empty map changes nothing; names are unique.
#include "FuzzInput.h"
#include "Variables.h"

#include <QRegularExpression>
#include <QSet>

namespace {

// The plain rule, written independently of the code under test.
QString substituteOneByOne(const QString &text, const QHash<QString, QString> &values)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(\{\{[\t-\r\x{85}\p{Z}]*([A-Za-z_][A-Za-z0-9_]*)[\t-\r\x{85}\p{Z}]*\}\})"));
    QList<QRegularExpressionMatch> matches;
    auto it = pattern.globalMatch(text);
    while (it.hasNext())
        matches.append(it.next());
    QString result = text;
    for (auto match = matches.crbegin(); match != matches.crend(); ++match) {
        if (values.contains(match->captured(1)))
            result.replace(match->capturedStart(), match->capturedLength(), values.value(match->captured(1)));
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QStringList parts = FuzzInput::pieces(data, size);
    const QString text = parts.value(0);
    const QStringList names = Variables::extract(text);
    FuzzInput::check(QSet<QString>(names.cbegin(), names.cend()).size() == names.size(), "names are distinct", text);
    FuzzInput::check(Variables::substitute(text, {}) == text, "an empty map changes nothing", text);

    // Values for every name, and for some names that are not there.
    QHash<QString, QString> values;
    for (qsizetype i = 0; i < names.size(); ++i)
        values.insert(names[i], parts.value(1 + i % qMax<qsizetype>(1, parts.size() - 1)));
    values.insert(QStringLiteral("absent_name"), QStringLiteral("x"));
    FuzzInput::check(Variables::substitute(text, values) == substituteOneByOne(text, values),
                     "one pass equals one by one", text);

    // Values that cannot form part of a name or a brace leave no placeholder
    // of any of the names behind.
    QHash<QString, QString> inert;
    for (const QString &name : names)
        inert.insert(name, QStringLiteral("."));
    const QString filled = Variables::substitute(text, inert);
    for (const QString &name : Variables::extract(filled))
        FuzzInput::check(!inert.contains(name), "no placeholder of a filled name stays", text);
    return 0;
}
