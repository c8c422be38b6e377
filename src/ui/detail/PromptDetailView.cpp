#include "PromptDetailView.h"

#include "AppState.h"
#include "Clipboard.h"
#include "EditorText.h"
#include "FrontMatter.h"
#include "Handoff.h"
#include "HandoffApp.h"
#include "OtherVersionBar.h"
#include "PromptLibrary.h"
#include "PromptText.h"
#include "TitleField.h"
#include "VariableFillSheet.h"
#include "Variables.h"
#include "platform/DesktopConventions.h"
#include "ui/shell/Preferences.h"
#include "ui/theme/ElidedLabel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ShortcutText.h"
#include "ui/theme/Theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBlock>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QString nativeShortcut(const QKeySequence &sequence)
{
    return ShortcutText::forDisplay(sequence);
}

const QKeySequence rawSequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
const QKeySequence handoffSequence(Qt::CTRL | Qt::Key_Return); // Command-Return on macOS

} // namespace

PromptDetailView::PromptDetailView(AppState *state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_title(new TitleField(this))
    , m_notice(new QLabel(this))
    , m_pin(new QToolButton(this))
    , m_copy(new QToolButton(this))
    , m_handoff(new QToolButton(this))
    , m_raw(new QToolButton(this))
    , m_editor(new QPlainTextEdit(this))
    , m_variablesDivider(Theme::divider(this))
    , m_variablesPanel(new QWidget(this))
    , m_variablesIcon(new QLabel(m_variablesPanel))
    , m_variablesCount(new QLabel(m_variablesPanel))
    , m_variablesNames(new ElidedLabel(m_variablesPanel))
    , m_fillButton(new QPushButton(QStringLiteral("Fill && Copy"), m_variablesPanel))
    , m_otherVersionBar(new OtherVersionBar(this))
    , m_copyShortcut(new QShortcut(QKeySequence::Copy, this))
    , m_rawShortcut(new QShortcut(rawSequence, this))
    , m_handoffShortcut(new QShortcut(handoffSequence, this))
    , m_preferences(new Preferences(this))
{
    setObjectName(QStringLiteral("promptDetail"));
    auto *header = new QWidget(this);
    header->setObjectName(QStringLiteral("detailHeader"));
    header->setAutoFillBackground(true);
    header->setBackgroundRole(QPalette::Window);
    buildHeader(header);
    buildVariablesPanel();

    m_editor->setObjectName(QStringLiteral("bodyEditor"));
    m_editor->setFont(Theme::monospaceFont(13));
    m_editor->setFrameShape(QFrame::NoFrame);
    m_editor->document()->setDocumentMargin(8);
    m_editor->setTabChangesFocus(false);
    m_editor->installEventFilter(this);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &PromptDetailView::editBody);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(header);
    layout->addWidget(Theme::divider(this));
    layout->addWidget(m_otherVersionBar);
    layout->addWidget(m_editor, 1);
    layout->addWidget(m_variablesDivider);
    layout->addWidget(m_variablesPanel);

    // ⌘C copies the prompt unless a text field has a selection to copy; the
    // fields themselves take the key first (see eventFilter).
    m_copyShortcut->setContext(Qt::WindowShortcut);
    connect(m_copyShortcut, &QShortcut::activated, this, &PromptDetailView::copyAction);
    m_rawShortcut->setContext(Qt::WindowShortcut);
    connect(m_rawShortcut, &QShortcut::activated, this, [this] {
        if (!Variables::extract(m_draft.body).isEmpty())
            copyTemplate();
    });
    m_handoffShortcut->setContext(Qt::WindowShortcut);
    connect(m_handoffShortcut, &QShortcut::activated, this, &PromptDetailView::copyAndOpenHandoff);
    connect(m_preferences, &Preferences::handoffAppChanged, this, &PromptDetailView::updateHandoffButton);
    updateHandoffButton();
    updateIcons();

    // A creation flow may ask for focus after this view already shows its prompt.
    connect(m_state, &AppState::pendingEditorFocusIDChanged, this, &PromptDetailView::claimPendingFocusIfMatched);

    m_otherVersionBar->hide();
    connect(m_state, &AppState::overwrittenVersionKept, this, &PromptDetailView::updateOtherVersionBar);
    // Either answer hides the bar with the button that had the focus: the
    // keyboard goes back to the text the answer was about.
    connect(m_otherVersionBar, &OtherVersionBar::restoreRequested, this, [this] {
        restoreOtherVersion();
        m_editor->setFocus(Qt::OtherFocusReason);
    });
    connect(m_otherVersionBar, &OtherVersionBar::keepRequested, this, [this] {
        m_state->forgetOverwrittenVersion(m_draft.id);
        updateOtherVersionBar();
        m_editor->setFocus(Qt::OtherFocusReason);
    });
}

