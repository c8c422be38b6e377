#include "FakeAccessibility.h"
#include "TestFiles.h"
#include "platform/DesktopConventions.h"
#include "ui/shell/HelpBook.h"
#include "ui/shell/HelpBrowser.h"
#include "ui/shell/HelpWindowController.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/VeskApplication.h"

#include <QAction>
#include <QApplication>
#include <QDirIterator>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QScreen>
#include <QSettings>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>

using TestFiles::write;

namespace {

const QString book = QStringLiteral("Vesk.help/Contents/Resources/en.lproj/");

// A page whose body says where it was found.
QByteArray page(const QByteArray &text, const QByteArray &more = {})
{
    return "<html><body><p>" + text + "</p>" + more + "</body></html>";
}

QString shownText(const HelpWindowController &help)
{
    return help.browser()->toPlainText().trimmed();
}

// Every message the app logs while an instance lives.
class LogRecorder
{
public:
    LogRecorder() { s_lines.clear(); m_previous = qInstallMessageHandler(&record); }
    ~LogRecorder() { qInstallMessageHandler(m_previous); }
    QStringList lines() const { return s_lines; }

private:
    static void record(QtMsgType, const QMessageLogContext &, const QString &message)
    {
        // The offscreen platform's own remark on raising a window is not the app's.
        if (message != u"This plugin does not support raise()")
            s_lines.append(message);
    }
    static inline QStringList s_lines;
    QtMessageHandler m_previous;
};

// Clicks the link whose target is `href` in the browser, as a user would.
bool clickLink(QTextBrowser *browser, const QString &href)
{
    for (QTextBlock block = browser->document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.charFormat().anchorHref() != href)
                continue;
            QTextCursor cursor(browser->document());
            cursor.setPosition(fragment.position() + 1);
            const QPoint at = browser->cursorRect(cursor).center();
            QTest::mouseClick(browser->viewport(), Qt::LeftButton, {}, at);
            return true;
        }
    }
    return false;
}

// The anchors a browser can scroll to, and the links, of one loaded page.
struct PageLinks
{
    QSet<QString> anchors;
    QStringList hrefs;
};

PageLinks linksOf(const QTextDocument *document)
{
    PageLinks links;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            for (const QString &name : format.anchorNames())
                links.anchors.insert(name);
            if (!format.anchorHref().isEmpty() && !links.hrefs.contains(format.anchorHref()))
                links.hrefs.append(format.anchorHref());
        }
    }
    return links;
}

} // namespace

class TestHelp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void findsTheBookInTheResourcesFirst();
    void htmlIsRemovedAndAddedBackInTheResources();
    void developmentLocationsAreTriedInOrder_data();
    void developmentLocationsAreTriedInOrder();
    void developmentLocationsUseThePageNameAsItIs();
    void anInstalledBookIsFoundBesideTheProgram();
    void theBuildFolderHoldsTheBook();
    void fallbackPageWhenTheBookIsMissing();

    void oneWindowAcrossShows();
    void theFrameIsSavedAndRestored();
    void webLinksGoToTheBrowserAndBookLinksStay();

    void everyLinkOfTheBookResolves();
    void pagesFollowThePalette();
    void pagesShowThePlatformsKeysAndPassages();

    void anInstalledBookIsFoundInTheDesktopsDataFolders();
    void helpMenuOpensTheIndex();
    void closingTheMainWindowQuitsWithHelpOpen(); // runs the event loop to its end: keep it last

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    QTemporaryDir m_settingsDir;
    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QUrl> m_opened;
};

void TestHelp::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("VeskHelpTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskHelpTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestHelp::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_opened.clear();
    QSettings().clear();
}

