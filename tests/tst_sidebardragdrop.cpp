// Dragging and dropping in the sidebar: the payloads, the model's MIME path
// that the tree's drag and drop events use, the hover highlight, and the
// headers that never touch the prompt selection.

#include "AppIdentity.h"
#include "AppState.h"
#include "PromptLibrary.h"
#include "TestFiles.h"
#include "VeskDrag.h"
#include "ui/sidebar/SidebarModel.h"
#include "ui/sidebar/SidebarView.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QMimeData>
#include <QPainter>

using TestFiles::at;
using TestFiles::read;
using TestFiles::write;
using Kind = VeskDrag::Kind;

class TestSidebarDragDrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void payloadTypesAndJson();
    void undecodablePayloadsAreSkipped();
    void modelEncodesRowsAndHeaders();
    void dragLabels();
    void rowsTakePromptDragsHeadersTakeBoth();
    void dropsOnRowsAndHeadersThroughTheModel();
    void dropsThatDecodeNothingChangeNothing();
    void hoverHighlightIsSetAndCleared();
    void highlightIsPainted();
    void headersAndRightClicksKeepTheSelection();

private:
    QString path(const QString &relative) const { return m_dir->path() + u'/' + relative; }
    void open();
    std::unique_ptr<QMimeData> drag(const QModelIndex &index) const
    {
        return std::unique_ptr<QMimeData>(m_model->mimeData({index}));
    }
    QModelIndex row(const char *id) const { return m_model->promptIndex(QString::fromUtf8(id)); }
    QModelIndex header(const char *id) const { return m_model->sectionIndex(QString::fromUtf8(id)); }
    QStringList rowIds(const char *sectionId) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PromptLibrary> m_library;
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<SidebarView> m_view;
    SidebarModel *m_model = nullptr;
};

void TestSidebarDragDrop::init()
{
    m_view.reset();
    m_dir = std::make_unique<QTemporaryDir>();
    write(path("Inbox/a.md"), "---\ntitle: A\n---\n\nalpha", at(50));
    write(path("Inbox/b.md"), "---\ntitle: \n---\n\nbee\nbody", at(40));
    write(path("Inbox/c.md"), "---\ntitle: \n---\n\n", at(30));
    write(path("Work/w1.md"), "---\ntitle: W1\n---\n\none", at(20));
    write(path("Work/w2.md"), "---\ntitle: W2\n---\n\ntwo", at(10));
    write(path("Home/p1.md"), "---\ntitle: P1\npinned: true\n---\n\npinned", at(5));
    QVERIFY(QDir().mkpath(path("Ideas")));
}

void TestSidebarDragDrop::open()
{
    m_library = std::make_unique<PromptLibrary>(QUrl::fromLocalFile(m_dir->path()));
    m_state = std::make_unique<AppState>(m_library.get());
    m_view = std::make_unique<SidebarView>(m_state.get());
    m_model = m_view->model();
}

QStringList TestSidebarDragDrop::rowIds(const char *sectionId) const
{
    QStringList ids;
    const QModelIndex section = header(sectionId);
    for (int i = 0; i < m_model->rowCount(section); ++i)
        ids.append(m_model->index(i, 0, section).data(SidebarModel::PromptIdRole).toString());
    return ids;
}

void TestSidebarDragDrop::payloadTypesAndJson()
{
    // Both types carry the app's one identifier.
    QCOMPARE(AppIdentity::appId, u"io.vesk.Vesk");
    QCOMPARE(DragPayloads::promptDragType(), u"io.vesk.Vesk.prompt-drag");
    QCOMPARE(DragPayloads::sectionDragType(), u"io.vesk.Vesk.section-drag");
    QCOMPARE(DragPayloads::encodePrompts({"Inbox/a.md", "Work/x y.md"}), R"({"ids":["Inbox/a.md","Work/x y.md"]})");
    QCOMPARE(DragPayloads::encodeSection(QStringLiteral("@pinned")), R"({"id":"@pinned"})");

    // Two prompts in one drag are one decoded drag, not two.
    std::unique_ptr<QMimeData> prompts(DragPayloads::promptMimeData({"Inbox/a.md", "Inbox/b.md"}));
    const QList<VeskDrag> decoded =
        DragPayloads::decodeAll(*prompts, {DragPayloads::promptDragType(), DragPayloads::sectionDragType()});
    QCOMPARE(decoded, QList<VeskDrag>({{Kind::Prompts, {"Inbox/a.md", "Inbox/b.md"}}}));
    std::unique_ptr<QMimeData> section(DragPayloads::sectionMimeData(QStringLiteral("Work")));
    QCOMPARE(DragPayloads::decodeAll(*section, {DragPayloads::promptDragType(), DragPayloads::sectionDragType()}),
             QList<VeskDrag>({{Kind::Section, {"Work"}}}));
    // Only the accepted types are read.
    QVERIFY(DragPayloads::decodeAll(*section, {DragPayloads::promptDragType()}).isEmpty());
}

