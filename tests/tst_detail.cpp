#include "AppState.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/detail/VariableFillSheet.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

using TestFiles::at;
using TestFiles::read;
using TestFiles::write;

// The prompt editor and the fill sheet with real widgets and the real clipboard.
class TestDetail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void typingSavesOnceAndAutosaveNeverDisturbsTyping();
    void selectionChangeResetsTheDraft();
    void pinSavesAtOnceAndKeepsBodyEdits();
    void copyWithoutVariables();
    void fillSheetCopiesFilledTextOrNothing();
    void rawCopiesTemplateAndPanelCounts();
    void copyShortcutRespectsTextSelection();
    void secondNoticeIsClearedByFirstTimer();
    void focusGoesToTheNewPromptOnce();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    void show(const char *id) { m_view->setPrompt(*m_library->prompt(QString::fromUtf8(id))); }
    void typeInEditor(const QString &text)
    {
        m_view->editor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(m_view->editor(), text);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<PromptDetailView> m_view;
};

void TestDetail::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("Inbox/plain.md"), "---\ntitle: Plain\n---\n\nNo variables here.", at(3));
    write(path("Inbox/vars.md"), "---\ntitle: Vars\n---\n\nHello {{name}}, {{ place }}!", at(2));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_view = std::make_unique<PromptDetailView>(m_state.get());
    m_view->resize(700, 500);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
}

void TestDetail::cleanup()
{
    m_view.reset();
    m_state.reset();
    m_library.reset();
}

void TestDetail::typingSavesOnceAndAutosaveNeverDisturbsTyping()
{
    show("Inbox/plain.md");
    // Selections and views reload with every save: wire them as the window does.
    connect(m_state.get(), &AppState::changed, m_view.get(), [this] {
        if (const std::optional<Prompt> p = m_library->prompt(QStringLiteral("Inbox/plain.md")))
            m_view->setPrompt(*p);
    });
    QSignalSpy reloads(m_library.get(), &PromptLibrary::changed);
    m_view->editor()->setFocus();
    m_view->editor()->moveCursor(QTextCursor::End);
    typeInEditor(QStringLiteral(" More"));
    QCOMPARE(reloads.size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(reloads.size(), 1, 2000);
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: Plain\n---\n\nNo variables here. More");

    // After the save's reload, cursor, selection, focus and text are untouched.
    QTextCursor cursor = m_view->editor()->textCursor();
    cursor.setPosition(4);
    cursor.setPosition(9, QTextCursor::KeepAnchor);
    m_view->editor()->setTextCursor(cursor);
    m_view->titleField()->setFocus();
    m_view->titleField()->setCursorPosition(2);
    QTest::keyClicks(m_view->titleField(), QStringLiteral("X"));
    QTRY_COMPARE_WITH_TIMEOUT(reloads.size(), 2, 2000);
    QCOMPARE(m_library->prompt(QStringLiteral("Inbox/plain.md"))->frontMatter.title, u"PlXain");
    QCOMPARE(m_view->titleField()->text(), u"PlXain");
    QCOMPARE(m_view->titleField()->cursorPosition(), 3);
    QVERIFY(m_view->titleField()->hasFocus());
    QCOMPARE(m_view->editor()->textCursor().selectionStart(), 4);
    QCOMPARE(m_view->editor()->textCursor().selectionEnd(), 9);

    // Return in the title writes at once.
    QTest::keyClicks(m_view->titleField(), QStringLiteral("Y"));
    QVERIFY(m_state->hasPendingSave());
    QTest::keyClick(m_view->titleField(), Qt::Key_Return);
    QVERIFY(!m_state->hasPendingSave());
    QCOMPARE(m_library->prompt(QStringLiteral("Inbox/plain.md"))->frontMatter.title, u"PlXYain");
}

void TestDetail::selectionChangeResetsTheDraft()
{
    show("Inbox/plain.md");
    typeInEditor(QStringLiteral(" typed"));
    show("Inbox/vars.md");
    QCOMPARE(m_view->titleField()->text(), u"Vars");
    QCOMPARE(m_view->editor()->toPlainText(), u"\nHello {{name}}, {{ place }}!");
    QCOMPARE(m_view->draft().id, u"Inbox/vars.md");
    // The typed text is the pending save of the first prompt, not of this one.
    m_state->flushPendingSave();
    QVERIFY(read(path("Inbox/plain.md")).endsWith("here. typed"));
    QCOMPARE(read(path("Inbox/vars.md")), "---\ntitle: Vars\n---\n\nHello {{name}}, {{ place }}!");
}

void TestDetail::pinSavesAtOnceAndKeepsBodyEdits()
{
    show("Inbox/plain.md");
    typeInEditor(QStringLiteral(" draft"));
    QCOMPARE(m_view->pinButton()->toolTip(), u"Pin");
    m_view->pinButton()->click();
    // On disk at once; the view learns of it from the library.
    QVERIFY(read(path("Inbox/plain.md")).contains("pinned: true"));
    QVERIFY(!m_view->draft().frontMatter.pinned);
    m_view->setPrompt(*m_library->prompt(QStringLiteral("Inbox/plain.md")));
    QVERIFY(m_view->draft().frontMatter.pinned);
    QCOMPARE(m_view->pinButton()->toolTip(), u"Unpin");
    QVERIFY(m_view->editor()->toPlainText().endsWith(u"here. draft"));
    QVERIFY(m_view->draft().body.endsWith(u"here. draft"));
}

void TestDetail::copyWithoutVariables()
{
    show("Inbox/plain.md");
    QVERIFY(m_view->rawButton()->isHidden());
    QVERIFY(m_view->variablesPanel()->isHidden());
    QCOMPARE(m_view->copyButton()->toolTip(), u"Copy to clipboard (" + QKeySequence(QKeySequence::Copy).toString(QKeySequence::NativeText) + u")");
    m_view->copyButton()->click();
    QVERIFY(!m_view->fillSheet());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nNo variables here.");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied");
    QVERIFY(m_view->noticeLabel()->isVisible());
}