void PromptDetailView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    claimPendingFocusIfMatched();
}

void PromptDetailView::buildHeader(QWidget *header)
{
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(14, 10, 14, 10);
    row->setSpacing(8);

    m_title->setObjectName(QStringLiteral("titleField"));
    m_title->setFrame(false);
    m_title->setFont(Theme::font(17, QFont::DemiBold));
    m_title->setPlaceholderText(QStringLiteral("Enter a description"));
    m_title->setAttribute(Qt::WA_MacShowFocusRect, false);
    m_title->installEventFilter(this);
    QPalette titlePalette = m_title->palette();
    titlePalette.setColor(QPalette::Base, Qt::transparent);
    m_title->setPalette(titlePalette);
    connect(m_title, &QLineEdit::textEdited, this, &PromptDetailView::editTitle);
    connect(m_title, &QLineEdit::returnPressed, m_state, &AppState::flushPendingSave);

    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->setFont(Theme::font(11));
    Theme::setTextTone(m_notice, Theme::Tone::Notice);
    m_notice->hide();

    for (QToolButton *button : {m_pin, m_copy, m_handoff, m_raw}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setCursor(Qt::PointingHandCursor);
    }
    m_pin->setObjectName(QStringLiteral("pinButton"));
    // Screen readers read names, not placeholders or tooltips.
    m_title->setAccessibleName(QStringLiteral("Title"));
    m_editor->setAccessibleName(QStringLiteral("Prompt text"));
    connect(m_pin, &QToolButton::clicked, this, &PromptDetailView::togglePin);
    m_copy->setObjectName(QStringLiteral("copyButton"));
    m_copy->setText(QStringLiteral("Copy"));
    m_copy->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_copy->setFont(Theme::font(12));
    connect(m_copy, &QToolButton::clicked, this, &PromptDetailView::copyAction);
    m_handoff->setObjectName(QStringLiteral("handoffButton"));
    m_handoff->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_handoff->setFont(Theme::font(12));
    connect(m_handoff, &QToolButton::clicked, this, &PromptDetailView::copyAndOpenHandoff);
    m_raw->setObjectName(QStringLiteral("rawButton"));
    m_raw->setText(QStringLiteral("Raw"));
    m_raw->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_raw->setFont(Theme::font(12));
    m_raw->setToolTip(u"Copy template with {{variables}} unfilled (" + nativeShortcut(rawSequence) + u")");
    connect(m_raw, &QToolButton::clicked, this, &PromptDetailView::copyTemplate);

    row->addWidget(m_title, 1);
    row->addWidget(m_notice);
    row->addWidget(m_pin);
    row->addWidget(m_copy);
    row->addWidget(m_handoff);
    row->addWidget(m_raw);
}

void PromptDetailView::buildVariablesPanel()
{
    m_variablesPanel->setObjectName(QStringLiteral("variablesPanel"));
    m_variablesPanel->setAutoFillBackground(true);
    auto *row = new QHBoxLayout(m_variablesPanel);
    row->setContentsMargins(14, 8, 14, 8);
    row->setSpacing(6);
    m_variablesCount->setFont(Theme::font(11, QFont::Medium));
    Theme::setTextTone(m_variablesCount, Theme::Tone::Secondary);
    auto *dot = new QLabel(QStringLiteral("·"), m_variablesPanel);
    dot->setObjectName(QStringLiteral("dot"));
    dot->setFont(Theme::font(11));
    Theme::setTextTone(dot, Theme::Tone::Tertiary);
    m_variablesNames->setFont(Theme::font(11));
    Theme::setTextTone(m_variablesNames, Theme::Tone::Tertiary);
    m_fillButton->setObjectName(QStringLiteral("fillButton"));
    m_fillButton->setFont(Theme::font(11));
    m_fillButton->setAutoDefault(false);
    connect(m_fillButton, &QPushButton::clicked, this, &PromptDetailView::openFillSheet);
    row->addWidget(m_variablesIcon);
    row->addWidget(m_variablesCount);
    row->addWidget(dot);
    row->addWidget(m_variablesNames, 1);
    row->addSpacing(12); // the names never run up to the button
    row->addWidget(m_fillButton);
}

