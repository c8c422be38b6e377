#include "SidebarTree.h"

#include "SidebarModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

SidebarTree::SidebarTree(QWidget *parent)
    : QTreeView(parent)
{
    setAccessibleName(QStringLiteral("Prompts"));
    // Qt's own drag start keeps a multi-selection when a selected row is
    // pressed; the drag itself is ours (mouseMoveEvent).
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(false); // the delegate draws the Part's highlight

    // The Menu key arrives as a keyboard context-menu event; Shift+F10 does not.
    auto *menuKey = new QAction(this);
    menuKey->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10));
    menuKey->setShortcutContext(Qt::WidgetShortcut);
    connect(menuKey, &QAction::triggered, this, &SidebarTree::openMenuFromKeyboard);
    addAction(menuKey);

    auto *trash = new QAction(this);
    QList<QKeySequence> trashKeys{QKeySequence(Qt::Key_Delete)};
    if (QGuiApplication::platformName() == u"cocoa")
        trashKeys.append(QKeySequence(Qt::CTRL | Qt::Key_Backspace)); // ⌘⌫
    trash->setShortcuts(trashKeys);
    trash->setShortcutContext(Qt::WidgetShortcut);
    connect(trash, &QAction::triggered, this, &SidebarTree::deleteRequested);
    addAction(trash);
}

SidebarModel *SidebarTree::sidebarModel() const
{
    return qobject_cast<SidebarModel *>(model());
}

void SidebarTree::setDropTarget(const QModelIndex &index)
{
    if (m_dropTarget == index)
        return;
    if (m_dropTarget.isValid())
        viewport()->update(visualRect(m_dropTarget));
    m_dropTarget = index;
    if (index.isValid())
        viewport()->update(visualRect(index));
}

QItemSelectionModel::SelectionFlags SidebarTree::selectionCommand(const QModelIndex &index,
                                                                  const QEvent *event) const
{
    // Pressing or dragging a header, and right-clicking, leave the prompt
    // selection alone; the menu then acts on the clicked row if unselected.
    if (index.isValid() && SidebarModel::kind(index) != SidebarModel::RowKind::Prompt)
        return QItemSelectionModel::NoUpdate;
    if (event && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease)
        && static_cast<const QMouseEvent *>(event)->button() == Qt::RightButton)
        return QItemSelectionModel::NoUpdate;
    return QTreeView::selectionCommand(index, event);
}

void SidebarTree::mousePressEvent(QMouseEvent *event)
{
    QTreeView::mousePressEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    const bool draggable = index.isValid() && (model()->flags(index) & Qt::ItemIsDragEnabled);
    m_pressedIndex = event->button() == Qt::LeftButton && draggable ? index : QModelIndex();
    m_pressPosition = event->position().toPoint();
}

void SidebarTree::mouseMoveEvent(QMouseEvent *event)
{
    if ((event->buttons() & Qt::LeftButton) && m_pressedIndex.isValid()
        && (event->position().toPoint() - m_pressPosition).manhattanLength() > QApplication::startDragDistance()) {
        const QModelIndex pressed = m_pressedIndex;
        m_pressedIndex = QModelIndex();
        dragFrom(pressed);
        setState(NoState);
        stopAutoScroll();
        return;
    }
    QTreeView::mouseMoveEvent(event);
}

void SidebarTree::startDrag(Qt::DropActions)
{
    // Never Qt's drag: after a move it would remove the dragged rows from the
    // model. Drags start from a pressed row or header, in mouseMoveEvent.
}

void SidebarTree::dragFrom(const QModelIndex &index)
{
    QMimeData *data = model()->mimeData({index});
    if (!data)
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    const QPixmap pixmap = dragPixmap(index);
    drag->setPixmap(pixmap);
    // Below and right of the pointer, clear of the row it points at.
    drag->setHotSpot(QPoint(-14, -10));
    // The result is deliberately unused: only the library's reload moves rows.
    drag->exec(Qt::MoveAction, Qt::MoveAction);
}

QPixmap SidebarTree::dragPixmap(const QModelIndex &index) const
{
    const bool header = SidebarModel::kind(index) == SidebarModel::RowKind::Header;
    const SidebarModel::DragLabel label = sidebarModel()->dragLabel(index);
    const QFont font = Theme::font(header ? 12 : 13);
    const QFontMetrics metrics(font);
    const QString text = metrics.elidedText(label.text, Qt::ElideRight, 260);
    const int iconSize = 14;
    const int iconGap = header ? 0 : iconSize + 6;
    const QMargins padding = header ? QMargins(6, 3, 6, 3) : QMargins(8, 4, 8, 4);
    const QSize size(padding.left() + iconGap + metrics.horizontalAdvance(text) + padding.right(),
                     padding.top() + std::max(metrics.height(), header ? 0 : iconSize) + padding.bottom());

    const qreal ratio = devicePixelRatioF();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    // A thin, translucent plate, as the platform's materials look.
    QColor plate = palette().color(QPalette::Window);
    plate.setAlphaF(0.92);
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(0.5, 0.5), QSizeF(size) - QSizeF(1, 1)), 4, 4);
    painter.fillPath(path, plate);
    QColor edge = Theme::tertiaryText(palette());
    edge.setAlphaF(0.35);
    painter.setPen(edge);
    painter.drawPath(path);

    int x = padding.left();
    if (!header) {
        painter.drawPixmap(x, (size.height() - iconSize) / 2,
                           Icons::pixmap(label.symbol, Theme::secondaryText(palette()), iconSize, ratio));
        x += iconGap;
    }
    painter.setFont(font);
    painter.setPen(Theme::primaryText(palette()));
    painter.drawText(QRect(x, 0, size.width() - x, size.height()), Qt::AlignVCenter | Qt::AlignLeft, text);
    return pixmap;
}

void SidebarTree::updateDropTarget(QDropEvent *event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && model()->canDropMimeData(event->mimeData(), Qt::MoveAction, -1, -1, index)) {
        setDropTarget(index);
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        setDropTarget({});
        event->ignore();
    }
}

void SidebarTree::dragEnterEvent(QDragEnterEvent *event)
{
    if (!event->mimeData() || !DragPayloads::carriesAny(*event->mimeData(), model()->mimeTypes())) {
        event->ignore();
        return;
    }
    // Accepted anywhere, so that moves over rows that do not take it follow.
    setState(DraggingState);
    updateDropTarget(event);
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void SidebarTree::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event); // scrolls near the edges
    updateDropTarget(event);
}

void SidebarTree::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTreeView::dragLeaveEvent(event);
    setDropTarget({});
}

void SidebarTree::dropEvent(QDropEvent *event)
{
    const QModelIndex target = indexAt(event->position().toPoint());
    setDropTarget({}); // the highlight goes before the drop takes effect
    stopAutoScroll();
    setState(NoState);
    if (target.isValid() && model()->dropMimeData(event->mimeData(), Qt::MoveAction, -1, -1, target)) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void SidebarTree::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        openMenuFromKeyboard();
    } else {
        Q_EMIT contextMenuRequested(indexAt(event->pos()), event->globalPos(), false);
    }
    event->accept();
}

void SidebarTree::openMenuFromKeyboard()
{
    // Under the current row, or at the top of the list without one.
    const QModelIndex current = currentIndex();
    const QRect rect = current.isValid() ? visualRect(current) : QRect();
    const QPoint at = rect.isValid() ? QPoint(rect.left() + 24, rect.bottom()) : QPoint(24, 8);
    Q_EMIT contextMenuRequested(current, viewport()->mapToGlobal(at), true);
}
