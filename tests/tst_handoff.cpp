#include "AppState.h"
#include "FakePlatform.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "ui/detail/AutoPaste.h"
#include "ui/detail/Handoff.h"
#include "ui/detail/HandoffApp.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/detail/VariableFillSheet.h"
#include "ui/shell/Preferences.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSet>
#include <QSettings>
#include <QSignalSpy>
#include <QToolButton>

using TestFiles::at;
using TestFiles::write;

namespace {

const QString claudeID = QStringLiteral("com.anthropic.claudefordesktop");
const QString chatgptID = QStringLiteral("com.openai.chat");
const QUrl claudeLocation = QUrl::fromLocalFile(QStringLiteral("/Applications/Claude.app"));

// The paste keystroke is due 450 ms after its starting point; timers never
// fire early, and a loaded machine may make them a little late.
constexpr qint64 pasteDelayMs = 450;
constexpr qint64 lateness = 400;

} // namespace

// The hand-off: its targets, the operation behind the platform's workspace,
// accessibility and keystrokes (all recording fakes here), and the detail
// view's button, shortcut and fill-sheet paths with real widgets.
class TestHandoff : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void handoffAppCases();
    void preferenceIsLenient();
    void installedAppPastesAfterItReportsOpening();
    void installedAppWithoutAutoPasteSendsNothing();
    void untrustedSendsNothing();
    void missingAppOpensTheWebClientAndPastesFromThere();
    void autoPasteSendSchedulesOneKeystroke();
    void autoPasteNeverTypesIntoVesk();

    void buttonNamesTheChosenApp();
    void handoffCopiesNotifiesAndOpens();
    void handoffShortcutInTheEditor();
    void autoPastePreferenceIsReadOnce();
    void fillSheetConfirmHandsOff();
    void fillSheetCancelHandsOffNothing();
    void dismissalPastTheButtonsKeepsTheHandoffWaiting();

private:
    void makeView();
    void show(const char *id) { m_view->setPrompt(*m_library->prompt(QString::fromUtf8(id))); }
    QPushButton *sheetButton(const char *name) const
    {
        return m_view->fillSheet()->findChild<QPushButton *>(QString::fromLatin1(name));
    }
    QPushButton *sheetCancelButton() const
    {
        for (QPushButton *button : m_view->fillSheet()->findChildren<QPushButton *>()) {
            if (button->text() == u"Cancel")
                return button;
        }
        return nullptr;
    }

    QTemporaryDir m_settingsDir;
    std::unique_ptr<FakeClock> m_clock;
    std::unique_ptr<FakeApplications> m_apps;
    std::unique_ptr<FakeAccessibility> m_accessibility;
    std::unique_ptr<FakeKeystrokes> m_keys;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<PromptDetailView> m_view;
};

