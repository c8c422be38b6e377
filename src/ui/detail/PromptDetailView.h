#pragma once

#include "HandoffApp.h"
#include "Prompt.h"
#include "TitleField.h"
#include "VariableFillSheet.h"

#include <QPointer>
#include <QWidget>

class AppState;
class ElidedLabel;
class OtherVersionBar;
class Preferences;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QShortcut;
class QToolButton;
class QPushButton;

// The editor of one prompt: title, body, pin, copy, hand-off. Every keystroke goes into
// the draft and to AppState's delayed save. The library's reloads never
// disturb typing: a change made by another program is taken in only where
// nothing was typed since the last save.
class PromptDetailView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int noticeDurationMs = 1600;

    explicit PromptDetailView(AppState *state, QWidget *parent = nullptr);

    // Shows `prompt`: a new id resets the draft. For the same id, what the
    // library now publishes differently from before is brought in: the front
    // matter (a pin toggled elsewhere) always, the body only while it has
    // no unsaved edit.
    void setPrompt(const Prompt &prompt);
    const Prompt &draft() const { return m_draft; }

    // The preferences the hand-off reads (the view has its own until told):
    // the button follows a change of the target as it is made.
    void setPreferences(Preferences *preferences);
    Preferences *preferences() const { return m_preferences; }

    void copyAction();
    void copyTemplate();
    void openFillSheet();
    // Copies the prompt (through the fill sheet when it has variables) and
    // brings the chosen assistant to the front.
    void copyAndOpenHandoff();
    void activateHandoff(const HandoffApp &app);
    // A hand-off waits for the fill sheet to finish.
    bool pendingActivateHandoff() const { return m_pendingActivateHandoff; }
    void togglePin();
    void notify(const QString &notice);
    void claimPendingFocusIfMatched();
    void restoreOtherVersion();

    QLineEdit *titleField() const { return m_title; }
    QPlainTextEdit *editor() const { return m_editor; }
    QLabel *noticeLabel() const { return m_notice; }
    QToolButton *pinButton() const { return m_pin; }
    QToolButton *copyButton() const { return m_copy; }
    QToolButton *handoffButton() const { return m_handoff; }
    QToolButton *rawButton() const { return m_raw; }
    QWidget *variablesPanel() const { return m_variablesPanel; }
    QLabel *variablesCountLabel() const { return m_variablesCount; }
    QPushButton *fillButton() const { return m_fillButton; }
    OtherVersionBar *otherVersionBar() const { return m_otherVersionBar; }
    VariableFillSheet *fillSheet() const { return m_sheet; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void buildHeader(QWidget *header);
    void buildVariablesPanel();
    void showDraft();
    void updateChrome();
    void updateIcons();
    void editTitle(const QString &text);
    void editBody();
    void replaceBodyText(const QString &body);
    void adoptBody(const QString &body);
    void updateOtherVersionBar();
    void updateHandoffButton();
    void fillSheetCopied(const QString &filled);
    void fillSheetCancelled();
    HandoffApp handoffTarget() const;

    AppState *m_state;
    Prompt m_draft;
    Prompt m_published;  // as the library last published it
    QString m_editorText; // the draft's body as the editor shows it
    TitleField *m_title;
    QLabel *m_notice;
    QToolButton *m_pin;
    QToolButton *m_copy;
    QToolButton *m_handoff;
    QToolButton *m_raw;
    QPlainTextEdit *m_editor;
    QWidget *m_variablesDivider;
    QWidget *m_variablesPanel;
    QLabel *m_variablesIcon;
    QLabel *m_variablesCount;
    ElidedLabel *m_variablesNames;
    QPushButton *m_fillButton;
    OtherVersionBar *m_otherVersionBar;
    QShortcut *m_copyShortcut;
    QShortcut *m_rawShortcut;
    QShortcut *m_handoffShortcut;
    Preferences *m_preferences;
    QPointer<VariableFillSheet> m_sheet;
    bool m_pendingActivateHandoff = false;
    bool m_showingDraft = false;
    int m_noticeGeneration = 0; // a notice belongs to the prompt it was shown for
};
