#pragma once

#include <QWidget>

class AppState;
class QPushButton;

// The first-run screen, shown while the library holds no prompt.
class WelcomeView : public QWidget
{
    Q_OBJECT

public:
    explicit WelcomeView(AppState *state, QWidget *parent = nullptr);
    QPushButton *createButton() const { return m_create; }
    // Restyles from the application's palette after an appearance switch.
    void followAppPalette();

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *step(int number, const QString &title, const QString &description, const QString &shortcut);
    void restyle();

    QPushButton *m_create;
};
