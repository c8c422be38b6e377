#include "VeskApplication.h"

#include "AlertDialog.h"
#include "AppIdentity.h"
#include "AppState.h"
#include "MainWindow.h"
#include "NewProjectDialog.h"
#include "Preferences.h"
#include "PromptLibrary.h"
#include "SettingsWindow.h"
#include "WelcomeView.h"
#include "platform/SystemAppearance.h"
#include "platform/TerminationSignals.h"
#include "ui/detail/PromptDetailView.h"

#include <QApplication>
#include <QTimer>
#include <QUrl>

VeskApplication::VeskApplication(const QString &rootPath, QObject *parent)
    : QObject(parent)
    , m_library(std::make_unique<PromptLibrary>(QUrl::fromLocalFile(rootPath)))
    , m_state(std::make_unique<AppState>(m_library.get()))
    , m_preferences(new Preferences(this))
{
    updateAppAppearance();
    m_window = std::make_unique<MainWindow>(m_state.get());
    m_window->promptDetail()->setPreferences(m_preferences); // the button follows the settings
    m_prompter = std::make_unique<DialogProjectNamePrompter>(m_window.get());
    m_state->setProjectNamePrompter(m_prompter.get());
    m_alerts = std::make_unique<DialogAlerts>(m_window.get());
    m_state->setAlerts(m_alerts.get());
    // Said once the window is up, rather than an empty window that cannot explain itself.
    QTimer::singleShot(0, this, [this] { m_state->explainUnusableLibraryFolder(); });

    connect(m_preferences, &Preferences::appearanceChanged, this, &VeskApplication::updateAppAppearance);
    // "system" and "opposite" follow the desktop's switch as it happens.
    SystemAppearance::watch(this, [this] { updateAppAppearance(); });
    connect(m_window.get(), &MainWindow::preferencesRequested, this, [this] {
        SettingsWindow *settings = settingsWindow();
        if (!settings->isVisible())
            settings->move(m_window->geometry().center() - settings->rect().center());
        settings->show();
        settings->raise();
        settings->activateWindow();
    });
    // The user's last words are written whenever Vesk may be about to lose
    // them: another program comes forward (and may read or sync the file),
    // or the app quits, however it quits.
    connect(qApp, &QCoreApplication::aboutToQuit, m_state.get(), &AppState::flushPendingSave);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState appState) {
        if (appState != Qt::ApplicationActive) {
            m_state->flushPendingSave();
            return;
        }
        reloadFromDisk();
        updateAppAppearance(); // "opposite" and "system" follow the desktop's current scheme
    });
}

void VeskApplication::applyIdentity()
{
    QCoreApplication::setOrganizationName(AppIdentity::applicationName.toString());
    QCoreApplication::setOrganizationDomain(AppIdentity::organizationDomain.toString());
    QCoreApplication::setApplicationName(AppIdentity::applicationName.toString());
    QGuiApplication::setDesktopFileName(AppIdentity::appId.toString());
}

VeskApplication::~VeskApplication()
{
    m_state->setProjectNamePrompter(nullptr);
    m_state->setAlerts(nullptr);
    delete m_settings;
}

SettingsWindow *VeskApplication::settingsWindow()
{
    if (!m_settings) {
        m_settings = new SettingsWindow(m_preferences);
        m_settings->setAttribute(Qt::WA_QuitOnClose, false); // closing the main window quits

    }
    return m_settings;
}

void VeskApplication::updateAppAppearance()
{
    // "opposite" reads the desktop's scheme at the moment of the call.
    SystemAppearance::apply(schemeForAppearance(m_preferences->appearance(), SystemAppearance::systemIsDark()));
    if (m_window)
        m_window->welcome()->followAppPalette();
}

void VeskApplication::bringToFront()
{
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void VeskApplication::quitOnTerminationSignals()
{
    TerminationSignals::handle([this] {
        m_state->flushPendingSave();
        // Open dialogs' event loops end too; closing the windows saves their frames.
        QApplication::closeAllWindows();
        QCoreApplication::quit();
    });
}

void VeskApplication::reloadFromDisk()
{
    m_state->flushPendingSave();
    m_library->reload();
}
