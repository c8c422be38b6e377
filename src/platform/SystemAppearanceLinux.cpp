#include "SystemAppearance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QWidget>
#include <QStyle>
#include <QStyleFactory>

#include <optional>

namespace SystemAppearance {

namespace {

// Fusion outlines boxes, radio buttons and text fields in the window colour
// made darker, which on a dark window leaves them without a visible edge.
// In the dark scheme they get a light one.
class VeskFusionStyle final : public QProxyStyle
{
public:
    VeskFusionStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool edged = element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton
            || element == PE_Frame || element == PE_FrameLineEdit;
        const QColor window = option->palette.color(QPalette::Window);
        if (!edged || window.lightnessF() >= 0.5 || option->rect.width() < 4)
            return;
        if (element == PE_Frame && widget && !widget->inherits("QAbstractScrollArea"))
            return;
        const QColor text = option->palette.color(QPalette::Text);
        const qreal mix = 0.32;
        const QColor edge = QColor::fromRgbF(float(window.redF() + (text.redF() - window.redF()) * mix),
                                             float(window.greenF() + (text.greenF() - window.greenF()) * mix),
                                             float(window.blueF() + (text.blueF() - window.blueF()) * mix));
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(edge, 1));
        painter->setBrush(Qt::NoBrush);
        const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
        if (element == PE_IndicatorRadioButton)
            painter->drawEllipse(box.adjusted(0.5, 0.5, -0.5, -0.5));
        else
            painter->drawRoundedRect(box, 2, 2);
        painter->restore();
    }
};

QPalette darkPalette()
{
    QPalette p;
    const QColor window(0x26, 0x27, 0x2b);
    const QColor base(0x1e, 0x1f, 0x22);
    const QColor text(0xe8, 0xe8, 0xea);
    const QColor disabled(0x7a, 0x7b, 0x80);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, QColor(0x32, 0x33, 0x38));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, disabled);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x33, 0x34, 0x39));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, QColor(0x45, 0x46, 0x4c));
    p.setColor(QPalette::Midlight, QColor(0x3a, 0x3b, 0x40));
    p.setColor(QPalette::Mid, QColor(0x2c, 0x2d, 0x31));
    p.setColor(QPalette::Dark, QColor(0x17, 0x18, 0x1a));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Highlight, QColor(0x2f, 0x74, 0xd0));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Inactive, QPalette::Highlight, QColor(0x3d, 0x4a, 0x5c));
    p.setColor(QPalette::Link, QColor(0x5a, 0x9c, 0xf0));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, disabled);
    return p;
}

QPalette lightPalette()
{
    QPalette p = QApplication::style()->standardPalette();
    p.setColor(QPalette::Window, QColor(0xf3, 0xf3, 0xf5));
    p.setColor(QPalette::Base, Qt::white);
    p.setColor(QPalette::Highlight, QColor(0x2f, 0x74, 0xd0));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Inactive, QPalette::Highlight, QColor(0xd6, 0xdd, 0xe8));
    p.setColor(QPalette::Inactive, QPalette::HighlightedText, QColor(0x20, 0x20, 0x24));
    return p;
}

// What the portal last announced, in place of asking it again.
std::optional<bool> announcedDark;

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

uint unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

} // namespace

// Hears the portal's SettingChanged signal for the colour scheme.
class PortalListener : public QObject
{
    Q_OBJECT

public:
    PortalListener(QObject *context, std::function<void()> onChange)
        : QObject(context)
        , m_onChange(std::move(onChange))
    {
    }

public Q_SLOTS:
    // Takes the whole message: Qt 6.4 will not connect a slot that declares
    // the variant argument as QDBusVariant.
    void settingChanged(const QDBusMessage &message)
    {
        const QList<QVariant> arguments = message.arguments();
        if (arguments.size() < 3 || arguments[0].toString() != u"org.freedesktop.appearance"
            || arguments[1].toString() != u"color-scheme")
            return;
        announcedDark = unwrapped(arguments[2]) == 1;
        m_onChange();
    }

private:
    std::function<void()> m_onChange;
};

void watch(QObject *context, std::function<void()> onChange)
{
    auto *listener = new PortalListener(context, std::move(onChange));
    QDBusConnection::sessionBus().connect(portalService, portalPath, settingsInterface,
                                          QStringLiteral("SettingChanged"), listener,
                                          SLOT(settingChanged(QDBusMessage)));
}

bool systemIsDark()
{
    if (announcedDark)
        return *announcedDark;
    // org.freedesktop.appearance color-scheme: 1 means the user prefers dark.
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                       QStringLiteral("Read"));
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 300);
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
        return unwrapped(reply.arguments().first()) == 1;
    const QByteArray gtkTheme = qgetenv("GTK_THEME").toLower();
    return gtkTheme.contains("dark");
}

void apply(Scheme scheme)
{
    if (!dynamic_cast<VeskFusionStyle *>(QApplication::style()))
        QApplication::setStyle(new VeskFusionStyle);
    const bool dark = scheme == Scheme::Dark || (scheme == Scheme::System && systemIsDark());
    const QPalette palette = dark ? darkPalette() : lightPalette();
    if (palette != QApplication::palette())
        QApplication::setPalette(palette);
}

} // namespace SystemAppearance

#include "SystemAppearanceLinux.moc"