void PromptDetailView::setPrompt(const Prompt &prompt)
{
    if (prompt.id != m_draft.id) {
        m_draft = prompt; // edits of the previous prompt already sit in the pending save
        m_published = prompt;
        showDraft();
        updateOtherVersionBar();
        claimPendingFocusIfMatched();
        return;
    }
    // Follow changes of what is published, not differences from it: the
    // library reads back a title without its trailing space, say, and that
    // must not undo the typing.
    const Prompt before = std::exchange(m_published, prompt);
    if (prompt.frontMatter != before.frontMatter && prompt.frontMatter != m_draft.frontMatter) {
        // Field by field: a title typed here and not yet saved stays unless
        // the title itself changed (the other fields are not edited here).
        const QString title = prompt.frontMatter.title != before.frontMatter.title ? prompt.frontMatter.title
                                                                                   : m_draft.frontMatter.title;
        m_draft.frontMatter = prompt.frontMatter;
        m_draft.frontMatter.title = title;
        m_title->showTitle(title);
        updateChrome();
    }
    // Another program's text (or the body as the library read back our own
    // write) is taken while nothing typed here waits to be saved; otherwise
    // the user's text stays, and AppState keeps the other version when it
    // writes over it.
    // The draft as the file format reads it back is the draft: a first save
    // adds a header, and the blank line after it must not move the lines.
    const bool bodyUntouched = m_draft.body == before.body || !m_state->hasPendingSave(m_draft.id);
    const bool ownText = prompt.body == m_draft.body || prompt.body == FrontMatter::bodyAfterHeader(m_draft.body);
    if (prompt.body != before.body && !ownText && bodyUntouched)
        adoptBody(prompt.body);
    m_draft.fileURL = prompt.fileURL;
    m_draft.modifiedAt = prompt.modifiedAt;
}

void PromptDetailView::showDraft()
{
    m_showingDraft = true;
    m_title->setText(m_draft.frontMatter.title);
    m_title->setCursorPosition(0);
    m_editor->setPlainText(m_draft.body);
    m_editorText = EditorText::fromDocument(m_editor->document());
    m_showingDraft = false;
    // A notice belongs to the prompt it was shown for.
    ++m_noticeGeneration;
    m_notice->clear();
    m_notice->hide();
    updateHandoffButton(); // not with every keystroke: it reads the preferences store
    updateChrome();
}

void PromptDetailView::editTitle(const QString &text)
{
    if (m_showingDraft)
        return;
    m_draft.frontMatter.title = text;
    m_state->scheduleSave(m_draft);
}

void PromptDetailView::editBody()
{
    if (m_showingDraft)
        return;
    const QString shown = EditorText::fromDocument(m_editor->document());
    m_draft.body = EditorText::toBody(m_draft.body, m_editorText, shown);
    m_editorText = shown;
    m_state->scheduleSave(m_draft);
    updateChrome();
}

void PromptDetailView::replaceBodyText(const QString &body)
{
    // Only the lines that differ are replaced, as one undoable step, so the
    // cursor and the lines on screen stay with the text around them.
    const QString shown = EditorText::fromBody(body);
    m_editorText = EditorText::fromDocument(m_editor->document()); // what the changes are counted in
    const QList<EditorText::Change> changes = EditorText::lineChanges(m_editorText, shown);
    if (changes.isEmpty())
        return;
    QScrollBar *scroll = m_editor->verticalScrollBar();
    const QTextCursor top = m_editor->cursorForPosition(QPoint(0, 0));
    const int topLineBefore = top.block().firstLineNumber();
    QTextCursor edit(m_editor->document());
    edit.beginEditBlock();
    int shift = 0; // what the changes before this one added
    for (const EditorText::Change &change : changes) {
        edit.setPosition(change.start + shift);
        edit.setPosition(change.start + shift + change.removed, QTextCursor::KeepAnchor);
        // Where the new text starts in `shown`: the same offset, shifted alike.
        edit.insertText(shown.mid(change.start + shift, change.inserted));
        shift += change.inserted - change.removed;
    }
    edit.endEditBlock();
    scroll->setValue(scroll->value() + top.block().firstLineNumber() - topLineBefore);
}

void PromptDetailView::adoptBody(const QString &body)
{
    m_showingDraft = true;
    replaceBodyText(body);
    m_showingDraft = false;
    m_draft.body = body;
    m_editorText = EditorText::fromDocument(m_editor->document());
    updateChrome();
}

