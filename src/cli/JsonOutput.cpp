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

} // namespace JsonOutput