void TestHelp::findsTheBookInTheResourcesFirst()
{
    // The same page in the resources and in the first development location.
    write(path(u"Resources/" + book + u"index.html"), page("from the resources"));
    write(path(u"app/" + book + u"index.html"), page("from the build"));
    const HelpBook::Locations locations{{path(u"Resources/" + book)}, path(QStringLiteral("app/bin/debug"))};

    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html")), path(u"Resources/" + book + u"index.html"));
    HelpWindowController help(locations);
    help.show(QStringLiteral("index.html"));
    QCOMPARE(shownText(help), QStringLiteral("from the resources"));
    QCOMPARE(help.browser()->source(), QUrl::fromLocalFile(path(u"Resources/" + book + u"index.html")));

    // A second resources folder is asked only when the first lacks the page.
    write(path(u"Share/" + book + u"search.html"), page("search, installed"));
    const HelpBook::Locations two{{path(u"Resources/" + book), path(u"Share/" + book)}, {}};
    QCOMPARE(HelpBook::findPage(two, QStringLiteral("search.html")), path(u"Share/" + book + u"search.html"));
    QCOMPARE(HelpBook::findPage(two, QStringLiteral("index.html")), path(u"Resources/" + book + u"index.html"));
}

void TestHelp::htmlIsRemovedAndAddedBackInTheResources()
{
    write(path(u"Resources/" + book + u"index.html"), page("index"));
    write(path(u"Resources/" + book + u"shortcuts.html"), page("shortcuts"));
    const HelpBook::Locations locations{{path(u"Resources/" + book)}, {}};
    const QString index = path(u"Resources/" + book + u"index.html");

    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index")), index);
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html")), index);
    // Every ".html" goes, wherever it stands in the name.
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html.html")), index);
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("short.htmlcuts")), path(u"Resources/" + book + u"shortcuts.html"));
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("missing.html")), QString());

    HelpWindowController help(locations);
    help.show(QStringLiteral("shortcuts"));
    QCOMPARE(shownText(help), QStringLiteral("shortcuts"));
}

void TestHelp::developmentLocationsAreTriedInOrder_data()
{
    QTest::addColumn<QStringList>("holding");
    QTest::addColumn<QString>("expected");
    // The executable lives in x/a/b/c/bin: the three locations are x/a/b,
    // x/a and x; a book in the temporary folder itself is one level too far.
    QTest::newRow("only the third") << QStringList{QStringLiteral("x/")} << QStringLiteral("x/");
    QTest::newRow("second and third") << QStringList{QStringLiteral("x/a/"), QStringLiteral("x/")}
                                      << QStringLiteral("x/a/");
    QTest::newRow("all three") << QStringList{QStringLiteral("x/a/b/"), QStringLiteral("x/a/"), QStringLiteral("x/")}
                               << QStringLiteral("x/a/b/");
    QTest::newRow("first and third") << QStringList{QStringLiteral("x/a/b/"), QStringLiteral("x/")}
                                     << QStringLiteral("x/a/b/");
    QTest::newRow("only the second") << QStringList{QStringLiteral("x/a/")} << QStringLiteral("x/a/");
    QTest::newRow("none") << QStringList{} << QString();
}

void TestHelp::developmentLocationsAreTriedInOrder()
{
    QFETCH(QStringList, holding);
    QFETCH(QString, expected);
    for (const QString &folder : holding)
        write(path(folder + book + u"index.html"), page("book in " + folder.toUtf8()));
    write(path(book + u"index.html"), page("too far up"));
    QDir().mkpath(path(QStringLiteral("x/a/b/c/bin")));
    const HelpBook::Locations locations{{path(QStringLiteral("Resources/") + book)}, path(QStringLiteral("x/a/b/c/bin"))};

    HelpWindowController help(locations);
    help.show(QStringLiteral("index.html"));
    if (holding.isEmpty()) {
        QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html")), QString());
        QVERIFY2(shownText(help).startsWith(u"Help Not Found"), qPrintable(shownText(help)));
        return;
    }
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html")), path(expected + book + u"index.html"));
    QCOMPARE(shownText(help), QString(u"book in " + expected));
}

