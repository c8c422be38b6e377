#pragma once

#include <QStyledItemDelegate>

// Paints the sidebar's section headers, prompt rows and placeholder rows.
class SidebarDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // Whether a section's chevron points down; the view tells the delegate.
    std::function<bool(const QModelIndex &)> isExpanded;
    // Whether an accepted drag hovers over the row: a header is tinted, a
    // prompt row shows the line where the drop lands.
    std::function<bool(const QModelIndex &)> isDropTarget;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void paintHeader(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintPrompt(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintInsertionLine(QPainter *painter, const QStyleOptionViewItem &option) const;
};
