#include "AppState.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "ui/detail/EditorText.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/detail/VariableFillSheet.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextBlock>
#include <QToolButton>

using TestFiles::at;
using TestFiles::read;
using TestFiles::write;
using namespace Qt::StringLiterals;

// The prompt editor and the fill sheet with real widgets and the real clipboard.
class TestDetail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void typingSavesOnceAndAutosaveNeverDisturbsTyping();
    void selectionChangeResetsTheDraft();
    void ownSaveNeverRewritesTheEditor();
    void pinSavesAtOnceAndKeepsBodyEdits();
    void copyWithoutVariables();
    void fillSheetCopiesFilledTextOrNothing();
    void rawCopiesTemplateAndPanelCounts();
    void copyShortcutRespectsTextSelection();
    void secondNoticeIsClearedByFirstTimer();
    void focusGoesToTheNewPromptOnce();
    void titleKeepsWhatIsTypedAcrossSaves();
    void pastedLineBreaksInTheTitleBecomeSpaces();
    void anotherProgramsChangeReachesTheEditor();
    void anotherProgramsVersionCanBeRestored();
    void bodyKeepsItsLineEnds();
    void editsKeepEveryUntouchedLineEnd();
    void noticeStaysWithItsPrompt();
    void longVariableListsAreElided();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    void show(const char *id) { m_view->setPrompt(*m_library->prompt(QString::fromUtf8(id))); }
    // Hands every republished version of the prompt to the view, as the window does.
    void followLibrary(const char *id)
    {
        connect(m_state.get(), &AppState::changed, m_view.get(), [this, id = QString::fromUtf8(id)] {
            if (const std::optional<Prompt> p = m_library->prompt(id))
                m_view->setPrompt(*p);
        });
    }
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

