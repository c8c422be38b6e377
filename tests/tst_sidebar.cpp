#include "AppState.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "ui/sidebar/SidebarModel.h"
#include "platform/SystemAppearance.h"
#include "ui/sidebar/SidebarView.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

using TestFiles::at;
using TestFiles::write;
using Kind = SidebarModel::RowKind;

class TestSidebar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sectionsAndRows();
    void emptyLibraryShowsOnlyPinned();
    void reloadsKeepSelectionExpansionAndScroll();
    void selectionIsAppStateAndFlushesFirst();
    void searchHeader();
    void foldingNeverChangesTheSelection();
    void placeholderRowsAreReadable();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    QStringList rowTexts(const QModelIndex &parent) const;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    const QAbstractItemModel *m_model = nullptr;
};

void TestSidebar::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_library.reset();
    m_state.reset();
}

QStringList TestSidebar::rowTexts(const QModelIndex &parent) const
{
    QStringList texts;
    const QAbstractItemModel *model = m_model;
    for (int row = 0; row < model->rowCount(parent); ++row)
        texts.append(model->index(row, 0, parent).data().toString());
    return texts;
}

void TestSidebar::sectionsAndRows()
{
    const QString body121 = QString(121, u'x');
    write(path("Inbox/long.md"), ("---\ntitle: Long\n---\n\n" + body121).toUtf8(), at(9));
    write(path("Inbox/exact.md"), ("---\ntitle:\n---\n" + QString(120, u'y')).toUtf8(), at(8));
    write(path("Inbox/blank.md"), "---\ntitle: \n---\n\n", at(7));
    write(path("Work/pinned.md"), "---\ntitle: P\npinned: true\n---\n\nline one\nline two {{a}} {{b}} {{a}}", at(6));
    QVERIFY(QDir().mkpath(path("Zeta")));
    write(path(".vesk-sections-order"), "Work\n@pinned\n");
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarModel model(m_state.get());
    m_model = &model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    QCOMPARE(rowTexts(QModelIndex()), QStringList({"Work", "Pinned", "Recent Prompts", "Zeta"}));
    QCOMPARE(rowTexts(model.sectionIndex(QStringLiteral("Work"))), QStringList{"Empty"}); // its prompt is pinned
    QCOMPARE(SidebarModel::kind(model.index(0, 0, model.sectionIndex(QStringLiteral("Work")))), Kind::Empty);
    QVERIFY(!(model.flags(model.index(0, 0, model.sectionIndex(QStringLiteral("Work")))) & Qt::ItemIsSelectable));
    QCOMPARE(rowTexts(model.sectionIndex(QStringLiteral("Inbox"))),
             QStringList({QString(120, u'x') + u'…', QString(120, u'y'), "New prompt"}));

    const QModelIndex pinned = model.promptIndex(QStringLiteral("Work/pinned.md"));
    QCOMPARE(pinned.parent(), model.sectionIndex(QStringLiteral("@pinned")));
    QCOMPARE(pinned.data(SidebarModel::PreviewRole).toString(), u"line one line two {{a}} {{b}} {{a}}");
    QCOMPARE(pinned.data(SidebarModel::ProjectLineRole).toString(), u"Located in ‘Work’");
    QCOMPARE(pinned.data(SidebarModel::VariableCountRole).toInt(), 2);
    const QModelIndex blank = model.promptIndex(QStringLiteral("Inbox/blank.md"));
    QVERIFY(blank.data(SidebarModel::PreviewRole).toString().isEmpty());
    QVERIFY(blank.data(SidebarModel::TitleRole).toString().isEmpty());
    QVERIFY(blank.data(SidebarModel::ProjectLineRole).isNull()); // project rows do not name their project

    // Changes flow through the tester's checks: a new prompt, a removed one, a rename.
    write(path("Zeta/new.md"), "new", at(20));
    m_library->reload();
    QCOMPARE(rowTexts(model.sectionIndex(QStringLiteral("Zeta"))), QStringList{"new"});
    m_library->renameProject(*m_library->project(QStringLiteral("Zeta")), QStringLiteral("Alpha"));
    QCOMPARE(rowTexts(QModelIndex()), QStringList({"Work", "Pinned", "Recent Prompts", "Alpha"}));
}

void TestSidebar::emptyLibraryShowsOnlyPinned()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    QVERIFY(QDir(m_dir->path()).removeRecursively());
    m_library->reload();
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    SidebarModel *model = view.model();
    QCOMPARE(model->rowCount(), 1);
    const QModelIndex pinned = model->index(0, 0);
    QCOMPARE(pinned.data().toString(), u"Pinned");
    QVERIFY(view.tree()->isExpanded(pinned));
    QCOMPARE(model->index(0, 0, pinned).data().toString(), u"No pinned prompts");
}

