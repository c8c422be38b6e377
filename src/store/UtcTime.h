#pragma once

#include <QDateTime>
#include <QTimeZone>

// UTC date-times that build without deprecation warnings on every Qt 6 the app
// supports: Qt 6.9 deprecates the Qt::TimeSpec forms, and QTimeZone::UTC, which
// replaces them, only arrived in Qt 6.5. Both give a Qt::UTC date-time.
namespace UtcTime {

inline QDateTime fromMSecsSinceEpoch(qint64 msecs)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QDateTime::fromMSecsSinceEpoch(msecs, QTimeZone::UTC);
#else
    return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
#endif
}

inline QDateTime at(QDate date, QTime time)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QDateTime(date, time, QTimeZone::UTC);
#else
    return QDateTime(date, time, Qt::UTC);
#endif
}

} // namespace UtcTime