void PromptDetailView::restoreOtherVersion()
{
    const std::optional<Prompt> other = m_state->overwrittenVersion(m_draft.id);
    m_state->forgetOverwrittenVersion(m_draft.id);
    updateOtherVersionBar();
    if (!other)
        return;
    // An edit like any other: saved after the pause, and Undo brings the
    // user's text back.
    if (other->frontMatter.title != m_draft.frontMatter.title) {
        m_title->showTitle(other->frontMatter.title);
        editTitle(other->frontMatter.title);
    }
    if (other->body != m_draft.body) {
        m_showingDraft = true;
        replaceBodyText(other->body);
        m_showingDraft = false;
        m_draft.body = other->body; // exactly theirs, line ends included
        m_editorText = EditorText::fromDocument(m_editor->document());
        m_state->scheduleSave(m_draft);
    }
}

void PromptDetailView::updateOtherVersionBar()
{
    m_otherVersionBar->setVisible(m_state->overwrittenVersion(m_draft.id).has_value());
}

void PromptDetailView::updateChrome()
{
    const bool pinned = m_draft.frontMatter.pinned;
    m_pin->setToolTip(pinned ? QStringLiteral("Unpin") : QStringLiteral("Pin"));
    m_pin->setAccessibleName(m_pin->toolTip());
    const QStringList names = Variables::extract(m_draft.body);
    const bool hasVariables = !names.isEmpty();
    m_copy->setToolTip((hasVariables ? u"Fill variables and copy (" : u"Copy to clipboard (")
                       + nativeShortcut(QKeySequence::Copy) + u")");
    m_raw->setVisible(hasVariables);
    m_variablesDivider->setVisible(hasVariables);
    m_variablesPanel->setVisible(hasVariables);
    if (hasVariables) {
        m_variablesCount->setText(PromptText::counted(names.size(), QStringLiteral("variable")));
        m_variablesNames->setFullText(names.join(u", "));
    }
    updateIcons();
}

void PromptDetailView::updateIcons()
{
    const QPalette &p = palette();
    const bool pinned = m_draft.frontMatter.pinned;
    m_pin->setIcon(Icons::icon(pinned ? QStringLiteral("pin.fill") : QStringLiteral("pin"),
                               pinned ? Theme::accent(p) : Theme::secondaryText(p), 15));
    m_copy->setIcon(Icons::icon(QStringLiteral("doc.on.clipboard"), Theme::primaryText(p), 14));
    m_handoff->setIcon(Icons::icon(QStringLiteral("arrow.up.right.square"), Theme::primaryText(p), 14));
    m_raw->setIcon(Icons::icon(QStringLiteral("doc.plaintext"), Theme::primaryText(p), 14));
    m_variablesIcon->setPixmap(Icons::pixmap(QStringLiteral("curlybraces"), Theme::secondaryText(p), 12,
                                             devicePixelRatioF()));

    QPalette panelPalette = m_variablesPanel->palette();
    QColor panel = p.color(QPalette::Button);
    panel.setAlphaF(0.4);
    panelPalette.setColor(QPalette::Window, panel);
    m_variablesPanel->setPalette(panelPalette);
}

void PromptDetailView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        updateIcons();
    QWidget::changeEvent(event);
}

namespace {

// Tab types a tab in the body; Ctrl+Tab and Ctrl+Shift+Tab leave it, as in
// other editors that keep Tab for themselves (⌃⇥ and ⌃⇧⇥ on macOS, where
// ⌘⇥ is the system's app switcher).
bool moveFocusOnControlTab(QWidget *editor, QKeyEvent *key)
{
    const bool backwards = key->key() == Qt::Key_Backtab || (key->modifiers() & Qt::ShiftModifier);
    if ((key->key() != Qt::Key_Tab && key->key() != Qt::Key_Backtab)
        || !(key->modifiers() & DesktopConventions::leaveEditorModifier()))
        return false;
    for (QWidget *next = backwards ? editor->previousInFocusChain() : editor->nextInFocusChain(); next != editor;
         next = backwards ? next->previousInFocusChain() : next->nextInFocusChain()) {
        if ((next->focusPolicy() & Qt::TabFocus) && next->isVisible() && next->isEnabled()
            && next->window() == editor->window()) {
            next->setFocus(backwards ? Qt::BacktabFocusReason : Qt::TabFocusReason);
            return true;
        }
    }
    return true;
}

} // namespace