void TestDetail::ownSaveNeverRewritesTheEditor()
{
    // A file without a header gets one at its first save; the body then
    // reads back with the header's blank line in front.
    write(path("Inbox/bare.md"), "Line one\nLine two", at(4));
    m_library->reload();
    show("Inbox/bare.md");
    followLibrary("Inbox/bare.md");
    QPlainTextEdit *editor = m_view->editor();
    editor->setFocus();
    editor->moveCursor(QTextCursor::End);
    typeInEditor(QStringLiteral("!"));
    QTRY_COMPARE_WITH_TIMEOUT(read(path("Inbox/bare.md")), QByteArray("---\ntitle: \n---\n\nLine one\nLine two!"), 2000);
    QCoreApplication::processEvents();

    // The editor still shows what was typed, where it was typed, and one
    // Undo takes back the one keystroke.
    QCOMPARE(editor->toPlainText(), u"Line one\nLine two!");
    QCOMPARE(editor->textCursor().position(), 18);
    editor->undo();
    QCOMPARE(editor->toPlainText(), u"Line one\nLine two");
    QVERIFY(!editor->document()->isUndoAvailable());

    // Typing on writes the same form again: nothing accumulates.
    editor->moveCursor(QTextCursor::End);
    typeInEditor(QStringLiteral("?"));
    QTRY_COMPARE_WITH_TIMEOUT(read(path("Inbox/bare.md")), QByteArray("---\ntitle: \n---\n\nLine one\nLine two?"), 2000);
    QCoreApplication::processEvents();
    QCOMPARE(editor->toPlainText(), u"Line one\nLine two?");
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

    // Within the save delay of typing: the edit pending then does not bring
    // the old pin back, and the typed text is written with the pin.
    typeInEditor(QStringLiteral(" more"));
    m_view->pinButton()->click();
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: Plain\n---\n\nNo variables here. draft more");
    QTest::qWait(AppState::saveDelayMs + 200);
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: Plain\n---\n\nNo variables here. draft more");
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
    // A sheet of the window (a real one on macOS), not a drawer: Qt::Sheet
    // is the window type, not OR-ed into the dialog's.
    QCOMPARE(sheet->windowType(), Qt::Sheet);
    QCOMPARE(sheet->windowModality(), Qt::WindowModal);
    QCOMPARE(sheet->parentWidget()->window(), m_view->window());
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

    // In a value field Return is a new line and Ctrl+Return copies.
    m_view->copyAction();
    sheet = m_view->fillSheet();
    QPlainTextEdit *name = sheet->field(QStringLiteral("name"));
    name->setFocus();
    QTest::keyClicks(name, QStringLiteral("A"));
    QTest::keyClick(name, Qt::Key_Return);
    QTest::keyClicks(name, QStringLiteral("B"));
    QVERIFY(sheet->isVisible());
    QTest::keyClick(name, Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"\nHello A\nB, {{ place }}!");
    QTRY_VERIFY(!sheet);
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

void TestDetail::titleKeepsWhatIsTypedAcrossSaves()
{
    show("Inbox/plain.md");
    followLibrary("Inbox/plain.md");
    QLineEdit *title = m_view->titleField();
    title->setFocus();
    title->selectAll();
    QTest::keyClicks(title, QStringLiteral("Hello"));
    QTRY_COMPARE_WITH_TIMEOUT(m_library->prompt(QStringLiteral("Inbox/plain.md"))->frontMatter.title, u"Hello", 2000);
    // The file keeps a trailing space that reads back trimmed: not a change.
    QTest::keyClicks(title, QStringLiteral(" "));
    QTRY_VERIFY_WITH_TIMEOUT(!m_state->hasPendingSave(), 2000);
    QTest::keyClicks(title, QStringLiteral("World"));
    QCOMPARE(title->text(), u"Hello World");

    // A colon makes the writer quote the title and the quotes come back into
    // the field; the cursor stays behind what was typed.
    title->selectAll();
    QTest::keyClicks(title, QStringLiteral("Ratio: 16"));
    QTRY_COMPARE_WITH_TIMEOUT(title->text(), u"\"Ratio: 16\"", 2000);
    QTest::keyClicks(title, QStringLiteral(":9 wide"));
    QCOMPARE(title->text(), u"\"Ratio: 16:9 wide\"");

    // Another program tags the prompt meanwhile: the tag comes in, the
    // title being typed stays.
    const QString published = m_library->prompt(QStringLiteral("Inbox/plain.md"))->frontMatter.title;
    write(path("Inbox/plain.md"), ("---\ntitle: " + published + "\ntags: [x]\n---\n\nNo variables here.").toUtf8(), at(99));
    m_library->reload();
    QCOMPARE(title->text(), u"\"Ratio: 16:9 wide\"");
    QCOMPARE(m_view->draft().frontMatter.tags, QStringList{u"x"_s});
}

void TestDetail::pastedLineBreaksInTheTitleBecomeSpaces()
{
    show("Inbox/plain.md");
    QLineEdit *title = m_view->titleField();
    title->setFocus();
    title->selectAll();
    QGuiApplication::clipboard()->setText(QStringLiteral("First line\nsecond line\r\nthird\u2029end"));
    QTest::keySequence(title, QKeySequence::Paste);
    QCOMPARE(title->text(), u"First line second line third end");
    QCOMPARE(title->cursorPosition(), title->text().size());
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: First line second line third end\n---\n\nNo variables here.");
}

void TestDetail::anotherProgramsChangeReachesTheEditor()
{
    QString lines;
    for (int i = 0; i < 200; ++i)
        lines += QStringLiteral("line %1\n").arg(i);
    write(path("Inbox/long.md"), ("---\ntitle: Long\n---\n\n" + lines).toUtf8(), at(5));
    m_library->reload();
    show("Inbox/long.md");
    followLibrary("Inbox/long.md");
    QPlainTextEdit *editor = m_view->editor();
    editor->setFocus();
    QTextCursor cursor(editor->document()->findBlockByNumber(151));
    cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, 2);
    editor->setTextCursor(cursor);
    editor->verticalScrollBar()->setValue(100);
    const auto topLine = [&] { return editor->cursorForPosition(QPoint(20, 10)).block().text(); };
    QCOMPARE(topLine(), u"line 99");

    // Edited elsewhere, then Reload from Disk (or coming back to the app).
    QString theirs = lines;
    theirs.replace(QStringLiteral("line 120\n"), QStringLiteral("line 120 changed\n"));
    write(path("Inbox/long.md"), ("---\ntitle: Long\n---\n\nnew first\nnew second\n" + theirs).toUtf8(), at(50));
    m_library->reload();
    QCOMPARE(editor->toPlainText(), u"\nnew first\nnew second\n" + theirs);
    QVERIFY(!m_state->hasPendingSave()); // taking it in is not an edit
    QCOMPARE(editor->textCursor().block().text(), u"line 150");
    QCOMPARE(editor->textCursor().positionInBlock(), 2);
    QCOMPARE(topLine(), u"line 99");

    // The next keystroke writes their text with it, not the old one.
    QTest::keyClicks(editor, QStringLiteral("Z"));
    m_state->flushPendingSave();
    const QByteArray written = read(path("Inbox/long.md"));
    QVERIFY(written.contains("\nnew second\n"));
    QVERIFY(written.contains("\nline 120 changed\n"));
    QVERIFY(written.contains("\nliZne 150\n"));
}