void TestDetail::fillSheetCopiesFilledTextOrNothing()
{
    show("Inbox/vars.md");
    QVERIFY(m_view->copyButton()->toolTip().startsWith(u"Fill variables and copy ("));
    m_view->copyButton()->click();
    QPointer<VariableFillSheet> sheet = m_view->fillSheet();
    QVERIFY(sheet && sheet->isVisible());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched"); // nothing copied yet
    QVERIFY(sheet->field(QStringLiteral("name")) && sheet->field(QStringLiteral("place")));

    QTest::keyClicks(sheet->field(QStringLiteral("name")), QStringLiteral("Ada"));
    QCOMPARE(sheet->preview()->toPlainText(), u"\nHello Ada, {{ place }}!"); // live
    sheet->field(QStringLiteral("place"))->setPlainText(QStringLiteral("x"));
    sheet->field(QStringLiteral("place"))->clear(); // typed, then deleted: an empty value
    sheet->findChild<QPushButton *>(QStringLiteral("copyButton"))->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello Ada, !");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied filled prompt");
    QTRY_VERIFY(!sheet);

    // Opened again: empty fields. Cancelled: nothing copied, no notice.
    QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
    m_view->noticeLabel()->clear();
    m_view->fillButton()->click();
    sheet = m_view->fillSheet();
    QVERIFY(sheet->field(QStringLiteral("name"))->toPlainText().isEmpty());
    QTest::keyClick(sheet, Qt::Key_Escape);
    QTRY_VERIFY(!sheet);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched");
    QVERIFY(m_view->noticeLabel()->text().isEmpty());

    // Copy with nothing typed leaves the placeholders.
    m_view->copyAction();
    m_view->fillSheet()->findChild<QPushButton *>(QStringLiteral("copyButton"))->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello {{name}}, {{ place }}!");
}

void TestDetail::rawCopiesTemplateAndPanelCounts()
{
    show("Inbox/vars.md");
    QVERIFY(m_view->variablesPanel()->isVisible());
    QCOMPARE(m_view->variablesCountLabel()->text(), u"2 variables");
    m_view->rawButton()->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello {{name}}, {{ place }}!");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied template");

    m_view->editor()->setPlainText(QStringLiteral("Only {{one}} and {{one}}"));
    QCOMPARE(m_view->variablesCountLabel()->text(), u"1 variable");
    m_view->editor()->setPlainText(QStringLiteral("none"));
    QVERIFY(m_view->variablesPanel()->isHidden());
    QVERIFY(m_view->rawButton()->isHidden());
}

void TestDetail::copyShortcutRespectsTextSelection()
{
    show("Inbox/plain.md");
    m_view->editor()->setFocus();
    QTextCursor cursor = m_view->editor()->textCursor();
    cursor.setPosition(1);
    cursor.setPosition(3, QTextCursor::KeepAnchor);
    m_view->editor()->setTextCursor(cursor);
    QTest::keySequence(m_view->editor(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"No");
    QVERIFY(m_view->noticeLabel()->text().isEmpty());

    cursor.clearSelection();
    m_view->editor()->setTextCursor(cursor);
    QTest::keySequence(m_view->editor(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nNo variables here.");
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied");

    m_view->titleField()->setFocus();
    m_view->titleField()->setSelection(0, 3);
    QTest::keySequence(m_view->titleField(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"Pla");
}

void TestDetail::secondNoticeIsClearedByFirstTimer()
{
    show("Inbox/plain.md");
    QElapsedTimer clock;
    clock.start();
    m_view->copyAction();
    QTest::qWait(1000);
    m_view->copyTemplate();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied template");
    QTRY_VERIFY_WITH_TIMEOUT(m_view->noticeLabel()->isHidden(), 1500);
    // Cleared by the first timer, about 1.6 s after the first notice.
    QVERIFY2(clock.elapsed() < 2300, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(clock.elapsed() >= PromptDetailView::noticeDurationMs);
}

void TestDetail::focusGoesToTheNewPromptOnce()
{
    m_state->setPendingEditorFocusID(QStringLiteral("Inbox/vars.md"));
    show("Inbox/plain.md"); // another prompt's view leaves the request alone
    QCOMPARE(m_state->pendingEditorFocusID(), QStringLiteral("Inbox/vars.md"));
    m_view->titleField()->setFocus();
    show("Inbox/vars.md");
    QVERIFY(!m_state->pendingEditorFocusID());
    QTRY_VERIFY(m_view->editor()->hasFocus());
}

QTEST_MAIN(TestDetail)
#include "tst_detail.moc"
