#pragma once

#include <QKeySequence>
#include <QList>
#include <QMetaObject>
#include <QObject>
#include <QPointer>

class QAction;
class QWidget;

// The standard Edit commands (Undo, Redo, Cut, Copy, Paste, Select All) for
// the text field that has the keyboard focus, in whichever of the app's
// windows it is. Each command is enabled only when it can act there; with no
// text field focused all are off, and their keys go on to the focused widget
// (Select All in the sidebar selects its rows). A focused field handles the
// keys itself; the commands carry them for the menu and act on menu clicks.
class EditCommands : public QObject
{
    Q_OBJECT

public:
    // The actions are children of `owner` (whose menu bar shows them) and
    // answer their keys in every window of the application.
    explicit EditCommands(QWidget *owner);

    QAction *undo() const { return m_undo; }
    QAction *redo() const { return m_redo; }
    QAction *cut() const { return m_cut; }
    QAction *copy() const { return m_copy; }
    QAction *paste() const { return m_paste; }
    QAction *selectAll() const { return m_selectAll; }

    // The text field the commands act on, if any.
    QWidget *target() const { return m_target; }
    // Sets each command's enabled state from the target as it is now.
    void update();

private:
    enum class Command { Undo, Redo, Cut, Copy, Paste, SelectAll };

    QAction *make(QWidget *owner, const QString &text, QKeySequence::StandardKey keys, Command command);
    void follow(QWidget *focus);
    void act(Command command);

    QAction *m_undo;
    QAction *m_redo;
    QAction *m_cut;
    QAction *m_copy;
    QAction *m_paste;
    QAction *m_selectAll;
    QPointer<QWidget> m_target;
    QList<QMetaObject::Connection> m_targetConnections;
};
