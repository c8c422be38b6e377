#pragma once

#include "HelpBook.h"
#include "HelpBrowser.h"

#include <QObject>
#include <QPointer>

#include <utility>

class QWidget;

// The help window: one per process, built on the first show() and reused
// after that; closing it only hides it, and it never keeps the app running.
class HelpWindowController : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView frameKey = u"VeskHelpWindow"; // settings key of the window's frame

    explicit HelpWindowController(HelpBook::Locations locations, QObject *parent = nullptr);
    ~HelpWindowController() override;

    // The application's instance, over the application's own locations.
    static HelpWindowController &shared();

    // Shows `page` ("index.html") in the window, building the window first
    // if needed, and brings it to the front. Each call reloads the page.
    void show(const QString &page);

    // Where the pages are looked for from the next show() on. Tests point
    // the shared instance at a book of their own.
    void setLocations(HelpBook::Locations locations) { m_locations = std::move(locations); }
    const HelpBook::Locations &locations() const { return m_locations; }

    QWidget *window() const { return m_window; }
    HelpBrowser *browser() const { return m_browser; }
    void setExternalUrlOpener(HelpBrowser::UrlOpener opener);

    // Saves the window's frame and destroys the window; the next show()
    // builds it again. Runs when the application quits, so no window
    // outlives the application object.
    void discardWindow();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildWindow();
    void loadPage(const QString &page);
    void saveFrame();

    HelpBook::Locations m_locations;
    HelpBrowser::UrlOpener m_openExternal;
    // Tracked, not owned alone: the application deletes its remaining
    // windows when it ends, possibly before this controller.
    QPointer<QWidget> m_window;
    QPointer<HelpBrowser> m_browser;
};