void TestHelp::developmentLocationsUseThePageNameAsItIs()
{
    write(path(u"a/b/" + book + u"index.html"), page("index"));
    QDir().mkpath(path(QStringLiteral("a/b/c/bin")));
    const HelpBook::Locations locations{{}, path(QStringLiteral("a/b/c/bin"))};

    // No ".html" is added here...
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index")), QString());
    HelpWindowController help(locations);
    help.show(QStringLiteral("index"));
    QVERIFY2(shownText(help).startsWith(u"Help Not Found"), qPrintable(shownText(help)));
    // ...and a file named exactly like the page is found.
    write(path(u"a/" + book + u"index"), page("extensionless"));
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index")), path(u"a/" + book + u"index"));
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index.html")), path(u"a/b/" + book + u"index.html"));
}

void TestHelp::anInstalledBookIsFoundBesideTheProgram()
{
    // <prefix>/bin/vesk and <prefix>/share/vesk/Vesk.help, as an install lays them out.
    write(path(u"prefix/share/vesk/" + book + u"index.html"), page("installed"));
    QDir().mkpath(path(QStringLiteral("prefix/bin")));
    const HelpBook::Locations locations = HelpBook::Locations::forExecutableFolder(path(QStringLiteral("prefix/bin")));
    QCOMPARE(locations.executableFolder, path(QStringLiteral("prefix/bin")));
#ifdef Q_OS_MACOS
    QSKIP("A macOS bundle carries the book in its own resources");
#endif
    QCOMPARE(HelpBook::findPage(locations, QStringLiteral("index")), path(u"prefix/share/vesk/" + book + u"index.html"));
}

void TestHelp::theBuildFolderHoldsTheBook()
{
    // Vesk run straight from the build folder finds the copy the build made.
#ifdef Q_OS_MACOS
    const HelpBook::Locations locations = HelpBook::Locations::forExecutableFolder(QStringLiteral(VESK_APP_FOLDER));
#else
    const HelpBook::Locations locations{{}, QStringLiteral(VESK_APP_FOLDER)};
#endif
    const QString found = HelpBook::findPage(locations, QStringLiteral("index.html"));
    QVERIFY2(!found.isEmpty(), "no help book beside " VESK_APP_FOLDER);
    QCOMPARE(TestFiles::read(found), TestFiles::read(QStringLiteral(VESK_HELP_PAGES "/index.html")));
}

void TestHelp::fallbackPageWhenTheBookIsMissing()
{
    QCOMPARE(HelpBook::fallbackHtml(),
             QStringLiteral("<html><body style=\"font-family:-apple-system;padding:40px;color:#999;text-align:center;"
                            "color-scheme:light dark\">\n<h2>Help Not Found</h2>\n<p>The help files could not be "
                            "located.<br>Build with <code>./build.zsh dev</code> to include the help book.</p>\n"
                            "</body></html>"));

    QDir().mkpath(path(QStringLiteral("a/b/c/bin")));
    HelpWindowController help(HelpBook::Locations{{path(u"Resources/" + book)}, path(QStringLiteral("a/b/c/bin"))});
    LogRecorder log;
    help.show(QStringLiteral("index.html"));
    QCoreApplication::processEvents();
    QCOMPARE(shownText(help), QStringLiteral("Help Not Found\nThe help files could not be located.\nBuild with "
                                             "./build.zsh dev to include the help book."));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(help.window()->isVisible());

    // Once the book is there, the next show finds it in the same window.
    write(path(u"a/b/" + book + u"index.html"), page("found now"));
    help.show(QStringLiteral("index.html"));
    QCOMPARE(shownText(help), QStringLiteral("found now"));
}