void TestHandoff::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("VeskTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskHandoffTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestHandoff::init()
{
    QSettings().clear();
    m_clock = std::make_unique<FakeClock>();
    m_apps = std::make_unique<FakeApplications>(*m_clock);
    m_accessibility = std::make_unique<FakeAccessibility>();
    m_keys = std::make_unique<FakeKeystrokes>(*m_clock);
    QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
}

void TestHandoff::cleanup()
{
    m_view.reset();
    m_state.reset();
    m_library.reset();
    m_dir.reset();
    // Nothing scheduled may outlive the test and post into the next one.
    QTest::qWait(int(pasteDelayMs) + 50);
    m_keys.reset();
    m_accessibility.reset();
    m_apps.reset();
}

void TestHandoff::makeView()
{
    m_dir = std::make_unique<QTemporaryDir>();
    write(m_dir->path() + u"/Inbox/plain.md", "---\ntitle: Plain\n---\n\nNo variables here.", at(3));
    write(m_dir->path() + u"/Inbox/vars.md", "---\ntitle: Vars\n---\n\nHello {{name}}!", at(2));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_view = std::make_unique<PromptDetailView>(m_state.get());
    m_view->resize(760, 420);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void TestHandoff::handoffAppCases()
{
    QCOMPARE(HandoffApp::allCases(), (QList<HandoffApp>{HandoffApp::claude, HandoffApp::chatgpt}));
    QCOMPARE(HandoffApp::claude.rawValue(), u"claude");
    QCOMPARE(HandoffApp::chatgpt.rawValue(), u"chatgpt");
    QCOMPARE(HandoffApp::chatgpt.id(), u"chatgpt");
    QCOMPARE(HandoffApp::claude.displayName(), u"Claude");
    QCOMPARE(HandoffApp::chatgpt.displayName(), u"ChatGPT");
    QCOMPARE(HandoffApp::claude.bundleIdentifier(), claudeID);
    QCOMPARE(HandoffApp::chatgpt.bundleIdentifier(), chatgptID);
    // The root of each web client, over https.
    QCOMPARE(HandoffApp::claude.webFallbackURL(), QUrl(QStringLiteral("https://claude.ai/")));
    QCOMPARE(HandoffApp::chatgpt.webFallbackURL(), QUrl(QStringLiteral("https://chatgpt.com/")));
    for (const HandoffApp &app : HandoffApp::allCases()) {
        QVERIFY(app.webFallbackURL().isValid());
        QCOMPARE(app.webFallbackURL().path(), u"/");
    }
    QCOMPARE(QSet<HandoffApp>({HandoffApp::claude, HandoffApp::chatgpt, HandoffApp::claude}).size(), 2);
    QVERIFY(HandoffApp::claude != HandoffApp::chatgpt);

    // From a raw value: exactly, case and all.
    QCOMPARE(HandoffApp::fromRawValue(u"claude"), std::optional(HandoffApp::claude));
    QCOMPARE(HandoffApp::fromRawValue(u"chatgpt"), std::optional(HandoffApp::chatgpt));
    QCOMPARE(HandoffApp::fromRawValue(u"Claude"), std::nullopt);
    QCOMPARE(HandoffApp::fromRawValue(u"ChatGPT"), std::nullopt);
    QCOMPARE(HandoffApp::fromRawValue(u""), std::nullopt);
}

void TestHandoff::preferenceIsLenient()
{
    QCOMPARE(HandoffApp::fromPreference(u"chatgpt"), HandoffApp::chatgpt);
    for (const char *stored : {"claude", "Claude", "ChatGPT", "", "gemini", " chatgpt"})
        QCOMPARE(HandoffApp::fromPreference(QString::fromLatin1(stored)), HandoffApp::claude);
}

void TestHandoff::installedAppPastesAfterItReportsOpening()
{
    m_apps->installed.insert(claudeID, claudeLocation);
    Handoff::activate(HandoffApp::claude, true);
    QCOMPARE(m_apps->lookedUp, QStringList{claudeID});
    QCOMPARE(m_apps->opened, QList<QUrl>{claudeLocation});
    QVERIFY(m_apps->openedUrls.isEmpty());

    // The app takes its time to report back: nothing is sent meanwhile, not
    // even the question of trust.
    QTest::qWait(int(pasteDelayMs) + 150);
    QVERIFY(m_keys->pastedAt.isEmpty());
    QCOMPARE(m_accessibility->queries, 0);

    m_apps->complete();
    QCOMPARE(m_accessibility->queries, 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 3000);
    const qint64 delay = m_keys->pastedAt.first() - m_apps->completedAt;
    QVERIFY2(delay >= pasteDelayMs - 5 && delay < pasteDelayMs + lateness, qPrintable(QString::number(delay)));
    QTest::qWait(200);
    QCOMPARE(m_keys->pastedAt.size(), 1); // exactly one keystroke
}

void TestHandoff::installedAppWithoutAutoPasteSendsNothing()
{
    m_apps->installed.insert(chatgptID, claudeLocation);
    Handoff::activate(HandoffApp::chatgpt, false);
    QCOMPARE(m_apps->lookedUp, QStringList{chatgptID});
    QCOMPARE(m_apps->opened.size(), 1);
    m_apps->complete();
    QTest::qWait(int(pasteDelayMs) + 200);
    QVERIFY(m_keys->pastedAt.isEmpty());
    QCOMPARE(m_accessibility->queries, 0);
}

void TestHandoff::untrustedSendsNothing()
{
    m_accessibility->trusted = false;
    m_apps->installed.insert(claudeID, claudeLocation);
    Handoff::activate(HandoffApp::claude, true);
    m_apps->complete();
    QCOMPARE(m_accessibility->queries, 1);
    QTest::qWait(int(pasteDelayMs) + 200);
    QVERIFY(m_keys->pastedAt.isEmpty());
    QCOMPARE(m_accessibility->prompts, 0); // asking is the settings' job
}

void TestHandoff::missingAppOpensTheWebClientAndPastesFromThere()
{
    m_apps->installed.insert(claudeID, claudeLocation); // the other one is installed
    Handoff::activate(HandoffApp::chatgpt, true);
    QCOMPARE(m_apps->lookedUp, QStringList{chatgptID});
    QVERIFY(m_apps->opened.isEmpty());
    QCOMPARE(m_apps->openedUrls, QList<QUrl>{QUrl(QStringLiteral("https://chatgpt.com/"))});
    QCOMPARE(m_accessibility->queries, 1); // the paste step ran in the same call
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 3000);
    const qint64 delay = m_keys->pastedAt.first() - m_apps->urlOpenedAt;
    QVERIFY2(delay >= pasteDelayMs - 5 && delay < pasteDelayMs + lateness, qPrintable(QString::number(delay)));
}

void TestHandoff::autoPasteSendSchedulesOneKeystroke()
{
    const qint64 start = m_clock->now();
    QVERIFY(AutoPaste::send(0.2));
    QVERIFY(m_keys->pastedAt.isEmpty()); // scheduled, not sent
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 2000);
    QVERIFY(m_keys->pastedAt.first() - start >= 195);

    m_accessibility->trusted = false;
    QVERIFY(!AutoPaste::send(0));
    QTest::qWait(100);
    QCOMPARE(m_keys->pastedAt.size(), 1);
}

