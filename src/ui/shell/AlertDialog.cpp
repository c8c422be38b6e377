#include "AlertDialog.h"

#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace {

// The app's icon; a warning wears the style's caution sign in its corner.
QPixmap alertIcon(Alert::Style style, const QWidget *widget)
{
    const int size = 56;
    QPixmap icon = Icons::appIcon().pixmap(size, size);
    if (style != Alert::Style::Warning)
        return icon;
    const QPixmap caution = widget->style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, widget).pixmap(24, 24);
    QPainter painter(&icon);
    painter.drawPixmap(size - 24, size - 24, caution);
    return icon;
}

} // namespace

AlertDialog::AlertDialog(const Alert &alert, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QApplication::applicationDisplayName());
    setWindowModality(Qt::WindowModal);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(16);
    auto *icon = new QLabel(this);
    icon->setPixmap(alertIcon(alert.style, this));
    layout->addWidget(icon, 0, Qt::AlignTop);

    auto *column = new QVBoxLayout;
    column->setSpacing(8);
    auto *message = new QLabel(alert.message, this);
    message->setObjectName(QStringLiteral("message"));
    message->setTextFormat(Qt::PlainText);
    message->setFont(Theme::font(13, QFont::Bold));
    Theme::wrapToWidth(message, 300);
    column->addWidget(message);
    auto *informative = new QLabel(alert.informative, this);
    informative->setObjectName(QStringLiteral("informative"));
    informative->setTextFormat(Qt::PlainText);
    informative->setFont(Theme::font(11));
    Theme::wrapToWidth(informative, 300);
    column->addWidget(informative);

    if (alert.field) {
        m_field = new QLineEdit(*alert.field, this);
        m_field->setObjectName(QStringLiteral("field"));
        m_field->setFixedWidth(260);
        m_field->setMinimumHeight(22);
        m_field->selectAll();
        column->addWidget(m_field);
    }

    const QStringList titles = alert.buttons.isEmpty() ? QStringList{QStringLiteral("OK")} : alert.buttons;
    auto *buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    for (qsizetype i = 0; i < titles.size(); ++i) {
        auto *button = new QPushButton(titles[i], this);
        button->setAutoDefault(false);
        button->setDefault(i == 0);
        connect(button, &QPushButton::clicked, this, [this, i] {
            m_chosen = int(i);
            i == 0 ? accept() : reject();
        });
        m_buttons.append(button);
    }
    for (auto it = m_buttons.crbegin(); it != m_buttons.crend(); ++it)
        buttonRow->addWidget(*it); // the first button ends up rightmost
    column->addSpacing(6);
    column->addLayout(buttonRow);
    layout->addLayout(column);

    if (m_field)
        m_field->setFocus();
    else
        m_buttons.first()->setFocus();
}

AlertAnswer DialogAlerts::run(const Alert &alert)
{
    AlertDialog dialog(alert, m_parent);
    dialog.exec();
    return {dialog.chosenButton(), dialog.field() ? dialog.field()->text() : QString()};
}
