#include "ShortcutText.h"

#include "platform/DesktopConventions.h"

#include <QHash>
#include <QStringList>

namespace ShortcutText {

namespace {

// Command first, as the app's texts write it. Qt's Ctrl is the Command key on
// macOS and its Meta the Control key.
QString macModifiers(Qt::KeyboardModifiers modifiers)
{
    QString text;
    if (modifiers & Qt::ControlModifier)
        text += u'⌘';
    if (modifiers & Qt::ShiftModifier)
        text += u'⇧';
    if (modifiers & Qt::AltModifier)
        text += u'⌥';
    if (modifiers & Qt::MetaModifier)
        text += u'⌃';
    return text;
}

QString macKey(Qt::Key key)
{
    static const QHash<int, QString> symbols{
        {Qt::Key_Return, QStringLiteral("⏎")}, {Qt::Key_Enter, QStringLiteral("⏎")},
        {Qt::Key_Backspace, QStringLiteral("⌫")}, {Qt::Key_Delete, QStringLiteral("⌦")},
        {Qt::Key_Escape, QStringLiteral("⎋")}, {Qt::Key_Tab, QStringLiteral("⇥")},
        {Qt::Key_Left, QStringLiteral("←")},    {Qt::Key_Right, QStringLiteral("→")},
        {Qt::Key_Up, QStringLiteral("↑")},      {Qt::Key_Down, QStringLiteral("↓")},
    };
    if (const auto it = symbols.constFind(key); it != symbols.constEnd())
        return *it;
    // Letters, digits, punctuation and function keys as Qt names them ("N", "/", "F1").
    return QKeySequence(key).toString(QKeySequence::PortableText);
}

} // namespace

QString inStyle(const QKeySequence &keys, Style style)
{
    if (style == Style::Platform)
        return keys.toString(QKeySequence::NativeText);
    QStringList parts;
    for (int i = 0; i < keys.count(); ++i)
        parts.append(macModifiers(keys[i].keyboardModifiers()) + macKey(keys[i].key()));
    return parts.join(u", ");
}

QString forDisplay(const QKeySequence &keys)
{
    const bool mac = DesktopConventions::desktop() == DesktopConventions::Desktop::MacOS;
    return inStyle(keys, mac ? Style::MacOS : Style::Platform);
}

} // namespace ShortcutText