void TestHelp::oneWindowAcrossShows()
{
    write(path(u"Resources/" + book + u"index.html"), page("first text", "<p><a href=\"other.html\">Other</a></p>"));
    write(path(u"Resources/" + book + u"other.html"), page("the other page"));
    HelpWindowController help(HelpBook::Locations{{path(u"Resources/" + book)}, {}});
    QVERIFY(!help.window()); // nothing is built before the first show

    help.show(QStringLiteral("index.html"));
    QWidget *window = help.window();
    QVERIFY(window);
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QCOMPARE(window->windowTitle(), QStringLiteral("Vesk Help"));
    QCOMPARE(window->size(), QSize(620, 520));
    QCOMPARE(window->minimumSize(), QSize(400, 300));
    QVERIFY(!window->testAttribute(Qt::WA_QuitOnClose));
    QCOMPARE(QApplication::activeWindow(), window);

    // The second show reloads the page, also when it is already shown.
    write(path(u"Resources/" + book + u"index.html"), page("second text", "<p><a href=\"other.html\">Other</a></p>"));
    help.show(QStringLiteral("index.html"));
    QCOMPARE(help.window(), window);
    QCOMPARE(shownText(help).section(u'\n', 0, 0), QStringLiteral("second text"));

    // After following a link, showing the index goes back to it.
    QVERIFY(clickLink(help.browser(), QStringLiteral("other.html")));
    QCOMPARE(shownText(help), QStringLiteral("the other page"));
    help.show(QStringLiteral("index"));
    QCOMPARE(shownText(help).section(u'\n', 0, 0), QStringLiteral("second text"));

    // Closing only hides; the next show brings back the same window, where it was.
    window->move(window->pos() + QPoint(37, 23));
    const QRect frame = window->geometry();
    QVERIFY(window->close());
    QVERIFY(!window->isVisible());
    QCOMPARE(help.window(), window);
    help.show(QStringLiteral("index.html"));
    QCOMPARE(help.window(), window);
    QVERIFY(window->isVisible());
    QCOMPARE(window->geometry(), frame);
}

void TestHelp::theFrameIsSavedAndRestored()
{
    write(path(u"Resources/" + book + u"index.html"), page("index"));
    const HelpBook::Locations locations{{path(u"Resources/" + book)}, {}};
    // Wholly on the screen: a frame that reaches past its edge is pulled
    // back onto it when restored (Qt does so since 6.8), which is not drift.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect frame(screen.topLeft() + QPoint(37, 41), QSize(520, 380));
    QVERIFY(screen.contains(frame));
    {
        HelpWindowController help(locations);
        help.show(QStringLiteral("index.html"));
        QVERIFY(QTest::qWaitForWindowExposed(help.window()));
        help.window()->setGeometry(frame);
        QTRY_COMPARE(help.window()->geometry(), frame);
        help.window()->close();
        QVERIFY(QSettings().contains(QStringLiteral("VeskHelpWindow")));
    }
    // The next runs' windows open where the last one was left, run after run.
    for (int run = 0; run < 3; ++run) {
        HelpWindowController next(locations);
        next.show(QStringLiteral("index.html"));
        QVERIFY(QTest::qWaitForWindowExposed(next.window()));
        QCOMPARE(next.window()->geometry(), frame);
    }
}

