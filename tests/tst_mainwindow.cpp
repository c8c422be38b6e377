#include "AppState.h"
#include "FakePlatform.h"
#include "ProjectNamePrompter.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "platform/DesktopConventions.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/Placeholder.h"
#include "ui/shell/Preferences.h"
#include "ui/shell/SearchResultsView.h"
#include "ui/shell/SettingsWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/shell/WelcomeView.h"
#include "ui/sidebar/SidebarModel.h"
#include "ui/theme/Theme.h"
#include "ui/sidebar/SidebarTree.h"
#include "ui/sidebar/SidebarView.h"

#include <QAction>
#include <QButtonGroup>
#include <QClipboard>
#include <QLabel>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QWindow>

using TestFiles::at;
using TestFiles::write;
using Detail = MainWindow::Detail;
using Scheme = SystemAppearance::Scheme;
using namespace Qt::StringLiterals;

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void detailChoice();
    void searchResultsAndLeavingASearch();
    void commandsAndSidebarButtons();
    void reloadWritesThePendingEditFirst();
    void newPromptWritesTheOpenPromptsEditFirst();
    void newPromptUnfoldsItsSection();
    void copyFromTheSidebarActsOnOneSelectedPrompt();
    void keyboardReachesEveryControl();
    void searchResultsByKeyboard();
    void searchResultPreviewsHaveTwoLines();
    void welcomeReadsAtEverySize();
    void quitAndEscape();
    void newProjectDialog();
    void appearanceResolution();
    void settingsStoreUnderTheirKeys();
    void settingsHasOneNameAndOpensOverTheWindow();
    void autoPasteAsksForAccessibilityWhenSwitchedOn();
    void handoffFootnotesNameThePlatformsTerms();
    void handoffButtonFollowsTheSettings();
    void iconsFollowAnAppearanceSwitch();
    void welcomeFollowsAnAppearanceSwitch();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    std::unique_ptr<QTemporaryDir> m_dir;
    QTemporaryDir m_settingsDir;
    // The real permission prompt must never appear during a test run.
    std::unique_ptr<FakeAccessibility> m_accessibility;
    std::unique_ptr<VeskApplication> m_app;
};

void TestMainWindow::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("VeskTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestMainWindow::init()
{
    QSettings().clear();
    m_accessibility = std::make_unique<FakeAccessibility>();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("prompts/Inbox/a.md"), "---\ntitle: Alpha\n---\n\napple pie", at(3));
    write(path("prompts/Inbox/b.md"), "---\ntitle: Beta\npinned: true\n---\n\nbanana", at(2));
    write(path("prompts/Work/blank.md"), "---\ntitle: \n---\n\n", at(1));
    m_app = std::make_unique<VeskApplication>(path("prompts"));
    m_app->mainWindow()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_app->mainWindow()));
}

void TestMainWindow::cleanup()
{
    m_app.reset();
    m_accessibility.reset();
}

void TestMainWindow::detailChoice()
{
    MainWindow *window = m_app->mainWindow();
    AppState *state = m_app->state();
    QCOMPARE(window->currentDetail(), Detail::Empty);

    state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox")});
    QCOMPARE(window->currentDetail(), Detail::Prompt);
    QCOMPARE(window->promptDetail()->draft().id, u"Inbox/a.md");

    state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/b.md")});
    QCOMPARE(window->currentDetail(), Detail::MultiSelection);
    QCOMPARE(window->multiSelection()->headline(), u"2 prompts selected");

    // Searching wins over a selection; clearing the query brings it back.
    state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    window->searchField()->setText(QStringLiteral("banana"));
    QCOMPARE(state->searchQuery(), u"banana");
    QCOMPARE(window->currentDetail(), Detail::SearchResults);
    QTest::keyClick(window->searchField(), Qt::Key_Escape);
    QCOMPARE(state->searchQuery(), QString());
    QCOMPARE(window->currentDetail(), Detail::Prompt);

    // No prompts: the welcome screen, unless a search is on.
    for (const char *file : {"Inbox/a.md", "Inbox/b.md", "Work/blank.md"})
        QVERIFY(QFile::remove(path(QStringLiteral("prompts/") + QString::fromLatin1(file))));
    m_app->library()->reload();
    QCOMPARE(window->currentDetail(), Detail::Welcome);
    state->setSearchQuery(QStringLiteral("x"));
    QCOMPARE(window->currentDetail(), Detail::SearchResults);
    QCOMPARE(window->searchResults()->currentWidget() == window->searchResults()->list(), false);
}

