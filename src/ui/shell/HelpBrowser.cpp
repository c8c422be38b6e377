#include "HelpBrowser.h"

#include "ui/theme/Theme.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHash>
#include <QKeySequence>
#include <QRegularExpression>
#include <QScrollBar>

namespace {

QString cssColor(const QColor &color)
{
    // Solid colours: the tones are blended with the page's background here.
    return color.name(QColor::HexRgb);
}

QColor blend(const QColor &over, const QColor &under, qreal amount)
{
    return QColor::fromRgbF(over.redF() * amount + under.redF() * (1 - amount),
                            over.greenF() * amount + under.greenF() * (1 - amount),
                            over.blueF() * amount + under.blueF() * (1 - amount));
}

// "⌘⇧N" as the platform writes it ("Ctrl+Shift+N"); text that does not start
// with a modifier symbol ("Return", "Esc") is left alone.
QString keysForOtherPlatform(const QString &keys)
{
    Qt::KeyboardModifiers modifiers;
    QStringList names;
    qsizetype i = 0;
    for (; i < keys.size(); ++i) {
        const QChar c = keys.at(i);
        if (c == u'⌘') {
            modifiers |= Qt::ControlModifier;
            names.append(QStringLiteral("Ctrl"));
        } else if (c == u'⇧') {
            modifiers |= Qt::ShiftModifier;
            names.append(QStringLiteral("Shift"));
        } else if (c == u'⌥') {
            modifiers |= Qt::AltModifier;
            names.append(QStringLiteral("Alt"));
        } else {
            break;
        }
    }
    if (i == 0)
        return keys;
    const QString rest = keys.mid(i);
    if (rest.isEmpty())
        return names.join(u'+'); // a bare modifier, as in "⌘-click"
    static const QHash<QString, int> symbols{{QStringLiteral("⏎"), Qt::Key_Return}, {QStringLiteral("⌫"), Qt::Key_Backspace},
                                             {QStringLiteral("⎋"), Qt::Key_Escape},  {QStringLiteral("←"), Qt::Key_Left},
                                             {QStringLiteral("→"), Qt::Key_Right},   {QStringLiteral("↑"), Qt::Key_Up},
                                             {QStringLiteral("↓"), Qt::Key_Down}};
    int key = symbols.value(rest);
    if (key == 0) {
        if (const QKeySequence parsed = QKeySequence::fromString(rest, QKeySequence::PortableText); parsed.count() == 1)
            key = parsed[0].key();
    }
    if (key == 0)
        return names.join(u'+') + u'+' + rest;
    return QKeySequence(QKeyCombination(modifiers, Qt::Key(key))).toString(QKeySequence::NativeText);
}

} // namespace

HelpBrowser::HelpBrowser(QWidget *parent)
    : QTextBrowser(parent)
    , m_openExternal([](const QUrl &url) { QDesktopServices::openUrl(url); })
{
    setObjectName(QStringLiteral("helpBrowser"));
    setFrameShape(QFrame::NoFrame);
    setOpenLinks(true);
    setOpenExternalLinks(false); // web links go through doSetSource, below
    document()->setDocumentMargin(22);
}

void HelpBrowser::doSetSource(const QUrl &url, QTextDocument::ResourceType type)
{
    const QString scheme = url.scheme().toLower();
    if (scheme == u"http" || scheme == u"https") {
        // Web pages open in the user's browser; the window keeps its page.
        if (m_openExternal)
            m_openExternal(url);
        return;
    }
    // Pages of the book, anchors and other local files load here. Other
    // schemes are allowed too, but nothing here can load them, and following
    // one would only blank the page.
    if (!url.isEmpty() && !url.isRelative() && !url.isLocalFile() && scheme != u"qrc")
        return;
    QTextBrowser::doSetSource(url, type);
}

QVariant HelpBrowser::loadResource(int type, const QUrl &name)
{
    const QVariant resource = QTextBrowser::loadResource(type, name);
    if (type == QTextDocument::StyleSheetResource)
        return QString(QString::fromUtf8(resource.toByteArray()) + u'\n' + paletteStyleSheet(palette()));
    if (type == QTextDocument::HtmlResource && resource.userType() == QMetaType::QByteArray) {
        return pageForPlatform(QString::fromUtf8(resource.toByteArray()), DesktopConventions::desktop());
    }
    return resource;
}

void HelpBrowser::changeEvent(QEvent *event)
{
    QTextBrowser::changeEvent(event);
    // Light and dark: the stylesheet is made from the palette as the page loads.
    if (event->type() == QEvent::PaletteChange && source().isLocalFile()) {
        const int scrolled = verticalScrollBar()->value();
        reload();
        verticalScrollBar()->setValue(scrolled);
    }
}

QString HelpBrowser::paletteStyleSheet(const QPalette &palette)
{
    const QColor base = palette.color(QPalette::Base);
    const QColor text = Theme::primaryText(palette);
    const QColor secondary = blend(text, base, Theme::isDark(palette) ? 0.68 : 0.62);
    const QColor quiet = blend(text, base, Theme::isDark(palette) ? 0.12 : 0.07);
    const QColor line = blend(text, base, 0.18);
    const QColor accent = Theme::accent(palette);
    const QColor link = Theme::isDark(palette) ? blend(accent, QColor(Qt::white), 0.6) : accent.darker(115);
    const QColor noteBackground = blend(accent, base, Theme::isDark(palette) ? 0.22 : 0.10);
    return QStringLiteral("body, p, li, td, dd { color: %1; }\n"
                          "h1, h2, h3, dt, th { color: %1; }\n"
                          "a { color: %2; }\n"
                          ".lead, .nav, .nav a, .small { color: %3; }\n"
                          "code, kbd { background-color: %4; color: %1; }\n"
                          "pre { color: %1; }\n"
                          "th { background-color: %4; }\n"
                          "td, th { border-color: %5; }\n"
                          "table.code td { background-color: %4; }\n"
                          "table.note td { background-color: %6; }\n")
        .arg(cssColor(text), cssColor(link), cssColor(secondary), cssColor(quiet), cssColor(line),
             cssColor(noteBackground));
}

QString HelpBrowser::pageForPlatform(QString html, Platform platform)
{
    // Passages for one platform only carry class="mac" or class="linux".
    const QString other = platform == Platform::MacOS ? QStringLiteral("linux") : QStringLiteral("mac");
    const QRegularExpression otherPassage(
        u"<(span|p|li|tr|div|pre)\\b[^>]*\\bclass=\"" + other + u"\"[^>]*>.*?</\\1>",
        QRegularExpression::DotMatchesEverythingOption);
    html.remove(otherPassage);
    if (platform == Platform::MacOS)
        return html;
    // The book writes keys as macOS shows them; elsewhere they read "Ctrl+N".
    static const QRegularExpression kbd(QStringLiteral("<kbd>([^<]*)</kbd>"));
    QString result;
    qsizetype last = 0;
    for (QRegularExpressionMatchIterator it = kbd.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        result += QStringView(html).mid(last, match.capturedStart(1) - last);
        result += keysForOtherPlatform(match.captured(1));
        last = match.capturedEnd(1);
    }
    result += QStringView(html).mid(last);
    return result;
}
