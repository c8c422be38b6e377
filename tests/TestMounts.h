#pragma once

// Small, real file systems for fault tests: a tmpfs of a chosen size mounted
// on a temporary folder. Mounting needs root (CI runs as root); elsewhere the
// tests that need one skip with the reason.

#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>

class ScratchMount
{
public:
    // Mounts a tmpfs of `bytes` on a fresh folder. isMounted() says whether it worked.
    explicit ScratchMount(qint64 bytes)
    {
        if (!m_dir.isValid())
            return;
        const QByteArray options = "size=" + QByteArray::number(bytes) + ",mode=0755";
        if (::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs", 0, options.constData()) == 0)
            m_mounted = true;
        else
            m_error = QString::fromLocal8Bit(std::strerror(errno));
    }
    ~ScratchMount()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_dir.path()).constData(), MNT_DETACH);
    }
    ScratchMount(const ScratchMount &) = delete;
    ScratchMount &operator=(const ScratchMount &) = delete;

    bool isMounted() const { return m_mounted; }
    QString path() const { return m_dir.path(); }
    QString skipReason() const { return u"cannot mount a tmpfs here (needs root): " + m_error; }

    // Makes the mount read-only (or writable again) in place.
    bool setReadOnly(bool readOnly)
    {
        const unsigned long flags = MS_REMOUNT | (readOnly ? static_cast<unsigned long>(MS_RDONLY) : 0UL);
        return ::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs", flags, nullptr) == 0;
    }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
    QString m_error;
};

// Mounts a tmpfs on an existing folder (inside another file system), so that
// the folder becomes a mount point that cannot be removed while mounted.
class NestedMount
{
public:
    explicit NestedMount(const QString &folder) : m_path(folder)
    {
        m_mounted = ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, "size=1m") == 0;
    }
    ~NestedMount()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_path).constData(), MNT_DETACH);
    }
    NestedMount(const NestedMount &) = delete;
    NestedMount &operator=(const NestedMount &) = delete;
    bool isMounted() const { return m_mounted; }

private:
    QString m_path;
    bool m_mounted = false;
};

#define SKIP_UNLESS_MOUNTED(mount)                                                                               \
    do {                                                                                                         \
        if (!(mount).isMounted())                                                                                \
            QSKIP(qPrintable((mount).skipReason()));                                                             \
    } while (false)
