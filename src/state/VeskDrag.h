#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QMimeData;

// What a drag inside the sidebar carries, once decoded: the ids of dragged
// prompts, or the id of one dragged section ("@pinned" or a project name).
struct VeskDrag
{
    enum class Kind { Prompts, Section };

    Kind kind = Kind::Prompts;
    QStringList payload;

    friend bool operator==(const VeskDrag &, const VeskDrag &) = default;
};

// The two private drag types and their JSON payloads: {"ids": [...]} for
// prompts, {"id": "..."} for a section. A drag is a QMimeData whose format is
// the type's name and whose data is the JSON text.
namespace DragPayloads {

// The app's identifier plus ".prompt-drag" / ".section-drag".
QString promptDragType();
QString sectionDragType();

QByteArray encodePrompts(const QStringList &ids);
QByteArray encodeSection(const QString &id);

// Nothing when the data is not that type's JSON object.
std::optional<VeskDrag> decode(const QString &type, const QByteArray &data);

// New mime data carrying one payload; the caller owns it.
QMimeData *promptMimeData(const QStringList &ids);
QMimeData *sectionMimeData(const QString &id);

// Whether `data` carries any of `types`, decodable or not.
bool carriesAny(const QMimeData &data, const QStringList &types);

// The payloads `data` carries under `acceptedTypes`, in that order; payloads
// that do not decode and other types are skipped.
QList<VeskDrag> decodeAll(const QMimeData &data, const QStringList &acceptedTypes);

} // namespace DragPayloads
