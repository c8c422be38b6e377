#include "Theme.h"

#include <QFontDatabase>
#include <QFrame>
#include <QLabel>

namespace Theme {

QFont font(qreal points, QFont::Weight weight)
{
    QFont f = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    f.setPixelSize(qRound(points));
    f.setWeight(weight);
    return f;
}

QFont monospaceFont(qreal points, QFont::Weight weight)
{
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setStyleHint(QFont::Monospace);
    f.setPixelSize(qRound(points));
    f.setWeight(weight);
    return f;
}

namespace {
QColor withAlpha(QColor color, qreal alpha)
{
    color.setAlphaF(alpha);
    return color;
}
} // namespace

QColor primaryText(const QPalette &palette)
{
    return palette.color(QPalette::Text);
}

QColor secondaryText(const QPalette &palette)
{
    return withAlpha(palette.color(QPalette::Text), isDark(palette) ? 0.62 : 0.58);
}

QColor tertiaryText(const QPalette &palette)
{
    return withAlpha(palette.color(QPalette::Text), isDark(palette) ? 0.42 : 0.40);
}

QColor accent(const QPalette &palette)
{
    return palette.color(QPalette::Active, QPalette::Highlight);
}

QColor noticeGreen(const QPalette &palette)
{
    return isDark(palette) ? QColor(0x4c, 0xd9, 0x64) : QColor(0x1f, 0x9d, 0x3a);
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5;
}

void wrapToWidth(QLabel *label, int width)
{
    label->setWordWrap(true);
    label->setFixedWidth(width);
    label->setMinimumHeight(label->heightForWidth(width));
}

QFrame *divider(QWidget *parent, Qt::Orientation orientation)
{
    auto *line = new QFrame(parent);
    line->setObjectName(QStringLiteral("divider"));
    line->setFrameShape(QFrame::NoFrame);
    line->setAutoFillBackground(true);
    line->setBackgroundRole(QPalette::Mid);
    if (orientation == Qt::Horizontal)
        line->setFixedHeight(1);
    else
        line->setFixedWidth(1);
    return line;
}

} // namespace Theme
