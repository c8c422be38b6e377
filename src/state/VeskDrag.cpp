#include "VeskDrag.h"

#include "AppIdentity.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>

namespace DragPayloads {

QString promptDragType()
{
    return AppIdentity::appId + u".prompt-drag";
}

QString sectionDragType()
{
    return AppIdentity::appId + u".section-drag";
}

QByteArray encodePrompts(const QStringList &ids)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("ids"), QJsonArray::fromStringList(ids)}})
        .toJson(QJsonDocument::Compact);
}

QByteArray encodeSection(const QString &id)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("id"), id}}).toJson(QJsonDocument::Compact);
}

namespace {

std::optional<QJsonObject> jsonObject(const QByteArray &data)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

// Like a strict decoder: the member must be there and every element a string.
std::optional<QStringList> stringArray(const QJsonValue &value)
{
    if (!value.isArray())
        return std::nullopt;
    QStringList strings;
    for (const QJsonValue &element : value.toArray()) {
        if (!element.isString())
            return std::nullopt;
        strings.append(element.toString());
    }
    return strings;
}

} // namespace

std::optional<VeskDrag> decode(const QString &type, const QByteArray &data)
{
    const std::optional<QJsonObject> object = jsonObject(data);
    if (!object)
        return std::nullopt;
    if (type == promptDragType()) {
        const std::optional<QStringList> ids = stringArray(object->value(u"ids"));
        if (!ids)
            return std::nullopt;
        return VeskDrag{VeskDrag::Kind::Prompts, *ids};
    }
    if (type == sectionDragType()) {
        const QJsonValue id = object->value(u"id");
        if (!id.isString())
            return std::nullopt;
        return VeskDrag{VeskDrag::Kind::Section, {id.toString()}};
    }
    return std::nullopt;
}

QMimeData *promptMimeData(const QStringList &ids)
{
    auto *data = new QMimeData;
    data->setData(promptDragType(), encodePrompts(ids));
    return data;
}

QMimeData *sectionMimeData(const QString &id)
{
    auto *data = new QMimeData;
    data->setData(sectionDragType(), encodeSection(id));
    return data;
}

bool carriesAny(const QMimeData &data, const QStringList &types)
{
    for (const QString &type : types) {
        if (data.hasFormat(type))
            return true;
    }
    return false;
}

QList<VeskDrag> decodeAll(const QMimeData &data, const QStringList &acceptedTypes)
{
    QList<VeskDrag> drags;
    for (const QString &type : acceptedTypes) {
        if (!data.hasFormat(type))
            continue;
        if (const std::optional<VeskDrag> drag = decode(type, data.data(type)))
            drags.append(*drag);
    }
    return drags;
}

} // namespace DragPayloads
