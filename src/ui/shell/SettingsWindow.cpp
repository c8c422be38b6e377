#include "SettingsWindow.h"

#include "platform/DesktopConventions.h"

#include "Preferences.h"
#include "platform/Accessibility.h"
#include "ui/detail/HandoffApp.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ShortcutText.h"
#include "ui/theme/Theme.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

QWidget *sectionHeader(const QString &symbol, const QString &title, QWidget *parent)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    auto *icon = new QLabel(row);
    icon->setObjectName(QStringLiteral("sectionIcon"));
    icon->setProperty("symbol", symbol); // tinted in SettingsWindow::updateIcons()
    auto *label = new QLabel(title, row);
    label->setFont(Theme::font(13, QFont::DemiBold));
    layout->addWidget(icon);
    layout->addWidget(label);
    layout->addStretch();
    return row;
}

QLabel *note(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setFont(Theme::font(11));
    Theme::setTextTone(label, Theme::Tone::Tertiary);
    return label;
}

} // namespace

SettingsWindow::SettingsWindow(Preferences *preferences, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_preferences(preferences)
    , m_appearance(new QComboBox(this))
    , m_handoff(new QButtonGroup(this))
    , m_autoPaste(new QCheckBox(QStringLiteral("Paste into the app automatically"), this))
{
    setObjectName(QStringLiteral("settings"));
    setWindowTitle(DesktopConventions::settingsName());
    setFixedSize(520, 360);
    // A fixed-size tool window: it cannot be maximised, only closed.
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(10);

    auto *appearanceBox = new QGroupBox(this);
    auto *appearanceForm = new QFormLayout(appearanceBox);
    for (const auto &[shown, stored] : {std::pair{"System", "system"}, {"Light", "light"}, {"Dark", "dark"},
                                       {"Opposite", "opposite"}})
        m_appearance->addItem(QString::fromLatin1(shown), QString::fromLatin1(stored));
    appearanceForm->addRow(QStringLiteral("Appearance:"), m_appearance);
    layout->addWidget(sectionHeader(QStringLiteral("paintbrush"), QStringLiteral("Appearance"), this));
    layout->addWidget(appearanceBox);

    auto *handoffBox = new QGroupBox(this);
    auto *handoffForm = new QFormLayout(handoffBox);
    auto *radios = new QHBoxLayout;
    for (const HandoffApp &app : HandoffApp::allCases()) {
        auto *radio = new QRadioButton(app.displayName(), handoffBox);
        radio->setProperty("stored", app.rawValue());
        m_handoff->addButton(radio);
        radios->addWidget(radio);
    }
    radios->addStretch();
    handoffForm->addRow(QStringLiteral("Hand off to:"), radios);
    handoffForm->addRow(QString(), m_autoPaste);
    layout->addWidget(sectionHeader(QStringLiteral("arrow.up.right.square"), QStringLiteral("Hand-off App"), this));
    layout->addWidget(handoffBox);

    const QString handoffKey = ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::Key_Return));
    const QString pasteKey = ShortcutText::forDisplay(QKeySequence(QKeySequence::Paste));
    layout->addWidget(note(u"The " + handoffKey + u" button copies the filled prompt and brings the chosen app to the "
                           u"foreground. If the desktop app isn't installed, Vesk falls back to opening the web client.",
                           this));
    layout->addWidget(note(u"Auto-paste synthesizes a " + pasteKey + u" keystroke once the app is frontmost. "
                               + Accessibility::permissionNote(),
                           this));
    layout->addStretch();

    updateIcons();
    loadFromPreferences();
    connect(m_appearance, &QComboBox::currentIndexChanged, this,
            [this] { m_preferences->setAppearance(m_appearance->currentData().toString()); });
    connect(m_handoff, &QButtonGroup::buttonClicked, this,
            [this](QAbstractButton *button) { m_preferences->setHandoffApp(button->property("stored").toString()); });
    connect(m_autoPaste, &QCheckBox::toggled, this, [this](bool on) {
        m_preferences->setAutoPaste(on);
        if (on)
            Accessibility::requestTrustIfNeeded();
    });
}

void SettingsWindow::updateIcons()
{
    const QColor tint = Theme::secondaryText(palette());
    for (QLabel *icon : findChildren<QLabel *>(QStringLiteral("sectionIcon")))
        icon->setPixmap(Icons::pixmap(icon->property("symbol").toString(), tint, 14, devicePixelRatioF()));
}

void SettingsWindow::changeEvent(QEvent *event)
{
    // The window stays open across a switch of appearance.
    if (event->type() == QEvent::PaletteChange)
        updateIcons();
    QWidget::changeEvent(event);
}

void SettingsWindow::keyPressEvent(QKeyEvent *event)
{
    // Escape closes it, as it closes any dialog.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void SettingsWindow::showEvent(QShowEvent *event)
{
    loadFromPreferences();
    QWidget::showEvent(event);
}

void SettingsWindow::loadFromPreferences()
{
    const QSignalBlocker blockAppearance(m_appearance);
    const QSignalBlocker blockPaste(m_autoPaste);
    const int appearance = m_appearance->findData(m_preferences->appearance());
    m_appearance->setCurrentIndex(appearance < 0 ? 0 : appearance);
    const QString handoff = m_preferences->handoffApp();
    // An unknown stored value shows as the target it selects.
    const QString target = HandoffApp::fromPreference(handoff).rawValue();
    for (QAbstractButton *button : m_handoff->buttons())
        button->setChecked(button->property("stored").toString() == target);
    m_autoPaste->setChecked(m_preferences->autoPaste());
}