void TestMainWindow::searchResultsAndLeavingASearch()
{
    MainWindow *window = m_app->mainWindow();
    AppState *state = m_app->state();
    window->searchField()->setText(QStringLiteral("e"));
    SearchResultsModel *results = window->searchResults()->model();
    QCOMPARE(results->rowCount(), 3); // library order: pinned first, then newest
    QCOMPARE(results->index(0).data(SearchResultsModel::PromptIdRole).toString(), u"Inbox/b.md");
    QCOMPARE(results->index(0).data(SearchResultsModel::PinnedRole).toBool(), true);
    QCOMPARE(results->index(2).data(SearchResultsModel::PreviewRole).toString(), QString());
    QCOMPARE(results->index(2).data().toString(), u"New prompt");

    // A section row in the selection leaves the search alone; a prompt ends it.
    state->setSelectedPromptIDs({QStringLiteral("Inbox")});
    QVERIFY(state->isSearching());
    window->searchResults()->list()->selectionModel()->select(results->index(1), QItemSelectionModel::ClearAndSelect);
    QCOMPARE(state->searchQuery(), QString());
    QCOMPARE(window->searchField()->text(), QString());
    QCOMPARE(window->currentDetail(), Detail::Prompt);
    QCOMPARE(window->promptDetail()->draft().id, u"Inbox/a.md");

    // Return in the field itself opens the first result.
    window->searchField()->setFocus();
    QTest::keyClicks(window->searchField(), QStringLiteral("banana"));
    QVERIFY(state->isSearching());
    QTest::keyClick(window->searchField(), Qt::Key_Return);
    QVERIFY(!state->isSearching());
    QCOMPARE(window->promptDetail()->draft().id, u"Inbox/b.md");

    // Return on a sidebar row goes on into that prompt's text.
    SidebarTree *tree = window->sidebar()->tree();
    tree->setFocus();
    const QModelIndex row = window->sidebar()->model()->promptIndex(QStringLiteral("Inbox/a.md"));
    QVERIFY(row.isValid());
    tree->setCurrentIndex(row);
    QCOMPARE(window->promptDetail()->draft().id, u"Inbox/a.md");
    QTest::keyClick(tree, Qt::Key_Return);
    QCOMPARE(QApplication::focusWidget(), window->promptDetail()->editor());
}

void TestMainWindow::newPromptUnfoldsItsSection()
{
    MainWindow *window = m_app->mainWindow();
    SidebarView *sidebar = window->sidebar();
    sidebar->setSectionExpanded(QStringLiteral("Inbox"), false);
    QVERIFY(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window, Qt::Key_N, Qt::ControlModifier);
    const QSet<QString> selected = m_app->state()->selectedPromptIDs();
    QCOMPARE(selected.size(), 1);
    const std::optional<QString> created = *selected.begin();
    QVERIFY(created->startsWith(u"Inbox/") && *created != u"Inbox/a.md" && *created != u"Inbox/b.md");
    QVERIFY(sidebar->isSectionExpanded(QStringLiteral("Inbox")));
    const QModelIndex row = sidebar->model()->promptIndex(*created);
    QVERIFY(sidebar->tree()->isExpanded(row.parent()));
    QVERIFY(sidebar->tree()->selectionModel()->isSelected(row));
    QVERIFY(sidebar->tree()->viewport()->rect().intersects(sidebar->tree()->visualRect(row)));
}