void TestHandoff::autoPasteNeverTypesIntoVesk()
{
    // A slow assistant: Vesk is still in front when the delay ends, and the
    // keystroke waits for the assistant to come forward.
    m_apps->veskFrontmost = true;
    const qint64 start = m_clock->now();
    QVERIFY(AutoPaste::send(0.1));
    QTest::qWait(600);
    QVERIFY(m_keys->pastedAt.isEmpty());
    m_apps->veskFrontmost = false;
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 1000);
    QVERIFY(m_keys->pastedAt.first() - start >= 600);

    // Nothing comes forward: no keystroke at all, the text stays on the clipboard.
    m_apps->veskFrontmost = true;
    QVERIFY(AutoPaste::send(0));
    QTest::qWait(AutoPaste::frontWaitMs + 300);
    m_apps->veskFrontmost = false;
    QTest::qWait(200);
    QCOMPARE(m_keys->pastedAt.size(), 1);
}

void TestHandoff::buttonNamesTheChosenApp()
{
    makeView();
    show("Inbox/plain.md");
    QToolButton *button = m_view->handoffButton();
    QCOMPARE(button->text(), u"Claude");
    QCOMPARE(button->toolTip(), u"Copy and activate Claude");
    QVERIFY(!button->icon().isNull());
    QVERIFY(button->isVisible());
    // Between Copy and Raw in the header.
    auto *row = qobject_cast<QHBoxLayout *>(button->parentWidget()->layout());
    QVERIFY(row);
    QCOMPARE(row->indexOf(button), row->indexOf(m_view->copyButton()) + 1);
    QCOMPARE(row->indexOf(m_view->rawButton()), row->indexOf(button) + 1);

    m_view->preferences()->setHandoffApp(QStringLiteral("chatgpt"));
    QCOMPARE(button->text(), u"ChatGPT");
    QCOMPARE(button->toolTip(), u"Copy and activate ChatGPT");
    m_view->preferences()->setHandoffApp(QStringLiteral("Claude"));
    QCOMPARE(button->text(), u"Claude");
    m_view->preferences()->setHandoffApp(QStringLiteral("chatgpt"));
    m_view->preferences()->setHandoffApp(QStringLiteral("something else"));
    QCOMPARE(button->text(), u"Claude");

    // Another Preferences object (the settings window's) is followed once set.
    Preferences shared;
    m_view->setPreferences(&shared);
    shared.setHandoffApp(QStringLiteral("chatgpt"));
    QCOMPARE(button->text(), u"ChatGPT");
}

void TestHandoff::handoffCopiesNotifiesAndOpens()
{
    makeView();
    show("Inbox/plain.md");
    m_apps->installed.insert(claudeID, claudeLocation);
    m_view->handoffButton()->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nNo variables here.");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening Claude");
    QVERIFY(m_view->noticeLabel()->isVisible());
    QCOMPARE(m_apps->lookedUp, QStringList{claudeID});
    QCOMPARE(m_apps->opened, QList<QUrl>{claudeLocation});
    QVERIFY(!m_view->fillSheet());
    m_apps->complete();
    QTest::qWait(int(pasteDelayMs) + 150);
    QVERIFY(m_keys->pastedAt.isEmpty()); // auto-paste is off by default

    // ChatGPT, not installed: the web client, and the notice names it.
    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("chatgpt"));
    m_view->handoffButton()->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening ChatGPT");
    QCOMPARE(m_apps->lookedUp.last(), chatgptID);
    QCOMPARE(m_apps->openedUrls, QList<QUrl>{QUrl(QStringLiteral("https://chatgpt.com/"))});

    // An unknown stored value hands off to Claude.
    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("ChatGPT"));
    m_view->handoffButton()->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening Claude");
    QCOMPARE(m_apps->lookedUp.last(), claudeID);
}

