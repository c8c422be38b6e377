// Renders an SVG icon to PNG files of the given sizes, for the desktop icon
// theme on Linux and the app icon set on macOS. Runs at build time, headless.
//   render_icon ICON.svg SIZE OUT.png [SIZE OUT.png]...

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char *argv[])
{
    // Painting an SVG into a QImage needs no display and no GUI application,
    // so this runs on build machines without either.
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4 || args.size() % 2 != 0) {
        std::fprintf(stderr, "usage: render_icon ICON.svg SIZE OUT.png [SIZE OUT.png]...\n");
        return 2;
    }
    QSvgRenderer renderer(args.at(1));
    if (!renderer.isValid()) {
        std::fprintf(stderr, "render_icon: cannot read %s\n", qPrintable(args.at(1)));
        return 1;
    }
    for (qsizetype i = 2; i + 1 < args.size(); i += 2) {
        bool ok = false;
        const int size = args.at(i).toInt(&ok);
        if (!ok || size <= 0 || size > 4096) {
            std::fprintf(stderr, "render_icon: bad size %s\n", qPrintable(args.at(i)));
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        renderer.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        if (!image.save(args.at(i + 1), "PNG")) {
            std::fprintf(stderr, "render_icon: cannot write %s\n", qPrintable(args.at(i + 1)));
            return 1;
        }
    }
    return 0;
}