bool PromptDetailView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_editor && event->type() == QEvent::KeyPress
        && moveFocusOnControlTab(m_editor, static_cast<QKeyEvent *>(event)))
        return true;
    // In a text field ⌘C copies the selection when there is one; otherwise
    // it copies the prompt, as the Copy button does.
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Copy)) {
            const bool hasSelection = watched == m_title ? m_title->hasSelectedText()
                                                         : m_editor->textCursor().hasSelection();
            if (!hasSelection) {
                if (event->type() == QEvent::KeyPress)
                    copyAction();
                event->accept();
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

void PromptDetailView::copyAction()
{
    if (!Variables::extract(m_draft.body).isEmpty()) {
        openFillSheet();
        return;
    }
    Clipboard::writeText(m_draft.body);
    notify(QStringLiteral("Copied"));
}

void PromptDetailView::copyTemplate()
{
    Clipboard::writeText(m_draft.body);
    notify(QStringLiteral("Copied template"));
}

void PromptDetailView::openFillSheet()
{
    if (m_sheet)
        return;
    m_sheet = new VariableFillSheet(Variables::extract(m_draft.body), m_draft.body, this);
    m_sheet->setAttribute(Qt::WA_DeleteOnClose);
    // However it closes, the sheet is no longer shown. Only its buttons say
    // more: a dismissal past them leaves a waiting hand-off waiting.
    connect(m_sheet, &QDialog::finished, this, [this] { m_sheet.clear(); });
    connect(m_sheet, &VariableFillSheet::copyRequested, this, &PromptDetailView::fillSheetCopied);
    connect(m_sheet, &VariableFillSheet::cancelled, this, &PromptDetailView::fillSheetCancelled);
    m_sheet->open();
}

void PromptDetailView::fillSheetCopied(const QString &filled)
{
    Clipboard::writeText(filled);
    if (!m_pendingActivateHandoff) {
        notify(QStringLiteral("Copied filled prompt"));
        return;
    }
    m_pendingActivateHandoff = false;
    const HandoffApp target = handoffTarget();
    notify(u"Copied — opening " + target.displayName());
    activateHandoff(target);
}

void PromptDetailView::fillSheetCancelled()
{
    m_pendingActivateHandoff = false; // nothing copied, nothing opened
}

void PromptDetailView::copyAndOpenHandoff()
{
    if (!Variables::extract(m_draft.body).isEmpty()) {
        m_pendingActivateHandoff = true;
        openFillSheet();
        return;
    }
    Clipboard::writeText(m_draft.body);
    // The notice first, so it shows before the target comes to the front.
    notify(u"Copied — opening " + handoffTarget().displayName());
    activateHandoff(handoffTarget());
}

void PromptDetailView::activateHandoff(const HandoffApp &app)
{
    Handoff::activate(app, m_preferences->autoPaste());
}

HandoffApp PromptDetailView::handoffTarget() const
{
    return HandoffApp::fromPreference(m_preferences->handoffApp());
}

void PromptDetailView::setPreferences(Preferences *preferences)
{
    if (m_preferences->parent() == this)
        delete m_preferences;
    else
        disconnect(m_preferences, nullptr, this, nullptr);
    m_preferences = preferences;
    connect(m_preferences, &Preferences::handoffAppChanged, this, &PromptDetailView::updateHandoffButton);
    updateHandoffButton();
}

void PromptDetailView::updateHandoffButton()
{
    const QString name = handoffTarget().displayName();
    m_handoff->setText(name);
    m_handoff->setToolTip(u"Copy and activate " + name);
}

void PromptDetailView::togglePin()
{
    // Saved at once; the draft follows when the library publishes the change.
    // The copy carries the edits not yet written, so it replaces the
    // pending save, which still holds the old pin.
    Prompt copy = m_draft;
    copy.frontMatter.pinned = !copy.frontMatter.pinned;
    m_state->saveNow(copy);
}

void PromptDetailView::notify(const QString &notice)
{
    m_notice->setText(notice);
    m_notice->show();
    // Each notice schedules its own removal and none is cancelled, so a
    // second notice within 1.6 s is cleared by the first one's timer.
    QTimer::singleShot(noticeDurationMs, this, [this, generation = m_noticeGeneration] {
        if (generation != m_noticeGeneration)
            return; // shown for a prompt no longer here
        m_notice->clear();
        m_notice->hide();
    });
}

void PromptDetailView::claimPendingFocusIfMatched()
{
    const std::optional<QString> pending = m_state->pendingEditorFocusID();
    if (!pending || *pending != m_draft.id || !isVisible())
        return;
    m_state->setPendingEditorFocusID(std::nullopt);
    // Next turn of the event loop: the editor is shown by then.
    QTimer::singleShot(0, this, [this] {
        m_editor->setFocus(Qt::OtherFocusReason);
        m_editor->moveCursor(QTextCursor::End);
    });
}