void TestHandoff::handoffShortcutInTheEditor()
{
    makeView();
    show("Inbox/plain.md");
    m_view->editor()->setFocus();
    QTRY_VERIFY(m_view->editor()->hasFocus());
    QTest::keyClick(m_view->editor(), Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening Claude");
    QCOMPARE(m_apps->lookedUp, QStringList{claudeID});
    QCOMPARE(m_view->editor()->toPlainText(), u"\nNo variables here."); // no line typed

    // From the title field too; its Return alone still only saves.
    m_view->titleField()->setFocus();
    QTest::keyClick(m_view->titleField(), Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(m_apps->lookedUp.size(), 2);
    QTest::keyClick(m_view->titleField(), Qt::Key_Return);
    QCOMPARE(m_apps->lookedUp.size(), 2);
}

void TestHandoff::autoPastePreferenceIsReadOnce()
{
    makeView();
    show("Inbox/plain.md");
    m_apps->installed.insert(claudeID, claudeLocation);

    // On when the hand-off starts, off by the time the app reports back: it pastes.
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    m_view->handoffButton()->click();
    QSettings().setValue(QStringLiteral("autoPaste"), false);
    m_apps->complete();
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 3000);

    // Off when it starts, on by then: it does not.
    m_view->handoffButton()->click();
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    m_apps->complete();
    QTest::qWait(int(pasteDelayMs) + 200);
    QCOMPARE(m_keys->pastedAt.size(), 1);
}

void TestHandoff::fillSheetConfirmHandsOff()
{
    makeView();
    show("Inbox/vars.md");
    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("chatgpt"));
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    m_view->handoffButton()->click();
    QPointer<VariableFillSheet> sheet = m_view->fillSheet();
    QVERIFY(sheet && sheet->isVisible());
    QVERIFY(m_view->pendingActivateHandoff());
    // Nothing copied, shown or opened before the sheet is confirmed.
    QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched");
    QVERIFY(m_view->noticeLabel()->text().isEmpty());
    QVERIFY(m_apps->lookedUp.isEmpty());

    QTest::keyClicks(sheet->field(QStringLiteral("name")), QStringLiteral("Ada"));
    sheetButton("copyButton")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello Ada!");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening ChatGPT");
    QCOMPARE(m_apps->lookedUp, QStringList{chatgptID});
    QCOMPARE(m_apps->openedUrls.size(), 1);
    QVERIFY(!m_view->pendingActivateHandoff());
    QTRY_VERIFY(!sheet);
    QTRY_COMPARE_WITH_TIMEOUT(m_keys->pastedAt.size(), 1, 3000);

    // The next plain copy through the sheet is just a copy.
    m_view->copyAction();
    sheetButton("copyButton")->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied filled prompt");
    QCOMPARE(m_apps->lookedUp.size(), 1);
}

void TestHandoff::fillSheetCancelHandsOffNothing()
{
    makeView();
    show("Inbox/vars.md");
    for (const char *how : {"Cancel", "Escape", "close button"}) {
        m_view->handoffButton()->click();
        QPointer<VariableFillSheet> sheet = m_view->fillSheet();
        QVERIFY(sheet);
        QTest::keyClicks(sheet->field(QStringLiteral("name")), QStringLiteral("Ada"));
        if (qstrcmp(how, "Cancel") == 0)
            sheetCancelButton()->click();
        else if (qstrcmp(how, "Escape") == 0)
            QTest::keyClick(sheet->field(QStringLiteral("name")), Qt::Key_Escape);
        else
            sheet->findChild<QToolButton *>()->click();
        QTRY_VERIFY2(!sheet, how);
        QVERIFY2(!m_view->pendingActivateHandoff(), how);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched");
        QVERIFY(m_view->noticeLabel()->text().isEmpty());
        QVERIFY(m_apps->lookedUp.isEmpty());
        QVERIFY(m_apps->openedUrls.isEmpty());
    }

    // The abandoned hand-off does not come back with the next copy.
    m_view->copyAction();
    sheetButton("copyButton")->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied filled prompt");
    QVERIFY(m_apps->lookedUp.isEmpty());
}

void TestHandoff::dismissalPastTheButtonsKeepsTheHandoffWaiting()
{
    makeView();
    show("Inbox/vars.md");
    m_view->handoffButton()->click();
    QPointer<VariableFillSheet> sheet = m_view->fillSheet();
    QVERIFY(sheet);
    sheet->close(); // as the window manager's close button does
    QTRY_VERIFY(!sheet);
    QVERIFY(!m_view->fillSheet());
    QVERIFY(m_view->pendingActivateHandoff());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched");
    QVERIFY(m_apps->lookedUp.isEmpty());

    // So the next fill, opened for a plain copy, hands off when confirmed.
    m_view->fillButton()->click();
    sheetButton("copyButton")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello {{name}}!");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied — opening Claude");
    QCOMPARE(m_apps->lookedUp, QStringList{claudeID});
    QVERIFY(!m_view->pendingActivateHandoff());
}

QTEST_MAIN(TestHandoff)
#include "tst_handoff.moc"
