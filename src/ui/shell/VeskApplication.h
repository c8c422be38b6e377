#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class AppState;
class DialogAlerts;
class DialogProjectNamePrompter;
class MainWindow;
class Preferences;
class PromptLibrary;
class SettingsWindow;

// The application as a whole: one library over the prompts folder, one
// AppState, the main window and the settings window. Reloads the library
// whenever the app becomes active, and applies the appearance preference.
class VeskApplication : public QObject
{
    Q_OBJECT

public:
    // Names the application after its one identifier, before anything reads
    // the settings: on macOS they then live in the bundle identifier's user
    // defaults, and the identifier is the desktop file's name and Wayland app id.
    static void applyIdentity();

    explicit VeskApplication(const QString &rootPath, QObject *parent = nullptr);
    ~VeskApplication() override;

    PromptLibrary *library() const { return m_library.get(); }
    AppState *state() const { return m_state.get(); }
    Preferences *preferences() const { return m_preferences; }
    MainWindow *mainWindow() const { return m_window.get(); }
    SettingsWindow *settingsWindow();

    void updateAppAppearance();
    // What becoming the active application does: write the pending edit,
    // then pick up what other programs changed on disk.
    void reloadFromDisk();
    // Shows the main window and brings it to the front: another start of
    // Vesk asked for it.
    void bringToFront();
    // A logout's SIGTERM, a closed terminal's SIGHUP and Ctrl+C quit as
    // Ctrl+Q does, writing the pending edit first.
    void quitOnTerminationSignals();

private:
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    Preferences *m_preferences;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<DialogProjectNamePrompter> m_prompter;
    std::unique_ptr<DialogAlerts> m_alerts;
    QPointer<SettingsWindow> m_settings;
};