void TestMainWindow::settingsHasOneNameAndOpensOverTheWindow()
{
    MainWindow *window = m_app->mainWindow();
    QAction *open = nullptr;
    for (QAction *action : window->findChildren<QAction *>())
        if (action->menuRole() == QAction::PreferencesRole)
            open = action;
    QVERIFY(open);
    open->trigger();
    SettingsWindow *settings = m_app->settingsWindow();
    QVERIFY(QTest::qWaitForWindowExposed(settings));
    // The menu, the window and the welcome screen use the same word.
    const QString name = settings->windowTitle();
    QVERIFY(name == u"Settings" || name == u"Preferences");
    QCOMPARE(open->text(), name + u"…");
    bool welcomeSays = false;
    for (QLabel *label : window->welcome()->findChildren<QLabel *>())
        welcomeSays = welcomeSays || label->text().contains(u"Pick the target in " + name + u".");
    QVERIFY(welcomeSays);
    // It opens over the main window and cannot be maximised.
    QVERIFY(!(settings->windowFlags() & Qt::WindowMaximizeButtonHint));
    QVERIFY(window->geometry().contains(settings->geometry().center()));
}

void TestMainWindow::commandsAndSidebarButtons()
{
    MainWindow *window = m_app->mainWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    QVERIFY(window->newPromptAction()->isEnabled());
    QCOMPARE(window->newPromptAction()->shortcut(), QKeySequence(QKeySequence::New));

    // The blank prompt in Work is not reused; a new one lands in Inbox, focused.
    window->newPromptAction()->trigger();
    const std::optional<Prompt> created = m_app->state()->selectedPrompt();
    QVERIFY(created && created->projectName == u"Inbox");
    QCOMPARE(window->currentDetail(), Detail::Prompt);
    QTRY_COMPARE(window->focusWidget(), window->promptDetail()->editor());

    QVERIFY(window->showSidebarAction()->isVisible() == false);
    // The new-project and hide buttons belong to the sidebar's column and
    // leave with it; the show button takes their place.
    auto *toolbar = window->findChild<QToolBar *>(QStringLiteral("toolbar"));
    QAction *newProject = toolbar->actions().constFirst();
    QVERIFY(newProject->toolTip().startsWith(u"New Project"));
    window->sidebar()->tree()->setFocus();
    window->hideSidebarAction()->trigger();
    QVERIFY(window->sidebar()->isHidden());
    // The focus goes to the button in its place, not into the title to overtype it.
    QCOMPARE(QApplication::focusWidget(), toolbar->widgetForAction(window->showSidebarAction()));
    QVERIFY(window->showSidebarAction()->isVisible());
    QVERIFY(!window->hideSidebarAction()->isVisible());
    QVERIFY(!newProject->isVisible());
    window->showSidebarAction()->trigger();
    QVERIFY(window->sidebar()->isVisible());
    QVERIFY(!window->showSidebarAction()->isVisible());
    QVERIFY(window->hideSidebarAction()->isVisible());
    QVERIFY(newProject->isVisible());

    QVERIFY(QDir(path("prompts")).removeRecursively());
    window->reloadAction()->trigger();
    QVERIFY(!window->newPromptAction()->isEnabled());
}

void TestMainWindow::reloadWritesThePendingEditFirst()
{
    AppState *state = m_app->state();
    state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QTest::keyClicks(m_app->mainWindow()->promptDetail()->editor(), QStringLiteral("X"));
    QVERIFY(state->hasPendingSave());
    write(path("prompts/Inbox/b.md"), "---\ntitle: Changed elsewhere\n---\n", at(50));
    m_app->reloadFromDisk(); // what becoming active does
    QVERIFY(!state->hasPendingSave());
    QVERIFY(m_app->library()->prompt(QStringLiteral("Inbox/a.md"))->body.contains(u'X'));
    QCOMPARE(m_app->library()->prompt(QStringLiteral("Inbox/b.md"))->frontMatter.title, u"Changed elsewhere");
}