void TestSidebarDragDrop::undecodablePayloadsAreSkipped()
{
    const QString promptType = DragPayloads::promptDragType();
    const QString sectionType = DragPayloads::sectionDragType();
    QVERIFY(!DragPayloads::decode(promptType, R"({"id":"Inbox/a.md"})")); // no "ids"
    QVERIFY(!DragPayloads::decode(promptType, R"({"ids":"Inbox/a.md"})"));
    QVERIFY(!DragPayloads::decode(promptType, R"({"ids":["a", 3]})"));
    QVERIFY(!DragPayloads::decode(promptType, R"(["a"])"));
    QVERIFY(!DragPayloads::decode(promptType, "not json"));
    QVERIFY(!DragPayloads::decode(sectionType, R"({"id":7})"));
    QVERIFY(!DragPayloads::decode(sectionType, R"({"ids":["Work"]})"));
    QVERIFY(!DragPayloads::decode(QStringLiteral("text/plain"), R"({"ids":["a"]})"));
    // Extra members are ignored, an empty list is a list.
    QCOMPARE(DragPayloads::decode(promptType, R"({"ids":[],"more":1})"), VeskDrag({Kind::Prompts, {}}));

    QMimeData mixed;
    mixed.setData(promptType, "{broken");
    mixed.setData(sectionType, R"({"id":"Work"})");
    mixed.setText(QStringLiteral("Inbox/a.md"));
    QCOMPARE(DragPayloads::decodeAll(mixed, {promptType, sectionType}), QList<VeskDrag>({{Kind::Section, {"Work"}}}));
}

void TestSidebarDragDrop::modelEncodesRowsAndHeaders()
{
    open();
    QCOMPARE(m_model->mimeTypes(), QStringList({"io.vesk.Vesk.prompt-drag", "io.vesk.Vesk.section-drag"}));
    QCOMPARE(m_model->supportedDragActions(), Qt::MoveAction);

    std::unique_ptr<QMimeData> section = drag(header("Work"));
    QCOMPARE(section->formats(), QStringList{"io.vesk.Vesk.section-drag"});
    QCOMPARE(section->data(DragPayloads::sectionDragType()), R"({"id":"Work"})");
    QCOMPARE(drag(header("@pinned"))->data(DragPayloads::sectionDragType()), R"({"id":"@pinned"})");

    const auto idsOf = [&](const char *id) {
        return DragPayloads::decode(DragPayloads::promptDragType(),
                                    drag(row(id))->data(DragPayloads::promptDragType()))->payload;
    };
    // Nothing selected, or only this row: one id.
    QCOMPARE(idsOf("Inbox/a.md"), QStringList{"Inbox/a.md"});
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    QCOMPARE(idsOf("Inbox/a.md"), QStringList{"Inbox/a.md"});
    // A selected row among others drags them all, in the rows' order.
    m_state->setSelectedPromptIDs({QStringLiteral("Work/w2.md"), QStringLiteral("Inbox/a.md"),
                                   QStringLiteral("Home/p1.md")});
    QCOMPARE(idsOf("Inbox/a.md"), QStringList({"Home/p1.md", "Inbox/a.md", "Work/w2.md"}));
    // An unselected row drags only itself, whatever else is selected.
    QCOMPARE(idsOf("Inbox/b.md"), QStringList{"Inbox/b.md"});
    // The empty row has nothing to drag.
    QVERIFY(!m_model->mimeData({m_model->index(0, 0, header("Ideas"))}));
    QVERIFY(!(m_model->flags(m_model->index(0, 0, header("Ideas"))) & Qt::ItemIsDragEnabled));
}

