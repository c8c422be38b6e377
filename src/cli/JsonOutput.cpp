#include "JsonOutput.h"

#include <QJsonDocument>

namespace JsonOutput {

QJsonObject promptObject(const Prompt &prompt)
{
    return QJsonObject{
        {QStringLiteral("id"), prompt.id},
        {QStringLiteral("project"), prompt.projectName},
        {QStringLiteral("file"), prompt.filePath()},
        {QStringLiteral("title"), prompt.frontMatter.title},
        {QStringLiteral("displayTitle"), prompt.displayTitle()},
        {QStringLiteral("tags"), stringArray(prompt.frontMatter.tags)},
        {QStringLiteral("model"), prompt.frontMatter.model},
        {QStringLiteral("pinned"), prompt.frontMatter.pinned},
        {QStringLiteral("body"), prompt.body},
        {QStringLiteral("modifiedAt"), prompt.modifiedAt.toUTC().toString(Qt::ISODateWithMs)},
    };
}

QJsonObject projectObject(const Project &project)
{
    return QJsonObject{
        {QStringLiteral("name"), project.name},
        {QStringLiteral("path"), project.path()},
        {QStringLiteral("promptCount"), project.promptCount},
    };
}

QJsonArray promptArray(const QList<Prompt> &prompts)
{
    QJsonArray array;
    for (const Prompt &prompt : prompts)
        array.append(promptObject(prompt));
    return array;
}

QJsonArray stringArray(const QStringList &strings)
{
    return QJsonArray::fromStringList(strings);
}

QByteArray text(const QJsonValue &value)
{
    if (value.isArray())
        return QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact) + '\n';
    if (value.isObject())
        return QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact) + '\n';
    // QJsonDocument holds only arrays and objects: wrap the scalar and unwrap it.
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return wrapped.mid(1, wrapped.size() - 2) + '\n';
}

namespace {

// A JSON string as Qt's writer spells it: quote, backslash and control
// characters escaped (the short forms where JSON has them), all else as UTF-8.
void appendString(QByteArray *out, QStringView text)
{
    static constexpr char hex[] = "0123456789abcdef";
    out->append('"');
    const QByteArray utf8 = text.toUtf8();
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const uchar c = uchar(utf8[i]);
        if (c >= 0x20 && c != '"' && c != '\\')
            continue;
        out->append(utf8.constData() + plainFrom, i - plainFrom);
        plainFrom = i + 1;
        out->append('\\');
        switch (c) {
        case '"': out->append('"'); break;
        case '\\': out->append('\\'); break;
        case '\b': out->append('b'); break;
        case '\f': out->append('f'); break;
        case '\n': out->append('n'); break;
        case '\r': out->append('r'); break;
        case '\t': out->append('t'); break;
        default:
            out->append("u00");
            out->append(hex[c >> 4]);
            out->append(hex[c & 15]);
        }
    }
    out->append(utf8.constData() + plainFrom, utf8.size() - plainFrom);
    out->append('"');
}

void appendKey(QByteArray *out, const char *key)
{
    out->append('"').append(key).append("\":");
}

} // namespace

void appendPrompt(QByteArray *out, const Prompt &prompt)
{
    // The keys in the order QJsonObject keeps them: sorted.
    out->append('{');
    appendKey(out, "body");
    appendString(out, prompt.body);
    out->append(',');
    appendKey(out, "displayTitle");
    appendString(out, prompt.displayTitle());
    out->append(',');
    appendKey(out, "file");
    appendString(out, prompt.filePath());
    out->append(',');
    appendKey(out, "id");
    appendString(out, prompt.id);
    out->append(',');
    appendKey(out, "model");
    appendString(out, prompt.frontMatter.model);
    out->append(',');
    appendKey(out, "modifiedAt");
    appendString(out, prompt.modifiedAt.toUTC().toString(Qt::ISODateWithMs));
    out->append(',');
    appendKey(out, "pinned");
    out->append(prompt.frontMatter.pinned ? "true" : "false");
    out->append(',');
    appendKey(out, "project");
    appendString(out, prompt.projectName);
    out->append(',');
    appendKey(out, "tags");
    out->append('[');
    for (qsizetype i = 0; i < prompt.frontMatter.tags.size(); ++i) {
        if (i > 0)
            out->append(',');
        appendString(out, prompt.frontMatter.tags[i]);
    }
    out->append("],");
    appendKey(out, "title");
    appendString(out, prompt.frontMatter.title);
    out->append('}');
}

} // namespace JsonOutput
