#include "WelcomeView.h"

#include "platform/DesktopConventions.h"

#include "AppState.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ShortcutText.h"
#include "ui/theme/Theme.h"

#include <QEvent>
#include <QGraphicsDropShadowEffect>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

QString native(const QKeySequence &sequence)
{
    return ShortcutText::forDisplay(sequence);
}

// The orange badge with a white chevron.
class IconBadge : public QWidget
{
public:
    explicit IconBadge(QWidget *parent) : QWidget(parent)
    {
        setFixedSize(80, 84);
        auto *shadow = new QGraphicsDropShadowEffect(this);
        shadow->setColor(QColor(0, 0, 0, 46));
        shadow->setBlurRadius(12);
        shadow->setOffset(0, 2);
        setGraphicsEffect(shadow);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF square(0, 0, 80, 80);
        QLinearGradient gradient(square.topLeft(), square.bottomLeft());
        gradient.setColorAt(0, QColor::fromRgbF(0.961f, 0.69f, 0.259f));
        gradient.setColorAt(1, QColor::fromRgbF(0.78f, 0.478f, 0.122f));
        painter.setPen(Qt::NoPen);
        painter.setBrush(gradient);
        painter.drawRoundedRect(square, 18, 18);
        const QPixmap chevron = Icons::pixmap(QStringLiteral("chevron.right"), Qt::white, 38, devicePixelRatioF());
        painter.drawPixmap(QPointF(21 + 2, 21), chevron);
    }
};

} // namespace

WelcomeView::WelcomeView(AppState *state, QWidget *parent)
    : QWidget(parent)
    , m_create(new QPushButton(QStringLiteral("Create Your First Prompt"), this))
{
    setObjectName(QStringLiteral("welcome"));
    // The column scrolls when the window is too short to hold it: nothing is
    // ever squeezed. Its padding above and below gives way first.
    auto *scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->viewport()->setAutoFillBackground(false);
    auto *content = new QWidget(scroll);
    content->setObjectName(QStringLiteral("welcomeContent"));
    content->setAutoFillBackground(false);
    scroll->setWidget(content);
    auto *page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->addWidget(scroll);

    auto *outer = new QVBoxLayout(content);
    outer->setContentsMargins(24, 16, 24, 16);
    outer->addStretch();

    auto *column = new QVBoxLayout;
    column->setSpacing(22);
    column->addWidget(new IconBadge(this), 0, Qt::AlignHCenter);

    auto *heading = new QVBoxLayout;
    heading->setSpacing(6);
    auto *welcome = new QLabel(QStringLiteral("Welcome to Vesk"), this);
    welcome->setObjectName(QStringLiteral("welcomeTitle"));
    welcome->setFont(Theme::font(22, QFont::DemiBold));
    welcome->setAlignment(Qt::AlignCenter);
    auto *intro = new QLabel(QStringLiteral("Your prompt library lives on disk as plain markdown files. Browse, "
                                            "organize, and copy prompts that feed into Claude."), this);
    intro->setObjectName(QStringLiteral("secondary"));
    intro->setFont(Theme::font(13));
    intro->setAlignment(Qt::AlignCenter);
    Theme::wrapToWidth(intro, 380);
    heading->addWidget(welcome, 0, Qt::AlignHCenter);
    heading->addWidget(intro, 0, Qt::AlignHCenter);
    column->addLayout(heading);

    auto *steps = new QVBoxLayout;
    steps->setSpacing(12);
    steps->addWidget(step(1, QStringLiteral("Create your first prompt"),
                          QStringLiteral("Adds an empty prompt under Recent Prompts. The body editor takes focus — "
                                         "just start typing."),
                          native(QKeySequence::New)),
                     0, Qt::AlignHCenter);
    steps->addWidget(step(2, QStringLiteral("Organize into projects"),
                          QStringLiteral("Create folders to group related prompts. Right-click any prompt → Move to "
                                         "Project to file it."),
                          native(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N))),
                     0, Qt::AlignHCenter);
    steps->addWidget(step(3, QStringLiteral("Use {{variables}}"),
                          QStringLiteral("Anything matching {{name}} becomes a variable; a fill sheet appears "
                                         "whenever you copy."),
                          {}),
                     0, Qt::AlignHCenter);
    steps->addWidget(step(4, QStringLiteral("Hand off to Claude or ChatGPT"),
                          u"Copy the filled prompt and bring your chosen app to the foreground in one "
                          u"action. Pick the target in " + DesktopConventions::settingsName() + u".",
                          native(QKeySequence(Qt::CTRL | Qt::Key_Return))),
                     0, Qt::AlignHCenter);
    column->addLayout(steps);

    m_create->setObjectName(QStringLiteral("createFirstPrompt"));
    m_create->setDefault(true);
    m_create->setAutoDefault(true);
    m_create->setFont(Theme::font(14));
    m_create->setIconSize(QSize(16, 16));
    m_create->setMinimumHeight(34);
    m_create->setContentsMargins(8, 2, 8, 2);
    connect(m_create, &QPushButton::clicked, state, &AppState::createNewPromptInRecent);
    // Return presses the button while the welcome screen shows, as a default button would.
    for (const QKeySequence &key : {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}) {
        auto *shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, m_create, &QPushButton::click);
    }
    column->addWidget(m_create, 0, Qt::AlignHCenter);

    auto *help = new QLabel(u"You can also press " + native(QKeySequence(Qt::CTRL | Qt::Key_Slash))
                                + u" at any time to open Vesk Help.", this);
    help->setObjectName(QStringLiteral("tertiary"));
    help->setFont(Theme::font(11));
    help->setAlignment(Qt::AlignCenter);
    column->addWidget(help, 0, Qt::AlignHCenter);

    outer->addLayout(column);
    outer->addStretch();
    restyle();
}