void TestMainWindow::newPromptWritesTheOpenPromptsEditFirst()
{
    AppState *state = m_app->state();
    MainWindow *window = m_app->mainWindow();
    state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QTest::keyClicks(window->promptDetail()->editor(), QStringLiteral("X"));
    QTest::keySequence(window, QKeySequence::New); // at once, within the save delay
    const std::optional<Prompt> made = state->selectedPrompt();
    QVERIFY(made && made->id != u"Inbox/a.md");
    const QString created = made->id;
    QTRY_COMPARE(window->focusWidget(), window->promptDetail()->editor());
    QTest::keyClicks(window->promptDetail()->editor(), QStringLiteral("Y"));
    QTRY_VERIFY_WITH_TIMEOUT(!state->hasPendingSave(), 2000);
    QCOMPARE(TestFiles::read(path("prompts/Inbox/a.md")), "---\ntitle: Alpha\n---\n\nX\napple pie");
    QCOMPARE(m_app->library()->prompt(created)->body, u"\nY");
}

void TestMainWindow::copyFromTheSidebarActsOnOneSelectedPrompt()
{
    AppState *state = m_app->state();
    MainWindow *window = m_app->mainWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    SidebarTree *tree = window->sidebar()->tree();
    QClipboard *clipboard = QGuiApplication::clipboard();
    state->setSelectedPromptIDs({QStringLiteral("Inbox/b.md")});
    tree->setFocus();
    clipboard->setText(QStringLiteral("untouched"));
    QTest::keySequence(tree, QKeySequence::Copy);
    QCOMPARE(clipboard->text(), u"\nbanana");
    QCOMPARE(window->promptDetail()->noticeLabel()->text(), u"Copied");

    // Two prompts, or none: nothing is copied, not even a row's text.
    for (const QSet<QString> &ids : {QSet<QString>{QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/b.md")},
                                     QSet<QString>{}}) {
        state->setSelectedPromptIDs(ids);
        tree->setFocus();
        tree->selectionModel()->setCurrentIndex(window->sidebar()->model()->promptIndex(QStringLiteral("Inbox/a.md")),
                                                QItemSelectionModel::NoUpdate);
        clipboard->setText(QStringLiteral("untouched"));
        QTest::keySequence(tree, QKeySequence::Copy);
        QCOMPARE(clipboard->text(), u"untouched");
    }
}

void TestMainWindow::keyboardReachesEveryControl()
{
    MainWindow *window = m_app->mainWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    m_app->state()->setSelectedPromptIDs({QStringLiteral("Inbox/b.md")});
    auto *toolbar = window->findChild<QToolBar *>(QStringLiteral("toolbar"));
    QWidget *newProject = toolbar->widgetForAction(toolbar->actions().constFirst());

    // Tab goes round every control once (Ctrl+Tab, ⌃⇥ on macOS, leaves the
    // body, where Tab types a tab).
    newProject->setFocus(Qt::TabFocusReason);
    const Qt::KeyboardModifier leaveBody = DesktopConventions::leaveEditorModifier();
    QList<QWidget *> visited;
    while (!visited.contains(QApplication::focusWidget()) && visited.size() < 20) {
        QWidget *focused = QApplication::focusWidget();
        visited.append(focused);
        QTest::keyClick(focused, Qt::Key_Tab, focused == window->promptDetail()->editor() ? leaveBody : Qt::NoModifier);
    }
    QCOMPARE(QApplication::focusWidget(), newProject);
    PromptDetailView *detail = window->promptDetail();
    const QList<QWidget *> expected = {newProject, toolbar->widgetForAction(window->hideSidebarAction()),
                                       window->searchField(), toolbar->widgetForAction(toolbar->actions().constLast()),
                                       window->sidebar()->tree(), detail->titleField(), detail->pinButton(),
                                       detail->copyButton(), detail->handoffButton(), detail->editor()};
    QCOMPARE(visited, expected);

    // And each shows its focus, reached with Tab as a user reaches it.
    for (const qsizetype i : {0, 1, 3, 6, 7, 8}) {
        QWidget *button = expected[i];
        QWidget *before = expected[(i + expected.size() - 1) % expected.size()];
        before->setFocus(Qt::OtherFocusReason);
        QTest::keyClick(before, Qt::Key_Tab, before == detail->editor() ? Qt::ControlModifier : Qt::NoModifier);
        QCOMPARE(QApplication::focusWidget(), button);
        const QImage focused = button->grab().toImage();
        window->searchField()->setFocus(Qt::TabFocusReason);
        QVERIFY2(button->grab().toImage() != focused, qPrintable(button->toolTip()));
    }
}

void TestMainWindow::searchResultsByKeyboard()
{
    MainWindow *window = m_app->mainWindow();
    AppState *state = m_app->state();
    QVERIFY(QTest::qWaitForWindowActive(window));
    window->searchField()->setFocus();
    QTest::keyClicks(window->searchField(), QStringLiteral("e"));
    // Down goes into the results; moving there does not pick one yet.
    QTest::keyClick(window->searchField(), Qt::Key_Down);
    QListView *list = window->searchResults()->list();
    QCOMPARE(QApplication::focusWidget(), list);
    QCOMPARE(list->currentIndex().row(), 0);
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(list->currentIndex().row(), 1);
    QVERIFY(state->isSearching());
    // Return picks it.
    QTest::keyClick(list, Qt::Key_Return);
    QVERIFY(!state->isSearching());
    QCOMPARE(window->currentDetail(), Detail::Prompt);
    QCOMPARE(window->promptDetail()->draft().id, u"Inbox/a.md");
}

namespace {
// The horizontal bands of a picture that hold something other than its
// background: the lines of text in a row.
int inkBands(const QImage &image)
{
    const QColor background = image.pixelColor(image.width() - 3, image.height() / 2);
    int bands = 0;
    bool inBand = false;
    for (int y = 0; y < image.height(); ++y) {
        bool ink = false;
        for (int x = 0; x < image.width() && !ink; ++x) {
            const QColor c = image.pixelColor(x, y);
            ink = qAbs(c.lightness() - background.lightness()) > 60;
        }
        bands += ink && !inBand ? 1 : 0;
        inBand = ink;
    }
    return bands;
}
} // namespace

void TestMainWindow::searchResultPreviewsHaveTwoLines()
{
    const QString longBody = QStringLiteral("zebra ") + QString(u"lorem ipsum dolor sit amet "_s).repeated(6);
    write(path("prompts/Inbox/titled.md"), ("---\ntitle: With a title\n---\n\n" + longBody).toUtf8(), at(9));
    write(path("prompts/Inbox/untitled.md"), ("---\ntitle: \n---\n\nzebra " + longBody).toUtf8(), at(8));
    m_app->library()->reload();
    MainWindow *window = m_app->mainWindow();
    window->searchField()->setText(QStringLiteral("zebra"));
    QListView *list = window->searchResults()->list();
    QCOMPARE(list->model()->rowCount(), 2);
    QCoreApplication::processEvents();
    // Two lines of preview, then the title; without a title, the two lines.
    QCOMPARE(inkBands(list->viewport()->grab(list->visualRect(list->model()->index(0, 0))).toImage()), 3);
    QCOMPARE(inkBands(list->viewport()->grab(list->visualRect(list->model()->index(1, 0))).toImage()), 2);
}

void TestMainWindow::welcomeReadsAtEverySize()
{
    for (const char *file : {"Inbox/a.md", "Inbox/b.md", "Work/blank.md"})
        QVERIFY(QFile::remove(path(QStringLiteral("prompts/") + QString::fromLatin1(file))));
    m_app->library()->reload();
    MainWindow *window = m_app->mainWindow();
    QCOMPARE(window->currentDetail(), Detail::Welcome);
    WelcomeView *welcome = window->welcome();
    for (const QSize size : {QSize(920, 640), QSize(760, 520)}) {
        window->resize(size);
        QCoreApplication::processEvents();
        QList<QRect> taken;
        for (QLabel *label : welcome->findChildren<QLabel *>()) {
            if (!label->isVisible() || label->text().isEmpty())
                continue;
            // Each text gets the height it needs, and no other text sits on it.
            const int needed = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
            QVERIFY2(label->height() >= needed, qPrintable(label->text()));
            const QRect rect(label->mapTo(welcome, QPoint(0, 0)), label->size());
            for (const QRect &other : std::as_const(taken))
                QVERIFY2(!rect.intersects(other), qPrintable(label->text()));
            taken.append(rect);
        }
        // What does not fit can be scrolled to.
        QPushButton *create = welcome->createButton();
        const QRect button(create->mapTo(welcome, QPoint(0, 0)), create->size());
        auto *scroll = welcome->findChild<QScrollArea *>();
        QVERIFY(welcome->rect().contains(button) || (scroll && scroll->verticalScrollBar()->maximum() > 0));
    }
}

void TestMainWindow::quitAndEscape()
{
    // File ▸ Quit (Ctrl+Q) closes the window, which quits.
    MainWindow *window = m_app->mainWindow();
    QAction *quit = nullptr;
    for (QAction *action : window->menuBar()->actions().constFirst()->menu()->actions()) {
        if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Q))
            quit = action;
    }
    QVERIFY(quit);
    QCOMPARE(quit->text().remove(u'&'), u"Quit");

    // Escape closes Settings.
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    QVERIFY(QTest::qWaitForWindowActive(settings));
    QTest::keyClick(settings->appearancePicker(), Qt::Key_Escape);
    QVERIFY(settings->isHidden());

    quit->trigger();
    QVERIFY(window->isHidden());
}

