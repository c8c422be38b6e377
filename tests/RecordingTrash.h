#pragma once

#include "platform/Trash.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

// Stands in for the user's Trash while it lives: items move into a folder of
// its own, so no test touches the account's real Trash (on macOS the
// Finder's Trash belongs to the account whatever HOME says). Like a Trash,
// it refuses what is not there and removes nothing on failure.
class RecordingTrash final : public Trash
{
public:
    RecordingTrash() { setCurrent(this); }
    ~RecordingTrash() override { setCurrent(nullptr); }
    RecordingTrash(const RecordingTrash &) = delete;
    RecordingTrash &operator=(const RecordingTrash &) = delete;

    bool trashItem(const QString &path, QString *error) override
    {
        const QFileInfo item(path);
        if (!item.exists() && !item.isSymLink()) {
            *error = QStringLiteral("No such file or directory");
            return false;
        }
        // One folder per item, so equal names never collide.
        const QString holder = m_folder.path() + u'/' + QString::number(trashed.size());
        if (!QDir().mkpath(holder) || !QDir().rename(item.absoluteFilePath(), holder + u'/' + item.fileName())) {
            *error = QStringLiteral("Could not move %1 to the stand-in Trash").arg(path);
            return false;
        }
        trashed.append(item.absoluteFilePath());
        return true;
    }

    // Where the n-th trashed item is now, or (with `inside`) a path inside it.
    QString trashedPath(qsizetype n, const QString &inside = {}) const
    {
        const QString item = m_folder.path() + u'/' + QString::number(n) + u'/'
            + QFileInfo(trashed.value(n)).fileName();
        return inside.isEmpty() ? item : item + u'/' + inside;
    }

    QStringList trashed; // the original absolute paths, in order

private:
    QTemporaryDir m_folder;
};
