#include "ui/theme/ShortcutText.h"

#include <QTest>

using ShortcutText::Style;

// How shortcuts read inside the app's texts, in both styles.
class TestShortcutText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void macStylePutsCommandFirst();
    void platformStyleIsQtsNativeText();
    void theTextsOfThisBuild();
};

void TestShortcutText::macStylePutsCommandFirst()
{
    // Qt's Ctrl is the Command key on macOS, its Meta the Control key.
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N), Style::MacOS), u"⌘⇧N");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), Style::MacOS), u"⌘⇧C");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_Return), Style::MacOS), u"⌘⏎");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_Enter), Style::MacOS), u"⌘⏎");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_N), Style::MacOS), u"⌘N");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_V), Style::MacOS), u"⌘V");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_Slash), Style::MacOS), u"⌘/");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::CTRL | Qt::Key_Backspace), Style::MacOS), u"⌘⌫");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::ALT | Qt::Key_Left), Style::MacOS), u"⌥←");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::META | Qt::CTRL | Qt::Key_F), Style::MacOS), u"⌘⌃F");
    QCOMPARE(ShortcutText::inStyle(QKeySequence(Qt::Key_Escape), Style::MacOS), u"⎋");
}

void TestShortcutText::platformStyleIsQtsNativeText()
{
    for (const QKeySequence &keys : {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N), QKeySequence(Qt::CTRL | Qt::Key_Return),
                                     QKeySequence(Qt::CTRL | Qt::Key_Slash)})
        QCOMPARE(ShortcutText::inStyle(keys, Style::Platform), keys.toString(QKeySequence::NativeText));
}

void TestShortcutText::theTextsOfThisBuild()
{
#ifdef Q_OS_MACOS
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N)), u"⌘⇧N");
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::Key_Return)), u"⌘⏎");
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C)), u"⌘⇧C");
#else
    // Linux keeps the platform's wording.
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N)), u"Ctrl+Shift+N");
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::Key_Return)), u"Ctrl+Return");
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C)), u"Ctrl+Shift+C");
    QCOMPARE(ShortcutText::forDisplay(QKeySequence(Qt::CTRL | Qt::Key_V)), u"Ctrl+V");
#endif
}

QTEST_MAIN(TestShortcutText)
#include "tst_shortcuttext.moc"