void TestHelp::webLinksGoToTheBrowserAndBookLinksStay()
{
    write(path(u"Resources/" + book + u"index.html"),
          page("links", "<p><a href=\"https://example.com/guide\">Secure web</a></p>"
                        "<p><a href=\"http://example.org/\">Plain web</a></p>"
                        "<p><a href=\"mailto:someone@example.com\">Mail</a></p>"
                        "<p><a href=\"other.html#part\">Other part</a></p>"
                        "<p><a href=\"#end\">Down</a></p>"
                        + QByteArray("<p>filler</p>").repeated(60) + "<h2 id=\"end\">End</h2>"));
    write(path(u"Resources/" + book + u"other.html"),
          page("other page", QByteArray("<p>filler</p>").repeated(60) + "<h2 id=\"part\">Part</h2>"));
    HelpWindowController help(HelpBook::Locations{{path(u"Resources/" + book)}, {}});
    help.setExternalUrlOpener([this](const QUrl &url) { m_opened.append(url); });
    help.show(QStringLiteral("index.html"));
    QVERIFY(QTest::qWaitForWindowExposed(help.window()));
    QTextBrowser *browser = help.browser();
    const QUrl index = QUrl::fromLocalFile(path(u"Resources/" + book + u"index.html"));
    QCOMPARE(browser->source(), index);

    // Web links are handed over and the window stays on its page.
    QVERIFY(clickLink(browser, QStringLiteral("https://example.com/guide")));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://example.com/guide"))});
    QVERIFY(clickLink(browser, QStringLiteral("http://example.org/")));
    QCOMPARE(m_opened.size(), 2);
    QCOMPARE(m_opened.last(), QUrl(QStringLiteral("http://example.org/")));
    QCOMPARE(browser->source(), index);
    QCOMPARE(shownText(help).section(u'\n', 0, 0), QStringLiteral("links"));

    // Another scheme goes neither to the browser nor away from the page.
    QVERIFY(clickLink(browser, QStringLiteral("mailto:someone@example.com")));
    QCOMPARE(m_opened.size(), 2);
    QCOMPARE(browser->source(), index);
    QCOMPARE(shownText(help).section(u'\n', 0, 0), QStringLiteral("links"));

    // An anchor on the same page scrolls it.
    QCOMPARE(browser->verticalScrollBar()->value(), 0);
    QVERIFY(clickLink(browser, QStringLiteral("#end")));
    QVERIFY(browser->verticalScrollBar()->value() > 0);
    QCOMPARE(browser->source().fileName(), QStringLiteral("index.html"));

    // A link to another page of the book, and to a place in it, stays inside.
    browser->verticalScrollBar()->setValue(0);
    QVERIFY(clickLink(browser, QStringLiteral("other.html#part")));
    QCOMPARE(browser->source(), QUrl(index.resolved(QUrl(QStringLiteral("other.html#part")))));
    QCOMPARE(shownText(help).section(u'\n', 0, 0), QStringLiteral("other page"));
    QVERIFY(browser->verticalScrollBar()->value() > 0);
    QCOMPARE(m_opened.size(), 2);

    // The keyboard goes back, as the pages' shortcuts say.
    QTest::keyClick(browser, Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(browser->source().fileName(), QStringLiteral("index.html"));
}

void TestHelp::everyLinkOfTheBookResolves()
{
    // Walks the book from its index, as a reader clicking every link would,
    // in the browser the window uses (anchors are what it can scroll to).
    const QDir pages(QStringLiteral(VESK_HELP_PAGES));
    HelpBrowser browser;
    browser.setExternalUrlOpener([this](const QUrl &url) { m_opened.append(url); });
    QStringList toVisit{QStringLiteral("index.html")};
    QHash<QString, PageLinks> visited;
    QStringList problems;
    while (!toVisit.isEmpty()) {
        const QString name = toVisit.takeFirst();
        if (visited.contains(name))
            continue;
        browser.setSource(QUrl::fromLocalFile(pages.filePath(name)));
        visited.insert(name, linksOf(browser.document()));
        for (const QString &href : visited.value(name).hrefs) {
            const QUrl url = QUrl::fromLocalFile(pages.filePath(name)).resolved(QUrl(href));
            if (url.scheme() == u"https")
                continue;
            if (!url.isLocalFile() || QFileInfo(url.toLocalFile()).absolutePath() != pages.absolutePath()) {
                problems.append(name + u": link out of the book: " + href);
                continue;
            }
            if (!QFileInfo(url.toLocalFile()).isFile())
                problems.append(name + u": dead link: " + href);
            else
                toVisit.append(url.fileName());
        }
    }
    // Anchors, once every page is loaded.
    for (auto it = visited.cbegin(); it != visited.cend(); ++it) {
        for (const QString &href : it.value().hrefs) {
            const QUrl url = QUrl::fromLocalFile(pages.filePath(it.key())).resolved(QUrl(href));
            if (url.isLocalFile() && url.hasFragment() && visited.contains(url.fileName())
                && !visited.value(url.fileName()).anchors.contains(url.fragment()))
                problems.append(it.key() + u": missing anchor: " + href);
        }
    }
    // Every page can be reached, and each uses the stylesheet and nothing from outside.
    static const QRegularExpression resource(QStringLiteral("(?:href|src)=\"([^\"]*)\""));
    for (const QString &file : pages.entryList({QStringLiteral("*.html")}, QDir::Files)) {
        if (!visited.contains(file))
            problems.append(file + u": no link leads here");
        const QString html = QString::fromUtf8(TestFiles::read(pages.filePath(file)));
        if (!html.contains(u"<link rel=\"stylesheet\" type=\"text/css\" href=\"style.css\">"))
            problems.append(file + u": does not use style.css");
        for (auto match = resource.globalMatch(html); match.hasNext();) {
            const QString target = match.next().captured(1);
            if (target.startsWith(u"http:"))
                problems.append(file + u": plain http link: " + target);
            else if (!target.startsWith(u"https:") && !target.startsWith(u'#')
                     && !QFileInfo(pages.filePath(QUrl(target).path())).isFile())
                problems.append(file + u": missing file: " + target);
        }
    }
    QVERIFY2(visited.size() >= 10, qPrintable(QString::number(visited.size())));
    QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    QCOMPARE(m_opened, QList<QUrl>{}); // walking never opens the browser
}

void TestHelp::pagesFollowThePalette()
{
    write(path(u"Resources/" + book + u"index.html"),
          "<html><head><link rel=\"stylesheet\" type=\"text/css\" href=\"style.css\"></head>"
          "<body><p>Body text with a <a href=\"other.html\">link</a>.</p></body></html>");
    write(path(u"Resources/" + book + u"style.css"), "body { color: #123456; } a { color: #654321; }");
    HelpWindowController help(HelpBook::Locations{{path(u"Resources/" + book)}, {}});
    help.show(QStringLiteral("index.html"));
    QTextBrowser *browser = help.browser();

    const auto colours = [browser] {
        const QTextBlock block = browser->document()->begin();
        QColor text, link;
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            (format.isAnchor() ? link : text) = format.foreground().color();
        }
        return std::pair{text, link};
    };
    QPalette light;
    light.setColor(QPalette::Window, QColor(0xf0, 0xf0, 0xf0));
    light.setColor(QPalette::Base, Qt::white);
    light.setColor(QPalette::Text, QColor(0x10, 0x10, 0x10));
    light.setColor(QPalette::Highlight, QColor(0x30, 0x70, 0xe0));
    QPalette dark = light;
    dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::Base, QColor(0x18, 0x18, 0x18));
    dark.setColor(QPalette::Text, QColor(0xee, 0xee, 0xee));

    // A palette change restyles the page at once; the book's own colours give way.
    browser->setPalette(dark);
    QCOMPARE(colours().first, QColor(0xee, 0xee, 0xee));
    const QColor darkLink = colours().second;
    browser->setPalette(light);
    QCOMPARE(colours().first, QColor(0x10, 0x10, 0x10));
    QVERIFY(colours().second != darkLink);
    QVERIFY(colours().second != QColor(0x65, 0x43, 0x21));
}

