#include "EditCommands.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

bool clipboardHasText()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText() && !data->text().isEmpty();
}

// What a command can do in a field right now.
struct Abilities
{
    bool undo = false, redo = false, cut = false, copy = false, paste = false, selectAll = false;
};

Abilities abilitiesOf(QWidget *target)
{
    Abilities can;
    if (auto *line = qobject_cast<QLineEdit *>(target)) {
        // A password field gives nothing away, as its own menu does.
        const bool shown = line->echoMode() == QLineEdit::Normal;
        can.undo = !line->isReadOnly() && line->isUndoAvailable();
        can.redo = !line->isReadOnly() && line->isRedoAvailable();
        can.copy = shown && line->hasSelectedText();
        can.cut = can.copy && !line->isReadOnly();
        can.paste = !line->isReadOnly() && clipboardHasText();
        can.selectAll = !line->text().isEmpty();
    } else if (auto *text = qobject_cast<QTextEdit *>(target)) {
        const QTextDocument *document = text->document();
        can.undo = !text->isReadOnly() && document->isUndoAvailable();
        can.redo = !text->isReadOnly() && document->isRedoAvailable();
        can.copy = text->textCursor().hasSelection();
        can.cut = can.copy && !text->isReadOnly();
        can.paste = !text->isReadOnly() && text->canPaste();
        can.selectAll = !document->isEmpty();
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(target)) {
        const QTextDocument *document = plain->document();
        can.undo = !plain->isReadOnly() && document->isUndoAvailable();
        can.redo = !plain->isReadOnly() && document->isRedoAvailable();
        can.copy = plain->textCursor().hasSelection();
        can.cut = can.copy && !plain->isReadOnly();
        can.paste = !plain->isReadOnly() && plain->canPaste();
        can.selectAll = !document->isEmpty();
    }
    return can;
}

bool isTextField(const QWidget *widget)
{
    return qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QTextEdit *>(widget)
        || qobject_cast<const QPlainTextEdit *>(widget);
}

} // namespace

EditCommands::EditCommands(QWidget *owner)
    : QObject(owner)
    , m_undo(make(owner, QStringLiteral("&Undo"), QKeySequence::Undo, Command::Undo))
    , m_redo(make(owner, QStringLiteral("&Redo"), QKeySequence::Redo, Command::Redo))
    , m_cut(make(owner, QStringLiteral("Cu&t"), QKeySequence::Cut, Command::Cut))
    , m_copy(make(owner, QStringLiteral("&Copy"), QKeySequence::Copy, Command::Copy))
    , m_paste(make(owner, QStringLiteral("&Paste"), QKeySequence::Paste, Command::Paste))
    , m_selectAll(make(owner, QStringLiteral("Select &All"), QKeySequence::SelectAll, Command::SelectAll))
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { follow(now); });
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &EditCommands::update);
    follow(QApplication::focusWidget());
}

QAction *EditCommands::make(QWidget *owner, const QString &text, QKeySequence::StandardKey keys, Command command)
{
    auto *action = new QAction(text, owner);
    action->setShortcuts(keys);
    // Help and Settings have no menu bar of their own on Linux (on macOS the
    // main window's stays in place for them): the keys work in every window.
    action->setShortcutContext(Qt::ApplicationShortcut);
    action->setEnabled(false);
    connect(action, &QAction::triggered, this, [this, command] { act(command); });
    return action;
}

void EditCommands::follow(QWidget *focus)
{
    // Going through the menus by keyboard moves the focus into the menu bar
    // for a while; the commands stay with the field the user was in.
    if (qobject_cast<QMenuBar *>(focus) || qobject_cast<QMenu *>(focus))
        return;
    for (const QMetaObject::Connection &connection : std::as_const(m_targetConnections))
        disconnect(connection);
    m_targetConnections.clear();
    m_target = isTextField(focus) ? focus : nullptr;

    const auto watch = [this](auto *field) {
        using Field = std::remove_pointer_t<decltype(field)>;
        m_targetConnections << connect(field, &Field::textChanged, this, &EditCommands::update)
                            << connect(field, &Field::selectionChanged, this, &EditCommands::update);
    };
    if (auto *line = qobject_cast<QLineEdit *>(m_target.data())) {
        watch(line);
    } else if (auto *text = qobject_cast<QTextEdit *>(m_target.data())) {
        watch(text);
        m_targetConnections << connect(text, &QTextEdit::undoAvailable, this, &EditCommands::update)
                            << connect(text, &QTextEdit::redoAvailable, this, &EditCommands::update);
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(m_target.data())) {
        watch(plain);
        m_targetConnections << connect(plain, &QPlainTextEdit::undoAvailable, this, &EditCommands::update)
                            << connect(plain, &QPlainTextEdit::redoAvailable, this, &EditCommands::update);
    }
    update();
}

void EditCommands::update()
{
    const Abilities can = abilitiesOf(m_target);
    m_undo->setEnabled(can.undo);
    m_redo->setEnabled(can.redo);
    m_cut->setEnabled(can.cut);
    m_copy->setEnabled(can.copy);
    m_paste->setEnabled(can.paste);
    m_selectAll->setEnabled(can.selectAll);
}

void EditCommands::act(Command command)
{
    // Asked again: a field can change (become read-only) without a signal.
    const Abilities can = abilitiesOf(m_target);
    const bool allowed[] = {can.undo, can.redo, can.cut, can.copy, can.paste, can.selectAll};
    if (!allowed[int(command)]) {
        update();
        return;
    }
    // The field's own slot: the same names on the three kinds of field.
    const auto perform = [command](auto *field) {
        switch (command) {
        case Command::Undo: field->undo(); break;
        case Command::Redo: field->redo(); break;
        case Command::Cut: field->cut(); break;
        case Command::Copy: field->copy(); break;
        case Command::Paste: field->paste(); break;
        case Command::SelectAll: field->selectAll(); break;
        }
    };
    if (auto *line = qobject_cast<QLineEdit *>(m_target.data()))
        perform(line);
    else if (auto *text = qobject_cast<QTextEdit *>(m_target.data()))
        perform(text);
    else if (auto *plain = qobject_cast<QPlainTextEdit *>(m_target.data()))
        perform(plain);
    update();
}