void TestMainWindow::newProjectDialog()
{
    // Answer the modal dialog once it is up: note what it shows, type a name,
    // press a button (always, so that a failure cannot leave it open).
    struct Seen
    {
        QString title, placeholder;
        bool fieldFocused = false, createIsDefault = false;
    };
    const auto answer = [](const QString &name, const QString &button, Seen *seen) {
        QTimer::singleShot(0, [=] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            auto *field = dialog->findChild<QLineEdit *>(QStringLiteral("projectName"));
            *seen = {dialog->windowTitle(), field->placeholderText(), dialog->focusWidget() == field,
                     dialog->findChild<QPushButton *>(QStringLiteral("createButton"))->isDefault()};
            QTest::keyClicks(field, name);
            for (QPushButton *b : dialog->findChildren<QPushButton *>()) {
                if (b->text() == button)
                    b->click();
            }
            if (dialog->isVisible())
                dialog->reject();
        });
    };
    Seen seen;
    answer(QStringLiteral("  Ideas "), QStringLiteral("Create"), &seen);
    m_app->mainWindow()->newProjectAction()->trigger();
    QCOMPARE(seen.title, u"New Project");
    QCOMPARE(seen.placeholder, u"Project name");
    QVERIFY(seen.fieldFocused);
    QVERIFY(seen.createIsDefault);
    QVERIFY(m_app->library()->project(QStringLiteral("Ideas")));

    answer(QStringLiteral("Never"), QStringLiteral("Cancel"), &seen);
    m_app->mainWindow()->newProjectAction()->trigger();
    QVERIFY(!m_app->library()->project(QStringLiteral("Never")));
}

