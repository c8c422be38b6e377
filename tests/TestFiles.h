#pragma once

// Helpers for tests that work on real files in a temporary folder.

#include "UtcTime.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace TestFiles {

inline void write(const QString &path, const QByteArray &bytes, const QDateTime &modified = {})
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(bytes), bytes.size());
    QVERIFY(file.flush()); // a later flush would set the time again
    if (modified.isValid())
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

inline QByteArray read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArrayLiteral("<missing>");
    return file.readAll();
}

// A fixed point in time plus `seconds`, so that modification order is explicit.
inline QDateTime at(int seconds)
{
    return UtcTime::at(QDate(2026, 1, 1), QTime(12, 0)).addSecs(seconds);
}

// The ids of prompts, in their order.
template<typename Prompts>
QStringList ids(const Prompts &prompts)
{
    QStringList result;
    for (const auto &p : prompts)
        result.append(p.id);
    return result;
}

} // namespace TestFiles
