#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

// Shown above the body when the user's text was written over a version that
// another program had saved meanwhile: it offers that version back.
class OtherVersionBar : public QWidget
{
    Q_OBJECT

public:
    explicit OtherVersionBar(QWidget *parent = nullptr);

    QPushButton *restoreButton() const { return m_restore; }
    QPushButton *keepButton() const { return m_keep; }

Q_SIGNALS:
    void restoreRequested();
    void keepRequested();

protected:
    void changeEvent(QEvent *event) override;

private:
    void restyle();

    QLabel *m_message;
    QPushButton *m_restore;
    QPushButton *m_keep;
};
