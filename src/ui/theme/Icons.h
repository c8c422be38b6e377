#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

// The app's own symbols (resources/icons/<name>.svg), tinted to a colour so
// that they follow light and dark palettes.
namespace Icons {

QPixmap pixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio);
QIcon icon(const QString &name, const QColor &color, int size = 16);
QIcon appIcon();

} // namespace Icons