void TestMainWindow::appearanceResolution()
{
    QCOMPARE(schemeForAppearance(QStringLiteral("system"), true), Scheme::System);
    QCOMPARE(schemeForAppearance(QStringLiteral("light"), true), Scheme::Light);
    QCOMPARE(schemeForAppearance(QStringLiteral("dark"), false), Scheme::Dark);
    QCOMPARE(schemeForAppearance(QStringLiteral("opposite"), true), Scheme::Light);
    QCOMPARE(schemeForAppearance(QStringLiteral("opposite"), false), Scheme::Dark);
    QCOMPARE(schemeForAppearance(QStringLiteral("Dark"), true), Scheme::System); // unknown: system

#ifdef VESK_APP_PALETTES
    // Applying it switches the palette of the running app.
    m_app->preferences()->setAppearance(QStringLiteral("dark"));
    QVERIFY(QApplication::palette().color(QPalette::Window).lightnessF() < 0.5);
    m_app->preferences()->setAppearance(QStringLiteral("light"));
    QVERIFY(QApplication::palette().color(QPalette::Window).lightnessF() > 0.5);
#endif
}

void TestMainWindow::settingsStoreUnderTheirKeys()
{
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    QCOMPARE(settings->appearancePicker()->currentText(), u"System");
    QCOMPARE(settings->handoffPicker()->checkedButton()->text(), u"Claude");
    QVERIFY(!settings->autoPasteSwitch()->isChecked());

    settings->appearancePicker()->setCurrentIndex(settings->appearancePicker()->findText(QStringLiteral("Opposite")));
    QCOMPARE(QSettings().value(QStringLiteral("appearance")).toString(), u"opposite");
    for (QAbstractButton *button : settings->handoffPicker()->buttons()) {
        if (button->text() == u"ChatGPT")
            button->click();
    }
    QCOMPARE(QSettings().value(QStringLiteral("handoffApp")).toString(), u"chatgpt");
    m_accessibility->trusted = false;
    settings->autoPasteSwitch()->click();
    QCOMPARE(QSettings().value(QStringLiteral("autoPaste")).toBool(), true);
    QCOMPARE(m_accessibility->prompts, 1); // untrusted: the permission was asked for

    // An unknown stored target reads as Claude.
    QSettings().setValue(QStringLiteral("handoffApp"), QStringLiteral("other"));
    settings->hide();
    settings->show();
    QCOMPARE(settings->handoffPicker()->checkedButton()->text(), u"Claude");
}