void TestSidebar::reloadsKeepSelectionExpansionAndScroll()
{
    for (int i = 0; i < 60; ++i)
        write(path(QStringLiteral("Work/p%1.md").arg(i, 2, 10, QLatin1Char('0'))), "body", at(100 - i));
    for (int i = 0; i < 30; ++i)
        write(path(QStringLiteral("Early/e%1.md").arg(i, 2, 10, QLatin1Char('0'))), "early", at(200 - i));
    write(path("Inbox/a.md"), "a", at(0));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    view.resize(300, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QAbstractItemModelTester tester(view.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);

    view.setSectionExpanded(QStringLiteral("Inbox"), false);
    m_state->setSelectedPromptIDs({QStringLiteral("Work/p30.md")});
    view.tree()->scrollTo(view.model()->promptIndex(QStringLiteral("Work/p30.md")));
    QCoreApplication::processEvents();
    QVERIFY(view.tree()->verticalScrollBar()->value() > 0);
    const auto selectedIds = [&] {
        QStringList ids;
        for (const QModelIndex &index : view.tree()->selectionModel()->selectedIndexes())
            ids.append(index.data(SidebarModel::PromptIdRole).toString());
        return ids;
    };

    // An autosave moves the saved prompt to the top of its section (a
    // reorder): the selected row stays where it was on screen.
    const auto rowTop = [&](const char *id) {
        return view.tree()->visualRect(view.model()->promptIndex(QString::fromUtf8(id))).top();
    };
    const int top = rowTop("Work/p30.md");
    QVERIFY(top >= 0 && top < view.tree()->viewport()->height());
    Prompt edited = *m_library->prompt(QStringLiteral("Work/p30.md"));
    edited.body = QStringLiteral("edited");
    m_library->save(edited);
    QCOMPARE(view.model()->promptIndex(QStringLiteral("Work/p30.md")).row(), 0);
    QCOMPARE(selectedIds(), QStringList{"Work/p30.md"});
    QCOMPARE(rowTop("Work/p30.md"), top);

    // Scrolled away from the selected row, the list stays where it was.
    view.tree()->verticalScrollBar()->setValue(view.tree()->verticalScrollBar()->maximum());
    const int scroll = view.tree()->verticalScrollBar()->value();
    QVERIFY(rowTop("Work/p30.md") < 0);
    edited = *m_library->prompt(QStringLiteral("Work/p29.md"));
    edited.body = QStringLiteral("edited too");
    m_library->save(edited);
    QCOMPARE(view.model()->promptIndex(QStringLiteral("Work/p30.md")).row(), 1);
    QCOMPARE(view.tree()->verticalScrollBar()->value(), scroll);

    // A new file (a reset): expansion, selection and scroll all come back.
    write(path("Work/zz.md"), "z", at(-50));
    m_library->reload();
    QCoreApplication::processEvents();
    QCOMPARE(selectedIds(), QStringList{"Work/p30.md"});
    QVERIFY(!view.tree()->isExpanded(view.model()->sectionIndex(QStringLiteral("Inbox"))));
    QVERIFY(view.tree()->isExpanded(view.model()->sectionIndex(QStringLiteral("Work"))));
    QCOMPARE(view.tree()->verticalScrollBar()->value(), scroll);
}

void TestSidebar::selectionIsAppStateAndFlushesFirst()
{
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n", at(2));
    write(path("Inbox/b.md"), "---\ntitle: B\n---\n", at(1));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    view.show();

    Prompt a = *m_library->prompt(QStringLiteral("Inbox/a.md"));
    a.body = QStringLiteral("\npending edit");
    m_state->scheduleSave(a);
    const QModelIndex b = view.model()->promptIndex(QStringLiteral("Inbox/b.md"));
    view.tree()->selectionModel()->select(b, QItemSelectionModel::ClearAndSelect);
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Inbox/b.md")});
    QVERIFY(!m_state->hasPendingSave());
    QCOMPARE(TestFiles::read(path("Inbox/a.md")), "---\ntitle: A\n---\n\npending edit");

    // Headers toggle their section and never join the selection.
    const QModelIndex header = view.model()->sectionIndex(QStringLiteral("Inbox"));
    QVERIFY(!(view.model()->flags(header) & Qt::ItemIsSelectable));
    QTest::mouseClick(view.tree()->viewport(), Qt::LeftButton, {}, view.tree()->visualRect(header).center());
    QVERIFY(!view.tree()->isExpanded(header));
    QVERIFY(!view.isSectionExpanded(QStringLiteral("Inbox")));

    // The state's selection shows in the tree.
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/b.md")});
    QCOMPARE(view.tree()->selectionModel()->selectedIndexes().size(), 2);
}

void TestSidebar::searchHeader()
{
    write(path("Inbox/a.md"), "apple", at(2));
    write(path("Inbox/b.md"), "apricot", at(1));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    view.show();
    QVERIFY(view.searchHeader()->isHidden());

    const auto summary = [&] { return view.searchHeader()->findChild<QLabel *>()->text(); };
    m_state->setSearchQuery(QStringLiteral("ap"));
    QVERIFY(view.searchHeader()->isVisible());
    QCOMPARE(summary(), u"2 results for “ap”");
    m_state->setSearchQuery(QStringLiteral("apple"));
    QCOMPARE(summary(), u"1 result for “apple”");
    m_state->setSearchQuery(QStringLiteral("kiwi"));
    QCOMPARE(summary(), u"No results for “kiwi”");
    view.searchHeader()->findChild<QPushButton *>()->click();
    QCOMPARE(m_state->searchQuery(), QString());
    QVERIFY(view.searchHeader()->isHidden());
}

void TestSidebar::foldingNeverChangesTheSelection()
{
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\napple", at(2));
    write(path("Work/b.md"), "---\ntitle: B\n---\n\nbanana", at(1));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    view.resize(300, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    SidebarTree *tree = view.tree();
    const QSet<QString> selected{QStringLiteral("Inbox/a.md")};
    m_state->setSelectedPromptIDs(selected);
    const QModelIndex inbox = view.model()->sectionIndex(QStringLiteral("Inbox"));
    const QModelIndex work = view.model()->sectionIndex(QStringLiteral("Work"));

    // Clicks on a header's chevron or title fold it; the selection stays.
    const QRect inboxRect = tree->visualRect(inbox);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, QPoint(inboxRect.right() - 16, inboxRect.center().y()));
    QVERIFY(!view.isSectionExpanded(QStringLiteral("Inbox")));
    QCOMPARE(m_state->selectedPromptIDs(), selected);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(inbox).center());
    QVERIFY(view.isSectionExpanded(QStringLiteral("Inbox")));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(work).center());
    QVERIFY(!view.isSectionExpanded(QStringLiteral("Work")));
    QCOMPARE(m_state->selectedPromptIDs(), selected);

    // Right and Left unfold and fold the current section; Left on a prompt
    // goes to its header.
    tree->setFocus();
    tree->setCurrentIndex(work);
    QTest::keyClick(tree, Qt::Key_Right);
    QVERIFY(view.isSectionExpanded(QStringLiteral("Work")));
    QTest::keyClick(tree, Qt::Key_Left);
    QVERIFY(!view.isSectionExpanded(QStringLiteral("Work")));
    tree->selectionModel()->setCurrentIndex(view.model()->promptIndex(QStringLiteral("Inbox/a.md")),
                                            QItemSelectionModel::NoUpdate);
    QTest::keyClick(tree, Qt::Key_Left);
    QCOMPARE(tree->currentIndex(), inbox);
    QTest::keyClick(tree, Qt::Key_Left);
    QVERIFY(!view.isSectionExpanded(QStringLiteral("Inbox")));
    QCOMPARE(m_state->selectedPromptIDs(), selected);

    // The current header shows that the list has the focus.
    const QImage focused = tree->viewport()->grab(tree->visualRect(inbox)).toImage();
    tree->clearFocus();
    const QImage unfocused = tree->viewport()->grab(tree->visualRect(inbox)).toImage();
    QVERIFY(focused != unfocused);

    // Copy on a header copies nothing (no section title on the clipboard).
    tree->setFocus();
    QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
    QTest::keySequence(tree, QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched");
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

void TestSidebar::placeholderRowsAreReadable()
{
#ifndef VESK_APP_PALETTES
    QSKIP("the system's own palettes");
#else
    QVERIFY(QDir().mkpath(path("Ideas")));
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    SidebarView view(m_state.get());
    view.resize(300, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    for (const auto scheme : {SystemAppearance::Scheme::Light, SystemAppearance::Scheme::Dark}) {
        SystemAppearance::apply(scheme);
        QCoreApplication::processEvents();
        // "No pinned prompts", "Press … to add a prompt", "Empty", as painted:
        // the text's strongest pixel against the row's background.
        for (int section = 0; section < view.model()->rowCount(); ++section) {
            const QModelIndex row = view.model()->index(0, 0, view.model()->index(section, 0));
            QCOMPARE(SidebarModel::kind(row), Kind::Empty);
            QRect rect = view.tree()->visualRect(row);
            rect.moveTopLeft(view.tree()->viewport()->mapTo(&view, rect.topLeft()));
            const QImage image = view.grab(rect).toImage();
            const QColor background = image.pixelColor(image.width() - 2, image.height() / 2);
            double best = 1;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    best = std::max(best, contrast(background, image.pixelColor(x, y)));
            }
            QVERIFY2(best >= 3.0, qPrintable(row.data().toString() + u": " + QString::number(best)));
        }
    }
    SystemAppearance::apply(SystemAppearance::Scheme::Light);
#endif
}

QTEST_MAIN(TestSidebar)
#include "tst_sidebar.moc"
