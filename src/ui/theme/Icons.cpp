#include "Icons.h"

#include <QHash>
#include <QPainter>
#include <QSvgRenderer>
#include <QtMath>

// The icons live in a static library, whose resources must be registered.
static void registerIconResources()
{
    static const bool registered = [] {
        Q_INIT_RESOURCE(icons);
        return true;
    }();
    Q_UNUSED(registered);
}

namespace Icons {

QPixmap pixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio)
{
    static QHash<QString, QPixmap> cache;
    const QString key = name + u'|' + color.name(QColor::HexArgb) + u'|' + QString::number(size) + u'|'
        + QString::number(devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return *it;

    registerIconResources();
    const int pixels = qCeil(size * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(u":/icons/" + name + u".svg");
    if (renderer.isValid()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
    } else {
        qWarning("Vesk: missing icon %s", qPrintable(name));
    }
    QPixmap result = QPixmap::fromImage(image);
    result.setDevicePixelRatio(devicePixelRatio);
    cache.insert(key, result);
    return result;
}

QIcon icon(const QString &name, const QColor &color, int size)
{
    QIcon result;
    for (const qreal ratio : {1.0, 2.0})
        result.addPixmap(pixmap(name, color, size, ratio));
    return result;
}

QIcon appIcon()
{
    registerIconResources();
    QIcon result;
    QSvgRenderer renderer(QStringLiteral(":/icons/AppIcon.svg"));
    for (const int size : {16, 32, 64, 128, 256, 512}) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        result.addPixmap(QPixmap::fromImage(image));
    }
    return result;
}

} // namespace Icons
