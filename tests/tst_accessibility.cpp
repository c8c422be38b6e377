// What a screen reader gets: every control a user can reach has a name it
// can read aloud, and a prompt row says which prompt it is.
#include "AppState.h"
#include "FakeAccessibility.h"
#include "TestFiles.h"
#include "ui/detail/PromptDetailView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/SettingsWindow.h"
#include "ui/shell/VeskApplication.h"
#include "ui/sidebar/SidebarTree.h"
#include "ui/sidebar/SidebarView.h"
#include "ui/theme/Theme.h"
#include "platform/SystemAppearance.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTextEdit>

#include <cmath>

using namespace Qt::StringLiterals;
using TestFiles::at;
using TestFiles::write;

class TestAccessibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void everyControlHasAName();
    void promptRowsSayWhichPrompt();
    void quietTextStillReads();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    // Interactive widgets of `root` (shown ones only) whose accessible name is empty.
    static QStringList unnamedControls(QWidget *root);

    QTemporaryDir m_settingsDir;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<FakeAccessibility> m_accessibility;
    std::unique_ptr<VeskApplication> m_app;
};

void TestAccessibility::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("VeskA11yTests"));
    QCoreApplication::setApplicationName(QStringLiteral("VeskA11yTests"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
}

void TestAccessibility::init()
{
    QSettings().clear();
    m_accessibility = std::make_unique<FakeAccessibility>();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("prompts/Inbox/a.md"), "---\ntitle: Alpha\n---\n\nHello {{name}}, welcome.", at(3));
    write(path("prompts/Work/b.md"), "---\ntitle: Beta\npinned: true\n---\n\nbanana bread", at(2));
    m_app = std::make_unique<VeskApplication>(path("prompts"));
    m_app->mainWindow()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_app->mainWindow()));
}

void TestAccessibility::cleanup()
{
    m_app.reset();
    m_accessibility.reset();
}

QStringList TestAccessibility::unnamedControls(QWidget *root)
{
    QStringList unnamed;
    QList<QWidget *> widgets = root->findChildren<QWidget *>();
    widgets.prepend(root);
    for (QWidget *widget : std::as_const(widgets)) {
        if (!widget->isVisible())
            continue;
        const bool interactive = qobject_cast<QAbstractButton *>(widget) || qobject_cast<QLineEdit *>(widget)
            || qobject_cast<QPlainTextEdit *>(widget) || qobject_cast<QTextEdit *>(widget)
            || qobject_cast<QAbstractItemView *>(widget) || qobject_cast<QComboBox *>(widget) || widget->isWindow();
        if (!interactive)
            continue;
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(widget);
        if (!face || face->text(QAccessible::Name).trimmed().isEmpty())
            unnamed << QString::fromLatin1(widget->metaObject()->className()) + u' ' + widget->objectName();
    }
    return unnamed;
}

void TestAccessibility::everyControlHasAName()
{
    MainWindow *window = m_app->mainWindow();
    QVERIFY2(unnamedControls(window).isEmpty(), qPrintable(unnamedControls(window).join(u", ")));

    // With a prompt open in the editor.
    m_app->state()->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QTRY_VERIFY(window->promptDetail()->isVisible());
    QVERIFY2(unnamedControls(window).isEmpty(), qPrintable(unnamedControls(window).join(u", ")));

    // Searching.
    m_app->state()->setSearchQuery(QStringLiteral("a"));
    QVERIFY2(unnamedControls(window).isEmpty(), qPrintable(unnamedControls(window).join(u", ")));

    // The sidebar's tree has no column header to announce.
    QAccessibleInterface *tree = QAccessible::queryAccessibleInterface(window->findChild<SidebarTree *>());
    QVERIFY(tree);
    for (int i = 0; i < tree->childCount(); ++i) {
        QAccessibleInterface *child = tree->child(i);
        QVERIFY(child);
        const QString name = child->text(QAccessible::Name);
        QVERIFY2(child->role() != QAccessible::ColumnHeader || (!name.isEmpty() && name != u"1"),
                 qPrintable(name));
    }

    // Help.
    QAction *help = nullptr;
    for (QAction *action : window->findChildren<QAction *>())
        if (action->text() == u"Vesk Help")
            help = action;
    QVERIFY(help);
    help->trigger();
    QWidget *helpWindow = nullptr;
    QTRY_VERIFY((helpWindow = [] {
        for (QWidget *top : QApplication::topLevelWidgets())
            if (top->objectName() == u"helpWindow" && top->isVisible())
                return top;
        return static_cast<QWidget *>(nullptr);
    }()));
    QVERIFY2(unnamedControls(helpWindow).isEmpty(), qPrintable(unnamedControls(helpWindow).join(u", ")));
    helpWindow->close();

    // Settings.
    QWidget *settings = m_app->settingsWindow();
    settings->show();
    QVERIFY(QTest::qWaitForWindowExposed(settings));
    QVERIFY2(unnamedControls(settings).isEmpty(), qPrintable(unnamedControls(settings).join(u", ")));
}

void TestAccessibility::promptRowsSayWhichPrompt()
{
    SidebarTree *tree = m_app->mainWindow()->findChild<SidebarTree *>();
    QAbstractItemModel *model = tree->model();
    QStringList spoken;
    for (int section = 0; section < model->rowCount(); ++section) {
        const QModelIndex header = model->index(section, 0);
        for (int row = 0; row < model->rowCount(header); ++row)
            spoken << model->index(row, 0, header).data(Qt::AccessibleTextRole).toString();
    }
    // Title, preview and project, in the order a listener wants them.
    QVERIFY2(spoken.contains(u"Alpha, Hello {{name}}, welcome., in Recent Prompts"), qPrintable(spoken.join(u" | ")));
    QVERIFY2(spoken.contains(u"Beta, banana bread, in Work"), qPrintable(spoken.join(u" | ")));
}

namespace {

double luminance(const QColor &c)
{
    const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace

void TestAccessibility::quietTextStillReads()
{
#ifndef VESK_APP_PALETTES
    QSKIP("the system's own palettes");
#else
    // Footnotes, "Located in" lines, previews and counts are body text:
    // 4.5:1 on the window and on text fields, in both schemes.
    for (const auto scheme : {SystemAppearance::Scheme::Light, SystemAppearance::Scheme::Dark}) {
        SystemAppearance::apply(scheme);
        const QPalette palette = QApplication::palette();
        for (const QColor &text : {Theme::secondaryText(palette), Theme::tertiaryText(palette)}) {
            for (const QColor &under : {palette.color(QPalette::Window), palette.color(QPalette::Base)}) {
                const double ratio = contrast(text, under);
                QVERIFY2(ratio >= 4.5, qPrintable(u"%1 on %2: %3:1"_s.arg(text.name(), under.name()).arg(ratio, 0, 'f', 2)));
            }
        }
    }
    SystemAppearance::apply(SystemAppearance::Scheme::Light);
#endif
}

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