void TestHelp::pagesShowThePlatformsKeysAndPassages()
{
    const QString html = QStringLiteral(
        "<p>New: <kbd>⌘N</kbd>, project: <kbd>⌘⇧N</kbd>, hand off: <kbd>⌘⏎</kbd>, back: <kbd>⌥←</kbd>, "
        "help: <kbd>⌘/</kbd>, settings: <kbd>⌘,</kbd>, several: <kbd>⌘</kbd>-click, <kbd>Return</kbd>, <kbd>Esc</kbd>.</p>"
        "<p>Open <span class=\"mac\">the Finder</span><span class=\"linux\">your file manager</span>.</p>"
        "<p class=\"mac\">Only on a Mac.</p><div class=\"linux\"><p>Only on Linux.</p></div>");

    const QString linux = HelpBrowser::pageForPlatform(html, HelpBrowser::Platform::Linux);
    QCOMPARE(linux, QStringLiteral(
        "<p>New: <kbd>Ctrl+N</kbd>, project: <kbd>Ctrl+Shift+N</kbd>, hand off: <kbd>Ctrl+Return</kbd>, back: "
        "<kbd>Alt+Left</kbd>, help: <kbd>Ctrl+/</kbd>, settings: <kbd>Ctrl+,</kbd>, several: <kbd>Ctrl</kbd>-click, "
        "<kbd>Return</kbd>, <kbd>Esc</kbd>.</p>"
        "<p>Open <span class=\"linux\">your file manager</span>.</p>"
        "<div class=\"linux\"><p>Only on Linux.</p></div>"));

    const QString mac = HelpBrowser::pageForPlatform(html, HelpBrowser::Platform::MacOS);
    QVERIFY(mac.startsWith(u"<p>New: <kbd>⌘N</kbd>, project: <kbd>⌘⇧N</kbd>, hand off: <kbd>⌘⏎</kbd>"));
    QVERIFY(mac.contains(u"Open <span class=\"mac\">the Finder</span>.</p><p class=\"mac\">Only on a Mac.</p>"));
    QVERIFY(!mac.contains(u"Linux") && !mac.contains(u"file manager"));
}

