#pragma once

#include "Alerts.h"

#include <QDialog>

class QLineEdit;
class QPushButton;

// One alert as a small modal dialog: the app's icon, the message in bold,
// the informative text, an optional name field, and the buttons with the
// first (the default) rightmost, as the desktop's own alerts place it.
class AlertDialog : public QDialog
{
    Q_OBJECT

public:
    AlertDialog(const Alert &alert, QWidget *parent = nullptr);

    // In the alert's order: the first is the default.
    const QList<QPushButton *> &buttons() const { return m_buttons; }
    QLineEdit *field() const { return m_field; }
    // The button chosen, or -1 when the dialog was closed another way.
    int chosenButton() const { return m_chosen; }

private:
    QList<QPushButton *> m_buttons;
    QLineEdit *m_field = nullptr;
    int m_chosen = -1;
};

// Answers alerts with the modal dialog, over the main window.
class DialogAlerts : public Alerts
{
public:
    explicit DialogAlerts(QWidget *parentWindow) : m_parent(parentWindow) {}
    AlertAnswer run(const Alert &alert) override;

private:
    QWidget *m_parent;
};