QWidget *WelcomeView::step(int number, const QString &title, const QString &description, const QString &shortcut)
{
    auto *row = new QWidget(this);
    row->setFixedWidth(400);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    layout->setAlignment(Qt::AlignTop);

    auto *circle = new QLabel(QString::number(number), row);
    circle->setObjectName(QStringLiteral("stepNumber"));
    circle->setFixedSize(26, 26);
    circle->setAlignment(Qt::AlignCenter);
    circle->setFont(Theme::font(12, QFont::DemiBold));
    layout->addWidget(circle, 0, Qt::AlignTop);

    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    auto *titleLine = new QHBoxLayout;
    titleLine->setSpacing(8);
    auto *titleLabel = new QLabel(title, row);
    titleLabel->setTextFormat(Qt::PlainText);
    titleLabel->setFont(Theme::font(13, QFont::DemiBold));
    titleLine->addWidget(titleLabel);
    if (!shortcut.isEmpty()) {
        auto *key = new QLabel(shortcut, row);
        key->setObjectName(QStringLiteral("shortcut"));
        key->setFont(Theme::font(11));
        key->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        titleLine->addWidget(key);
    }
    titleLine->addStretch();
    auto *descriptionLabel = new QLabel(description, row);
    descriptionLabel->setObjectName(QStringLiteral("secondary"));
    descriptionLabel->setTextFormat(Qt::PlainText);
    descriptionLabel->setFont(Theme::font(12));
    Theme::wrapToWidth(descriptionLabel, 400 - 26 - 12);
    texts->addLayout(titleLine);
    texts->addWidget(descriptionLabel);
    layout->addLayout(texts, 1);
    return row;
}

void WelcomeView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        restyle();
    QWidget::changeEvent(event);
}

void WelcomeView::followAppPalette()
{
    // Widgets under a style sheet keep the palette they were polished with
    // when the application's changes: drop the sheet, take the application's
    // palette, and style again from it.
    setStyleSheet(QString());
    setPalette(QPalette());
    restyle();
}

void WelcomeView::restyle()
{
    const QPalette &p = palette();
    const QColor accent = Theme::accent(p);
    const auto rgba = [](QColor c, qreal alpha) {
        return QStringLiteral("rgba(%1,%2,%3,%4)").arg(c.red()).arg(c.green()).arg(c.blue()).arg(alpha);
    };
    const QString sheet = QStringLiteral("QLabel#stepNumber { background: %1; color: %2; border-radius: 13px; }"
                                 "QLabel#shortcut { background: %3; color: %2; border-radius: 4px;"
                                 " padding: 1px 6px; }"
                                 "QLabel#secondary { color: %4; }"
                                 "QLabel#tertiary { color: %5; }")
                      .arg(rgba(accent, 0.18), accent.name(), rgba(accent, 0.15),
                           rgba(Theme::secondaryText(p), Theme::secondaryText(p).alphaF()),
                           rgba(Theme::tertiaryText(p), Theme::tertiaryText(p).alphaF()));
    if (sheet != styleSheet())
        setStyleSheet(sheet);
    m_create->setIcon(Icons::icon(QStringLiteral("square.and.pencil"), Theme::primaryText(p), 16));
}