void TestSidebarDragDrop::dragLabels()
{
    open();
    const auto label = [&](const QModelIndex &index) -> QString {
        const SidebarModel::DragLabel l = m_model->dragLabel(index);
        return l.symbol + u'|' + l.text;
    };
    QCOMPARE(label(row("Inbox/a.md")), u"doc.text|A");            // the title first
    QCOMPARE(label(row("Inbox/b.md")), u"doc.text|bee body");     // else the body on one line
    QCOMPARE(label(row("Inbox/c.md")), u"doc.text|Prompt");       // else "Prompt"
    QCOMPARE(label(header("Inbox")), u"|Recent Prompts");
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md"), QStringLiteral("Inbox/c.md")});
    QCOMPARE(label(row("Inbox/c.md")), u"doc.on.doc|2 prompts");
    QCOMPARE(label(row("Inbox/b.md")), u"doc.text|bee body");
    // The picture exists and shows something.
    QVERIFY(!m_view->tree()->dragPixmap(row("Inbox/c.md")).isNull());
    QVERIFY(!m_view->tree()->dragPixmap(header("Work")).isNull());
}

void TestSidebarDragDrop::rowsTakePromptDragsHeadersTakeBoth()
{
    open();
    std::unique_ptr<QMimeData> prompt = drag(row("Inbox/a.md"));
    std::unique_ptr<QMimeData> section = drag(header("Work"));
    QMimeData foreign;
    foreign.setText(QStringLiteral("Inbox/a.md"));
    const auto can = [&](const QMimeData *data, const QModelIndex &on) {
        return m_model->canDropMimeData(data, Qt::MoveAction, -1, -1, on);
    };
    for (const char *id : {"@pinned", "Inbox", "Work", "Ideas"}) {
        QVERIFY2(can(prompt.get(), header(id)), id);
        QVERIFY2(can(section.get(), header(id)), id);
        QVERIFY2(!can(&foreign, header(id)), id);
    }
    QVERIFY(can(prompt.get(), row("Work/w1.md")));
    QVERIFY(can(prompt.get(), row("Home/p1.md")));
    QVERIFY(!can(section.get(), row("Work/w1.md"))); // a section dropped on a row is ignored
    QVERIFY(!can(prompt.get(), m_model->index(0, 0, header("Ideas")))); // the placeholder row
    QVERIFY(!can(prompt.get(), QModelIndex()));
    QVERIFY(!can(nullptr, header("Work")));
    // Between rows: the drop is on the row below.
    QVERIFY(m_model->canDropMimeData(prompt.get(), Qt::MoveAction, 0, 0, header("Work")));
    QVERIFY(!m_model->canDropMimeData(section.get(), Qt::MoveAction, 0, 0, header("Work")));
    QVERIFY(!m_model->canDropMimeData(prompt.get(), Qt::MoveAction, 9, 0, header("Work")));
}