void TestDetail::anotherProgramsVersionCanBeRestored()
{
    show("Inbox/plain.md");
    followLibrary("Inbox/plain.md");
    typeInEditor(QStringLiteral(" mine"));
    write(path("Inbox/plain.md"), "---\ntitle: Plain\n---\n\nTheirs.", at(60));
    // The delayed save writes the user's text over theirs...
    QTRY_COMPARE_WITH_TIMEOUT(read(path("Inbox/plain.md")), QByteArray("---\ntitle: Plain\n---\n\nNo variables here. mine"),
                              2000);
    QCOMPARE(m_view->editor()->toPlainText(), u"\nNo variables here. mine");
    // ...and offers theirs back.
    auto *bar = m_view->findChild<QWidget *>(QStringLiteral("otherVersionBar"));
    QVERIFY(bar && bar->isVisible());
    auto *restore = m_view->findChild<QPushButton *>(QStringLiteral("restoreOtherVersion"));
    restore->setFocus(Qt::TabFocusReason); // answered from the keyboard
    QTest::keyClick(restore, Qt::Key_Space);
    QVERIFY(bar->isHidden());
    QVERIFY(m_view->editor()->hasFocus()); // back in the text, not on to some other control
    QCOMPARE(m_view->editor()->toPlainText(), u"\nTheirs.");
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: Plain\n---\n\nTheirs.");

    // Undo brings the user's text back, and it is saved like any edit.
    m_view->editor()->undo();
    QCOMPARE(m_view->editor()->toPlainText(), u"\nNo variables here. mine");
    m_state->flushPendingSave();
    QCOMPARE(read(path("Inbox/plain.md")), "---\ntitle: Plain\n---\n\nNo variables here. mine");
}

void TestDetail::bodyKeepsItsLineEnds()
{
    // Mostly CR LF, one plain line feed, a no-break space.
    const QByteArray original = "---\r\ntitle: T\r\n---\r\nFirst\r\nSecond\nThird\xc2\xa0" "end\r\n";
    write(path("Inbox/crlf.md"), original, at(4));
    m_library->reload();
    show("Inbox/crlf.md");
    QPlainTextEdit *editor = m_view->editor();
    editor->setFocus();
    editor->setTextCursor(QTextCursor(editor->document()->findBlockByNumber(3)));
    editor->moveCursor(QTextCursor::EndOfBlock);
    QTest::keyClicks(editor, QStringLiteral("!"));
    editor->moveCursor(QTextCursor::Down);
    editor->moveCursor(QTextCursor::EndOfBlock);
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::keyClicks(editor, QStringLiteral("added"));
    m_state->flushPendingSave();
    // Such a file has no header (its closing line ends in CR): one is added,
    // and the body follows it as it was, with the typing in its line ends.
    QCOMPARE(read(path("Inbox/crlf.md")),
             "---\ntitle: \n---\n\n---\r\ntitle: T\r\n---\r\nFirst!\r\nSecond\nadded\r\nThird\xc2\xa0" "end\r\n");
}

