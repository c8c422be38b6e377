#include "OtherVersionBar.h"

#include "ui/theme/Theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

OtherVersionBar::OtherVersionBar(QWidget *parent)
    : QWidget(parent)
    , m_message(new QLabel(QStringLiteral("Another program changed this prompt while you were typing. Your text "
                                          "was saved over it."),
                           this))
    , m_restore(new QPushButton(QStringLiteral("Restore Other Version"), this))
    , m_keep(new QPushButton(QStringLiteral("Keep Mine"), this))
{
    setObjectName(QStringLiteral("otherVersionBar"));
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window); // not the editor's text background it sits in
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(14, 6, 14, 6);
    row->setSpacing(8);
    m_message->setFont(Theme::font(12));
    m_message->setWordWrap(true);
    m_restore->setObjectName(QStringLiteral("restoreOtherVersion"));
    m_keep->setObjectName(QStringLiteral("keepMine"));
    for (QPushButton *button : {m_restore, m_keep}) {
        button->setFont(Theme::font(12));
        button->setAutoDefault(false);
    }
    row->addWidget(m_message, 1);
    row->addWidget(m_restore);
    row->addWidget(m_keep);
    connect(m_restore, &QPushButton::clicked, this, &OtherVersionBar::restoreRequested);
    connect(m_keep, &QPushButton::clicked, this, &OtherVersionBar::keepRequested);
    restyle();
}

void OtherVersionBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        restyle();
    QWidget::changeEvent(event);
}

void OtherVersionBar::restyle()
{
    // A wash of the accent over the window colour, in either scheme.
    const QPalette &p = parentWidget() ? parentWidget()->palette() : palette();
    QColor wash = Theme::accent(p);
    const QColor window = p.color(QPalette::Window);
    const qreal mix = Theme::isDark(p) ? 0.25 : 0.12;
    wash = QColor::fromRgbF(window.redF() + (wash.redF() - window.redF()) * mix,
                            window.greenF() + (wash.greenF() - window.greenF()) * mix,
                            window.blueF() + (wash.blueF() - window.blueF()) * mix);
    QPalette own = palette();
    own.setColor(QPalette::Window, wash);
    if (own != palette())
        setPalette(own);
}