void TestSidebarDragDrop::dropsOnRowsAndHeadersThroughTheModel()
{
    write(path("Work/.vesk-order"), "w1.md\nw2.md\n");
    open();
    QAbstractItemModelTester tester(m_model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const auto drop = [&](const QModelIndex &from, const QModelIndex &on) {
        const std::unique_ptr<QMimeData> data = drag(from);
        return m_model->dropMimeData(data.get(), Qt::MoveAction, -1, -1, on);
    };

    // A prompt on a row of another project: moved there, before that row.
    QVERIFY(drop(row("Inbox/a.md"), row("Work/w2.md")));
    QCOMPARE(read(path("Work/.vesk-order")), "w1.md\na.md\nw2.md\n");
    QCOMPARE(rowIds("Work"), QStringList({"Work/w1.md", "Work/a.md", "Work/w2.md"}));
    QCOMPARE(rowIds("Inbox"), QStringList({"Inbox/b.md", "Inbox/c.md"}));

    // Between rows (row 0 of Work): the same as on w1's row.
    std::unique_ptr<QMimeData> w2 = drag(row("Work/w2.md"));
    QVERIFY(m_model->dropMimeData(w2.get(), Qt::MoveAction, 0, 0, header("Work")));
    QCOMPARE(rowIds("Work"), QStringList({"Work/w2.md", "Work/w1.md", "Work/a.md"}));

    // A prompt on "Pinned": pinned, listed there.
    QVERIFY(drop(row("Inbox/b.md"), header("@pinned")));
    QCOMPARE(read(path("Inbox/b.md")), "---\ntitle: \npinned: true\n---\n\nbee\nbody");
    QCOMPARE(rowIds("@pinned"), QStringList({"Inbox/b.md", "Home/p1.md"}));

    // A prompt on a project header: moved to its end and selected.
    QVERIFY(drop(row("Inbox/c.md"), header("Ideas")));
    QCOMPARE(rowIds("Ideas"), QStringList{"Ideas/c.md"});
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Ideas/c.md")});

    // A header on a header: that section moves above it.
    QVERIFY(drop(header("Ideas"), header("@pinned")));
    QCOMPARE(m_model->index(0, 0).data(SidebarModel::SectionIdRole).toString(), u"Ideas");
    QCOMPARE(read(path(".vesk-sections-order")), "Ideas\n@pinned\nInbox\nHome\nWork\n");

    // A drop never removes rows by itself: only the library's reload does.
    const int rows = m_model->rowCount(header("Work"));
    QVERIFY(!m_model->removeRows(0, 1, header("Work")));
    QCOMPARE(m_model->rowCount(header("Work")), rows);
}

void TestSidebarDragDrop::dropsThatDecodeNothingChangeNothing()
{
    open();
    QAbstractItemModelTester tester(m_model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QMimeData broken;
    broken.setData(DragPayloads::promptDragType(), R"({"id":"Inbox/a.md"})");
    // Accepted by its type, reported as done, and nothing changes.
    QVERIFY(m_model->canDropMimeData(&broken, Qt::MoveAction, -1, -1, header("Work")));
    QVERIFY(m_model->dropMimeData(&broken, Qt::MoveAction, -1, -1, header("Work")));
    QVERIFY(m_model->dropMimeData(&broken, Qt::MoveAction, -1, -1, row("Work/w1.md")));
    QVERIFY(QFile::exists(path("Inbox/a.md")));
    QVERIFY(!QFile::exists(path("Work/.vesk-order")));

    std::unique_ptr<QMimeData> section = drag(header("Work"));
    QVERIFY(!m_model->dropMimeData(section.get(), Qt::MoveAction, -1, -1, row("Inbox/a.md")));
    QVERIFY(!QFile::exists(path(".vesk-sections-order")));
    // A section dropped on its own header.
    QVERIFY(m_model->dropMimeData(section.get(), Qt::MoveAction, -1, -1, header("Work")));
    QVERIFY(!QFile::exists(path(".vesk-sections-order")));
}

void TestSidebarDragDrop::hoverHighlightIsSetAndCleared()
{
    open();
    m_view->resize(300, 600);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QAbstractItemModelTester tester(m_model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    SidebarTree *tree = m_view->tree();
    QWidget *viewport = tree->viewport();
    const auto centre = [&](const QModelIndex &index) { return tree->visualRect(index).center(); };

    std::unique_ptr<QMimeData> prompt = drag(row("Inbox/a.md"));
    QDragEnterEvent enter(centre(header("Work")), Qt::MoveAction, prompt.get(), Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &enter);
    QVERIFY(enter.isAccepted());
    QCOMPARE(tree->dropTarget(), header("Work"));

    QDragMoveEvent overRow(centre(row("Work/w2.md")), Qt::MoveAction, prompt.get(), Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &overRow);
    QVERIFY(overRow.isAccepted());
    QCOMPARE(overRow.dropAction(), Qt::MoveAction);
    QCOMPARE(tree->dropTarget(), row("Work/w2.md"));

    QDragMoveEvent overPlaceholder(centre(m_model->index(0, 0, header("Ideas"))), Qt::MoveAction, prompt.get(),
                                   Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &overPlaceholder);
    QVERIFY(!overPlaceholder.isAccepted());
    QVERIFY(!tree->dropTarget().isValid());

    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(viewport, &leave);
    QVERIFY(!tree->dropTarget().isValid());

    // A section drag lights headers, never rows.
    std::unique_ptr<QMimeData> section = drag(header("Home"));
    QDragEnterEvent sectionEnter(centre(row("Work/w1.md")), Qt::MoveAction, section.get(), Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &sectionEnter);
    QVERIFY(!tree->dropTarget().isValid());
    QDragMoveEvent sectionOverHeader(centre(header("Inbox")), Qt::MoveAction, section.get(), Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &sectionOverHeader);
    QCOMPARE(tree->dropTarget(), header("Inbox"));

    // The drop clears the highlight and takes effect.
    QDropEvent dropped(centre(header("Inbox")), Qt::MoveAction, section.get(), Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &dropped);
    QVERIFY(dropped.isAccepted());
    QVERIFY(!tree->dropTarget().isValid());
    QCOMPARE(read(path(".vesk-sections-order")), "@pinned\nHome\nInbox\nIdeas\nWork\n");

    // Foreign data is not taken at all.
    QMimeData text;
    text.setText(QStringLiteral("hello"));
    QDragEnterEvent foreign(centre(header("Work")), Qt::MoveAction, &text, Qt::LeftButton, {});
    QCoreApplication::sendEvent(viewport, &foreign);
    QVERIFY(!foreign.isAccepted());
    QVERIFY(!tree->dropTarget().isValid());
}

void TestSidebarDragDrop::highlightIsPainted()
{
    open();
    m_view->resize(300, 600);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    SidebarTree *tree = m_view->tree();
    const auto shot = [&](const QModelIndex &index) {
        QCoreApplication::processEvents();
        return tree->viewport()->grab(tree->visualRect(index)).toImage();
    };
    const QImage headerBefore = shot(header("Work"));
    const QImage rowBefore = shot(row("Work/w1.md"));

    tree->setDropTarget(header("Work"));
    const QImage headerTinted = shot(header("Work"));
    QVERIFY(headerTinted != headerBefore);
    QCOMPARE(shot(row("Work/w1.md")), rowBefore);

    tree->setDropTarget(row("Work/w1.md"));
    QCOMPARE(shot(header("Work")), headerBefore);
    const QImage rowLined = shot(row("Work/w1.md"));
    QVERIFY(rowLined != rowBefore);
    // The line runs along the row's top padding in the accent colour.
    const qreal ratio = rowLined.devicePixelRatio();
    const QColor line = rowLined.pixelColor(QPoint(int(120 * ratio), int(2 * ratio)));
    const QColor accent = m_view->palette().color(QPalette::Highlight);
    QVERIFY2(qAbs(line.hue() - accent.hue()) < 12 && line.saturation() > 60, qPrintable(line.name()));

    tree->setDropTarget({});
    QCOMPARE(shot(row("Work/w1.md")), rowBefore);
}

void TestSidebarDragDrop::headersAndRightClicksKeepTheSelection()
{
    open();
    m_view->resize(300, 600);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    SidebarTree *tree = m_view->tree();
    m_state->setSelectedPromptIDs({QStringLiteral("Inbox/a.md")});
    const QSet<QString> selected = m_state->selectedPromptIDs();

    // Clicking the header's chevron toggles the section.
    const QRect work = tree->visualRect(header("Work"));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, QPoint(work.right() - 18, work.center().y()));
    QVERIFY(!m_view->isSectionExpanded(QStringLiteral("Work")));
    QCOMPARE(m_state->selectedPromptIDs(), selected);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, QPoint(work.right() - 18, work.center().y()));
    QVERIFY(m_view->isSectionExpanded(QStringLiteral("Work")));
    QCOMPARE(m_state->selectedPromptIDs(), selected);

    // Pressing a header, as a drag starts, leaves the selection alone.
    QTest::mousePress(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(header("Home")).center());
    QCOMPARE(m_state->selectedPromptIDs(), selected);
    QTest::mouseRelease(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(header("Home")).center());

    // Right-clicking another row does not select it.
    QTest::mouseClick(tree->viewport(), Qt::RightButton, {}, tree->visualRect(row("Work/w1.md")).center());
    QCOMPARE(m_state->selectedPromptIDs(), selected);
    // A left click still does.
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(row("Work/w1.md")).center());
    QCOMPARE(m_state->selectedPromptIDs(), QSet<QString>{QStringLiteral("Work/w1.md")});
}

QTEST_MAIN(TestSidebarDragDrop)
#include "tst_sidebardragdrop.moc"
