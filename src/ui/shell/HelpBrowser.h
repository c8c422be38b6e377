#pragma once

#include "platform/DesktopConventions.h"

#include <QTextBrowser>

#include <functional>

// The view of the help window: shows the book's pages, keeps links between
// them inside, and hands web links to the default browser.
class HelpBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    using Platform = DesktopConventions::Desktop;
    using UrlOpener = std::function<void(const QUrl &)>;

    explicit HelpBrowser(QWidget *parent = nullptr);

    // Who opens http and https links; QDesktopServices by default.
    void setExternalUrlOpener(UrlOpener opener) { m_openExternal = std::move(opener); }

    // The colour rules added to the book's stylesheet, from `palette`, so the
    // pages follow light and dark.
    static QString paletteStyleSheet(const QPalette &palette);
    // The page's text for `platform`: the other platform's passages left out,
    // and off macOS the book's ⌘/⇧/⌥ key names written the platform's way.
    static QString pageForPlatform(QString html, Platform platform);

protected:
    void doSetSource(const QUrl &url, QTextDocument::ResourceType type) override;
    QVariant loadResource(int type, const QUrl &name) override;
    void changeEvent(QEvent *event) override;

private:
    UrlOpener m_openExternal;
};