void TestMainWindow::autoPasteAsksForAccessibilityWhenSwitchedOn()
{
    m_accessibility->trusted = false;
    QSettings().setValue(QStringLiteral("autoPaste"), true);
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    QVERIFY(settings->autoPasteSwitch()->isChecked());
    QCOMPARE(m_accessibility->prompts, 0); // showing the stored value asks nothing

    settings->autoPasteSwitch()->click(); // off
    QCOMPARE(QSettings().value(QStringLiteral("autoPaste")).toBool(), false);
    QCOMPARE(m_accessibility->prompts, 0);
    settings->autoPasteSwitch()->click(); // on, untrusted: the system's prompt
    QCOMPARE(QSettings().value(QStringLiteral("autoPaste")).toBool(), true);
    QCOMPARE(m_accessibility->prompts, 1);
    settings->autoPasteSwitch()->click();
    settings->autoPasteSwitch()->click(); // and again each time it goes on
    QCOMPARE(m_accessibility->prompts, 2);
    QVERIFY(settings->autoPasteSwitch()->isChecked()); // declining leaves it on

    m_accessibility->trusted = true;
    settings->autoPasteSwitch()->click();
    settings->autoPasteSwitch()->click(); // already trusted: no prompt
    QCOMPARE(m_accessibility->prompts, 2);
}

void TestMainWindow::handoffFootnotesNameThePlatformsTerms()
{
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    QStringList texts;
    for (const QLabel *label : settings->findChildren<QLabel *>())
        texts << label->text();
    const auto has = [&texts](const QString &text) { return texts.contains(text); };
#ifdef Q_OS_MACOS
    QVERIFY(has(u"Auto-paste synthesizes a ⌘V keystroke once the app is frontmost. macOS will ask for Accessibility "
                u"permission the first time you enable it; grant it under System Settings → Privacy & Security → "
                u"Accessibility."_s));
#else
    QVERIFY2(has(u"The Ctrl+Return button copies the filled prompt and brings the chosen app to the foreground. If "
                 u"the desktop app isn't installed, Vesk falls back to opening the web client."_s),
             qPrintable(texts.join(u'|')));
    QVERIFY2(has(u"Auto-paste synthesizes a Ctrl+V keystroke once the app is frontmost. In an X11 session it needs "
                 u"no permission. Wayland does not let one app send keystrokes to another, so there Vesk only "
                 u"copies and you paste with Ctrl+V."_s),
             qPrintable(texts.join(u'|')));
#endif
}

