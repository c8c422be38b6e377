#include "HelpWindowController.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QScreen>
#include <QSettings>
#include <QVBoxLayout>
#include <QWidget>

#include <utility>

HelpWindowController::HelpWindowController(HelpBook::Locations locations, QObject *parent)
    : QObject(parent)
    , m_locations(std::move(locations))
{
}

HelpWindowController::~HelpWindowController()
{
    // The shared controller ends with the application object, after the
    // widgets' machinery: a window still open then is left to the
    // application's own end (newer Qt deletes it, older leaves it to the
    // process), never deleted here.
    if (QCoreApplication::closingDown()) {
        if (m_window)
            m_window->removeEventFilter(this);
        return;
    }
    discardWindow();
}

HelpWindowController &HelpWindowController::shared()
{
    static QPointer<HelpWindowController> instance;
    if (!instance) {
        instance = new HelpWindowController(HelpBook::Locations::forApplication(), qApp);
        connect(qApp, &QCoreApplication::aboutToQuit, instance, &HelpWindowController::discardWindow);
    }
    return *instance;
}

void HelpWindowController::setExternalUrlOpener(HelpBrowser::UrlOpener opener)
{
    m_openExternal = std::move(opener);
    if (m_browser && m_openExternal)
        m_browser->setExternalUrlOpener(m_openExternal);
}

void HelpWindowController::show(const QString &page)
{
    if (!m_window)
        buildWindow();
    loadPage(page);
    if (m_window->isMinimized())
        m_window->showNormal();
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void HelpWindowController::buildWindow()
{
    m_window = new QWidget(nullptr, Qt::Window);
    m_window->setObjectName(QStringLiteral("helpWindow"));
    m_window->setWindowTitle(QStringLiteral("Vesk Help"));
    // Closing the main window quits, whether or not help is open.
    m_window->setAttribute(Qt::WA_QuitOnClose, false);
    m_window->setMinimumSize(400, 300);

    m_browser = new HelpBrowser(m_window);
    m_browser->setAccessibleName(QStringLiteral("Help page"));
    if (m_openExternal)
        m_browser->setExternalUrlOpener(m_openExternal);
    auto *layout = new QVBoxLayout(m_window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_browser);

    if (!m_window->restoreGeometry(QSettings().value(frameKey).toByteArray())) {
        m_window->resize(620, 520);
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            m_window->move(screen->availableGeometry().center() - m_window->rect().center());
    }
    m_window->installEventFilter(this);
}

void HelpWindowController::loadPage(const QString &page)
{
    if (!m_browser)
        return;
    const QString path = HelpBook::findPage(m_locations, page);
    if (path.isEmpty()) {
        // A missing book is not an error: nothing is logged.
        m_browser->setSource(QUrl());
        m_browser->setHtml(HelpBook::fallbackHtml());
        return;
    }
    const QUrl url = QUrl::fromLocalFile(path);
    // The browser skips loading a page it already shows; show() reloads.
    if (m_browser->source() == url)
        m_browser->reload();
    else
        m_browser->setSource(url);
}

bool HelpWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && (event->type() == QEvent::Close || event->type() == QEvent::Hide))
        saveFrame();
    return QObject::eventFilter(watched, event);
}

void HelpWindowController::saveFrame()
{
    if (m_window)
        QSettings().setValue(frameKey, m_window->saveGeometry());
}

void HelpWindowController::discardWindow()
{
    if (!m_window)
        return;
    saveFrame();
    QWidget *window = std::exchange(m_window, nullptr);
    m_browser = nullptr;
    window->removeEventFilter(this);
    delete window;
}
