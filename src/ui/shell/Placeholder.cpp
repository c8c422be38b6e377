#include "Placeholder.h"

#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

Placeholder::Placeholder(const QString &symbol, int symbolSize, QWidget *parent)
    : QWidget(parent)
    , m_symbol(symbol)
    , m_symbolSize(symbolSize)
    , m_icon(new QLabel(this))
    , m_headline(new QLabel(this))
    , m_note(new QLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    layout->addStretch();
    for (QLabel *label : {m_icon, m_headline, m_note}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label, 0, Qt::AlignHCenter);
    }
    layout->addStretch();
    m_headline->setFont(Theme::font(14));
    m_note->setFont(Theme::font(11));
    m_headline->setObjectName(QStringLiteral("headline"));
    Theme::setTextTone(m_headline, Theme::Tone::Secondary);
    Theme::setTextTone(m_note, Theme::Tone::Tertiary);
    m_note->setObjectName(QStringLiteral("note"));
    updateColors();
}

void Placeholder::setTexts(const QString &headline, const QString &note)
{
    m_headline->setText(headline);
    m_note->setText(note);
    Theme::wrapToWidth(m_note, 320);
}

QString Placeholder::headline() const
{
    return m_headline->text();
}

void Placeholder::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        updateColors();
    QWidget::changeEvent(event);
}

void Placeholder::updateColors()
{
    const QPalette &p = palette();
    m_icon->setPixmap(Icons::pixmap(m_symbol, Theme::tertiaryText(p), m_symbolSize, devicePixelRatioF()));
}
