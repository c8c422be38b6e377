#pragma once

#include <QPersistentModelIndex>
#include <QTreeView>

class SidebarModel;

// The tree under the sidebar: sections as top-level rows, prompts beneath.
// Prompt rows and headers are drag sources and drop targets; the row a drag
// hovers over is the drop target, which the delegate highlights.
class SidebarTree : public QTreeView
{
    Q_OBJECT

public:
    explicit SidebarTree(QWidget *parent = nullptr);

    // Lays out pending rows now, so that a scroll position can be restored.
    void layOutNow() { executeDelayedItemsLayout(); }

    // The row or header an accepted drag hovers over; invalid when none.
    QModelIndex dropTarget() const { return m_dropTarget; }
    void setDropTarget(const QModelIndex &index);

    // What travels under the pointer while `index` is dragged.
    QPixmap dragPixmap(const QModelIndex &index) const;

Q_SIGNALS:
    // Right-click, the Menu key or Shift+F10: `index` is the row clicked, or
    // the current row for the keyboard.
    void contextMenuRequested(const QModelIndex &index, const QPoint &globalPos, bool fromKeyboard);
    // Delete (⌘⌫ on macOS) with the tree focused.
    void deleteRequested();

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event = nullptr) const override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    SidebarModel *sidebarModel() const;
    void dragFrom(const QModelIndex &index);
    void updateDropTarget(QDropEvent *event);
    void openMenuFromKeyboard();

    QPersistentModelIndex m_pressedIndex;
    QPoint m_pressPosition;
    QPersistentModelIndex m_dropTarget;
};
