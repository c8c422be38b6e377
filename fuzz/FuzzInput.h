#pragma once

// Turns a fuzzer's bytes into the strings a harness needs, and stops with a
// message when an invariant breaks (libFuzzer records the input).

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace FuzzInput {

inline QString text(const uint8_t *data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
}

// Pieces of the input separated by the byte 0x01 (absent from real text).
inline QStringList pieces(const uint8_t *data, size_t size)
{
    QStringList result;
    for (const QByteArray &piece : QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size)).split('\x01'))
        result.append(QString::fromUtf8(piece));
    return result;
}

[[noreturn]] inline void fail(const char *what, const QString &detail = {})
{
    std::fprintf(stderr, "invariant broken: %s\n%s\n", what, detail.toUtf8().constData());
    std::abort();
}

inline void check(bool condition, const char *what, const QString &detail = {})
{
    if (!condition)
        fail(what, detail);
}

} // namespace FuzzInput