void TestHelp::anInstalledBookIsFoundInTheDesktopsDataFolders()
{
    if (DesktopConventions::desktop() == DesktopConventions::Desktop::MacOS)
        QSKIP("The XDG data folders are Linux's; a macOS bundle carries its book in its own resources");
    // The application's own locations find an installed book through the
    // desktop's data folders ($XDG_DATA_HOME first).
    const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("data"))));
    write(path(u"data/vesk/" + book + u"index.html"), page("installed index"));
    const QString found = HelpBook::findPage(HelpBook::Locations::forApplication(), QStringLiteral("index.html"));
    if (oldDataHome.isNull())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", oldDataHome);
    QCOMPARE(found, path(u"data/vesk/" + book + u"index.html"));
}

void TestHelp::helpMenuOpensTheIndex()
{
    // The application's own instance, pointed at a book of this test's (where
    // the platform looks is the test above's and theBuildFolderHoldsTheBook's).
    write(path(u"book/" + book + u"index.html"), page("the book's index"));
    HelpWindowController &shared = HelpWindowController::shared();
    const HelpBook::Locations applicationLocations = shared.locations();
    shared.setLocations({{path(u"book/" + book)}, {}});
    QTemporaryDir library;
    FakeAccessibility accessibility;
    VeskApplication vesk(library.path() + u"/prompts");
    MainWindow *window = vesk.mainWindow();
    QAction *help = window->helpAction();
    QCOMPARE(help->text(), QStringLiteral("Vesk Help"));
    QCOMPARE(help->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Slash));
    QMenu *menu = nullptr;
    for (QAction *entry : window->menuBar()->actions()) {
        if (entry->menu() && entry->menu()->actions().contains(help))
            menu = entry->menu();
    }
    QVERIFY(menu);
    QCOMPARE(menu->title(), QStringLiteral("&Help"));

    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QTest::keyClick(window, Qt::Key_Slash, Qt::ControlModifier);
    QCOMPARE(&shared, &HelpWindowController::shared());
    QVERIFY(shared.window() && shared.window()->isVisible());
    QCOMPARE(shared.window()->windowTitle(), QStringLiteral("Vesk Help"));
    QCOMPARE(shared.browser()->source().fileName(), QStringLiteral("index.html"));
    QCOMPARE(shownText(shared), QStringLiteral("the book's index"));

    shared.discardWindow();
    shared.setLocations(applicationLocations);
}

void TestHelp::closingTheMainWindowQuitsWithHelpOpen()
{
    QTemporaryDir library;
    FakeAccessibility accessibility;
    VeskApplication vesk(library.path() + u"/prompts");
    vesk.mainWindow()->show();
    HelpWindowController &help = HelpWindowController::shared();
    help.show(QStringLiteral("index.html"));
    QVERIFY(QTest::qWaitForWindowExposed(help.window()));
    help.window()->resize(450, 333);
    QSettings().remove(QStringLiteral("VeskHelpWindow"));

    QTimer::singleShot(0, vesk.mainWindow(), &QWidget::close);
    QTimer guard;
    guard.setSingleShot(true);
    connect(&guard, &QTimer::timeout, qApp, [] { QCoreApplication::exit(7); });
    guard.start(5000);
    QCOMPARE(QCoreApplication::exec(), 0); // 7: the help window kept the application running
    // The window went with the application, and its frame was kept.
    QVERIFY(!help.window());
    help.show(QStringLiteral("index.html"));
    QCOMPARE(help.window()->size(), QSize(450, 333));
    help.discardWindow();
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"
