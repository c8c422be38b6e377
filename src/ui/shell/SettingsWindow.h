#pragma once

#include <QWidget>

class Preferences;
class QButtonGroup;
class QCheckBox;
class QComboBox;

// The settings window: appearance, hand-off target, auto-paste. Every change
// is stored at once; there is no Apply.
class SettingsWindow : public QWidget
{
    Q_OBJECT

public:
    // Switching auto-paste on asks for the permission it needs (through
    // Accessibility::current(), which tests replace).
    explicit SettingsWindow(Preferences *preferences, QWidget *parent = nullptr);

    QComboBox *appearancePicker() const { return m_appearance; }
    QButtonGroup *handoffPicker() const { return m_handoff; }
    QCheckBox *autoPasteSwitch() const { return m_autoPaste; }

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void loadFromPreferences();
    void updateIcons();

    Preferences *m_preferences;
    QComboBox *m_appearance;
    QButtonGroup *m_handoff;
    QCheckBox *m_autoPaste;
};
