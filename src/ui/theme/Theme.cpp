#include "Theme.h"

#include <QApplication>
#include <QEvent>
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
// The text colour at `alpha` over the window, as an opaque colour: some
// paths (labels on X11) draw text without its alpha, and came out black.
QColor textOverWindow(const QPalette &palette, qreal alpha)
{
    const QColor text = palette.color(QPalette::Text);
    const QColor under = palette.color(QPalette::Window);
    return QColor::fromRgbF(float(under.redF() + (text.redF() - under.redF()) * alpha),
                            float(under.greenF() + (text.greenF() - under.greenF()) * alpha),
                            float(under.blueF() + (text.blueF() - under.blueF()) * alpha));
}
} // namespace

QColor primaryText(const QPalette &palette)
{
    return palette.color(QPalette::Text);
}

QColor secondaryText(const QPalette &palette)
{
    return textOverWindow(palette, isDark(palette) ? 0.72 : 0.68);
}

QColor tertiaryText(const QPalette &palette)
{
    // The quietest text is still body text: 4.5:1 or better on the window
    // and the text background, in both schemes.
    return textOverWindow(palette, isDark(palette) ? 0.55 : 0.56);
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

namespace {

QColor toneColor(const QPalette &palette, Tone tone)
{
    switch (tone) {
    case Tone::Primary:
        return primaryText(palette);
    case Tone::Secondary:
        return secondaryText(palette);
    case Tone::Tertiary:
        return tertiaryText(palette);
    case Tone::Notice:
        return noticeGreen(palette);
    }
    return primaryText(palette);
}

const char *toneProperty = "vesk.textTone";

void applyTone(QWidget *widget)
{
    // Text and Window are inherited, so the tone follows the current scheme.
    const QColor color = toneColor(widget->palette(), Tone(widget->property(toneProperty).toInt()));
    if (widget->palette().color(QPalette::WindowText) == color)
        return;
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

class ToneKeeper : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
            applyTone(static_cast<QWidget *>(watched));
        return false;
    }
};

} // namespace

void setTextTone(QWidget *widget, Tone tone)
{
    static ToneKeeper *keeper = new ToneKeeper(qApp);
    // The tone is the window text; without this, text on a Base background
    // (the detail area) is drawn in the Text role and stays untoned.
    widget->setForegroundRole(QPalette::WindowText);
    widget->setProperty(toneProperty, int(tone));
    widget->removeEventFilter(keeper);
    widget->installEventFilter(keeper);
    applyTone(widget);
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