void TestMainWindow::handoffButtonFollowsTheSettings()
{
    m_app->state()->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QToolButton *button = m_app->mainWindow()->promptDetail()->handoffButton();
    QCOMPARE(button->text(), u"Claude");
    SettingsWindow *settings = m_app->settingsWindow();
    settings->show();
    for (QAbstractButton *radio : settings->handoffPicker()->buttons()) {
        if (radio->text() == u"ChatGPT")
            radio->click();
    }
    QCOMPARE(button->text(), u"ChatGPT");
    QCOMPARE(button->toolTip(), u"Copy and activate ChatGPT");
}

namespace {
// The colour of an icon: its most opaque pixel.
QColor ink(const QImage &image)
{
    QColor best(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.alpha() > best.alpha())
                best = c;
        }
    }
    return best;
}
} // namespace

void TestMainWindow::iconsFollowAnAppearanceSwitch()
{
#ifndef VESK_APP_PALETTES
    QSKIP("the system's own appearance switches the palettes");
#endif
    SettingsWindow *settings = m_app->settingsWindow();
    MainWindow *window = m_app->mainWindow();
    settings->show();
    const auto icons = [&] {
        QList<QImage> images;
        for (const QLabel *label : settings->findChildren<QLabel *>()) {
            if (!label->pixmap().isNull())
                images.append(label->pixmap().toImage());
        }
        images.append(window->hideSidebarAction()->icon().pixmap(18).toImage());
        return images;
    };
    for (const char *appearance : {"dark", "light", "dark"}) {
        m_app->preferences()->setAppearance(QString::fromLatin1(appearance));
        QCoreApplication::processEvents(); // widgets hear of the new palette through posted events
        const QColor expected = Theme::secondaryText(settings->palette());
        const QList<QImage> images = icons();
        QCOMPARE(images.size(), 3);
        for (const QImage &image : images) {
            const QColor seen = ink(image);
            QVERIFY2(qAbs(seen.red() - expected.red()) < 8 && qAbs(seen.blue() - expected.blue()) < 8,
                     qPrintable(seen.name() + u" for " + expected.name() + u" in " + QLatin1StringView(appearance)));
        }
    }
}

void TestMainWindow::welcomeFollowsAnAppearanceSwitch()
{
#ifndef VESK_APP_PALETTES
    QSKIP("the system's own appearance switches the palettes");
#endif
    // The welcome screen is styled from the palette it was built with; a
    // switch while it shows must restyle it, both ways.
    QTemporaryDir empty;
    VeskApplication app(empty.path() + u"/prompts");
    app.preferences()->setAppearance(QStringLiteral("light"));
    app.mainWindow()->resize(920, 640);
    app.mainWindow()->show();
    QVERIFY(QTest::qWaitForWindowExposed(app.mainWindow()));
    const auto background = [&] {
        QWidget *welcome = app.mainWindow()->findChild<QWidget *>(QStringLiteral("welcome"));
        const QPoint corner = welcome->mapTo(app.mainWindow(), welcome->rect().bottomLeft() + QPoint(8, -8));
        return app.mainWindow()->grab().toImage().pixelColor(corner).lightnessF();
    };
    QVERIFY(background() > 0.5);
    app.preferences()->setAppearance(QStringLiteral("dark"));
    QVERIFY2(background() < 0.5, "the welcome screen stayed light in the dark appearance");
    app.preferences()->setAppearance(QStringLiteral("light"));
    QVERIFY(background() > 0.5);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