void TestDetail::editsKeepEveryUntouchedLineEnd()
{
    // Random bodies with every kind of line end, random edits of what the
    // editor shows: the body read back in the editor is what was shown, and
    // the body's text around the edit is untouched, line ends and all.
    const QStringList pieces = {u"a"_s, u"bc"_s, u"\n"_s, u"\r\n"_s, u"\r"_s, u"\u2029"_s, u"\u00a0"_s, u" "_s};
    QRandomGenerator random(6);
    const auto randomText = [&](int length) {
        QString text;
        for (int i = 0; i < length; ++i)
            text += pieces[random.bounded(int(pieces.size()))];
        return text;
    };
    for (int round = 0; round < 2000; ++round) {
        const QString body = randomText(random.bounded(24));
        const QString before = EditorText::fromBody(body);
        QString after = before;
        for (int edits = 1 + random.bounded(2); edits > 0; --edits) {
            const int start = random.bounded(int(after.size()) + 1);
            const int removed = random.bounded(std::min(3, int(after.size()) - start + 1));
            after.replace(start, removed, EditorText::fromBody(randomText(random.bounded(4))));
        }
        const QString result = EditorText::toBody(body, before, after);
        QVERIFY2(EditorText::fromBody(result) == after, qPrintable(QString(body + u"|" + after + u"|" + result).replace(u"\r"_s, u"<CR>"_s).replace(u"\n"_s, u"<LF>"_s)));
        // What each shown character stands for in the body.
        QStringList stands;
        for (qsizetype i = 0; i < body.size(); ++i) {
            const bool pair = body.mid(i, 2) == u"\r\n";
            stands.append(body.mid(i, pair ? 2 : 1));
            i += pair ? 1 : 0;
        }
        QCOMPARE(stands.size(), before.size());
        // Only lone CRs and LFs at the edges of the change may join it, where
        // they would otherwise meet and read as one CR LF break.
        const EditorText::Change change = EditorText::difference(before, after);
        qsizetype front = change.start;
        while (front > 0 && stands[front - 1] == u"\r")
            --front;
        qsizetype back = before.size() - change.start - change.removed;
        while (back > 0 && stands[before.size() - back] == u"\n")
            --back;
        QVERIFY2(result.startsWith(stands.mid(0, front).join(QString())), qPrintable(body));
        QVERIFY2(result.endsWith(stands.mid(before.size() - back).join(QString())), qPrintable(body));

        // Taking in another version line by line arrives at that version.
        QString applied = before;
        int shift = 0;
        for (const EditorText::Change &c : EditorText::lineChanges(before, after)) {
            applied.replace(c.start + shift, c.removed, after.mid(c.start + shift, c.inserted));
            shift += c.inserted - c.removed;
        }
        QCOMPARE(applied, after);
    }
}

void TestDetail::noticeStaysWithItsPrompt()
{
    show("Inbox/plain.md");
    m_view->copyAction();
    QVERIFY(m_view->noticeLabel()->isVisible());
    QTest::qWait(1000);
    show("Inbox/vars.md");
    QVERIFY(m_view->noticeLabel()->isHidden());

    // The first prompt's timer does not clear this prompt's notice.
    m_view->rawButton()->click();
    QCOMPARE(m_view->noticeLabel()->text(), u"Copied template");
    QTest::qWait(900);
    QVERIFY(m_view->noticeLabel()->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(m_view->noticeLabel()->isHidden(), 1500);
}

void TestDetail::longVariableListsAreElided()
{
    show("Inbox/vars.md");
    QStringList names;
    for (int i = 0; i < 14; ++i)
        names.append(QStringLiteral("customer_detail_number_%1").arg(i));
    m_view->editor()->setPlainText(u"{{" + names.join(u"}} {{") + u"}}");
    QCoreApplication::processEvents();
    QLabel *shown = nullptr;
    for (QLabel *label : m_view->variablesPanel()->findChildren<QLabel *>()) {
        if (label->text().startsWith(u"customer_detail_number_0, "))
            shown = label;
    }
    QVERIFY(shown);
    // Cut with an ellipsis, wholly inside its own width, with room before the button.
    QVERIFY2(shown->text().endsWith(u'…'), qPrintable(shown->text()));
    QVERIFY(shown->fontMetrics().horizontalAdvance(shown->text()) <= shown->width());
    QVERIFY(shown->geometry().right() + 12 <= m_view->fillButton()->geometry().left());
    QCOMPARE(shown->toolTip(), names.join(u", "));

    // A list that fits is shown whole; wider, more of it shows.
    m_view->editor()->setPlainText(QStringLiteral("{{a}} {{b}}"));
    QCoreApplication::processEvents();
    QCOMPARE(shown->text(), u"a, b");
}

QTEST_MAIN(TestDetail)
#include "tst_detail.moc"
