#include "SidebarDelegate.h"

#include "SidebarModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int horizontalMargin = 10;
constexpr int iconColumn = 22;
constexpr int headerHeight = 28;
constexpr int emptyHeight = 22;
constexpr int rowPadding = 5;

qreal ratio(const QPainter *painter)
{
    return painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
}

// The keyboard's place in the list, once the keyboard is in use there.
void paintFocusRing(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect)
{
    if (!(option.state & QStyle::State_HasFocus) || !(option.state & QStyle::State_KeyboardFocusChange))
        return;
    QPen pen(Theme::accent(option.palette), 1.5);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(rect).adjusted(0.75, 0.75, -0.75, -0.75), 6, 6);
}

} // namespace

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int width = option.rect.width();
    switch (SidebarModel::kind(index)) {
    case SidebarModel::RowKind::Header:
        return {width, headerHeight};
    case SidebarModel::RowKind::Empty:
        return {width, emptyHeight};
    case SidebarModel::RowKind::Prompt:
        break;
    }
    // Asked for every row when the list lays out: keep it cheap.
    static const int firstLine = QFontMetrics(Theme::font(13, QFont::Medium)).height();
    static const int titleLine = 2 + QFontMetrics(Theme::font(11)).height();
    static const int projectLine = 2 + QFontMetrics(Theme::font(10)).height();
    const int extra = index.data(SidebarModel::ExtraLinesRole).toInt();
    int height = firstLine;
    if (extra & SidebarModel::TitleLine)
        height += titleLine;
    if (extra & SidebarModel::ProjectLine)
        height += projectLine;
    return {width, height + 2 * rowPadding};
}

void SidebarDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    switch (SidebarModel::kind(index)) {
    case SidebarModel::RowKind::Header:
        paintHeader(painter, option, index);
        break;
    case SidebarModel::RowKind::Prompt:
        paintPrompt(painter, option, index);
        break;
    case SidebarModel::RowKind::Empty: {
        // The row is not selectable, which makes the view hand over the
        // disabled colours; the text is meant to be read all the same.
        QPalette palette = option.palette;
        palette.setCurrentColorGroup(QPalette::Active);
        painter->setFont(Theme::font(11));
        painter->setPen(Theme::tertiaryText(palette));
        painter->drawText(option.rect.adjusted(horizontalMargin + iconColumn, 0, -horizontalMargin, 0),
                          Qt::AlignVCenter | Qt::AlignLeft, index.data().toString());
        break;
    }
    }
    painter->restore();
}

void SidebarDelegate::paintHeader(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    const QRect rect = option.rect.adjusted(horizontalMargin, 0, -horizontalMargin, 0);
    if (isDropTarget && isDropTarget(index)) {
        QColor tint = Theme::accent(option.palette);
        tint.setAlphaF(0.2);
        QPainterPath plate;
        plate.addRoundedRect(QRectF(option.rect.adjusted(6, 2, -6, 0)), 4, 4);
        painter->fillPath(plate, tint);
    }
    paintFocusRing(painter, option, option.rect.adjusted(6, 2, -6, 0));
    painter->setFont(Theme::font(11, QFont::DemiBold));
    painter->setPen(Theme::secondaryText(option.palette));
    const QRect textRect = rect.adjusted(2, 4, -24, 0);
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                      painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight, textRect.width()));

    // The chevron turns down while the section is expanded.
    const bool expanded = isExpanded ? isExpanded(index) : true;
    const int size = 10;
    const QPixmap chevron = Icons::pixmap(QStringLiteral("chevron.right"), Theme::secondaryText(option.palette), size,
                                          ratio(painter));
    const QPointF centre(rect.right() - 8, rect.center().y() + 2);
    painter->translate(centre);
    painter->rotate(expanded ? 90 : 0);
    painter->drawPixmap(QPointF(-size / 2.0, -size / 2.0), chevron);
}

void SidebarDelegate::paintInsertionLine(QPainter *painter, const QStyleOptionViewItem &option) const
{
    // A 5-point circle and a 1-point line in the row's top padding, so the
    // row keeps its height while a drag passes over it.
    const QColor accent = Theme::accent(option.palette);
    const qreal centreY = option.rect.top() + rowPadding / 2.0;
    const qreal left = option.rect.left() + horizontalMargin;
    painter->setPen(Qt::NoPen);
    painter->setBrush(accent);
    painter->drawEllipse(QPointF(left + 2.5, centreY), 2.5, 2.5);
    painter->fillRect(QRectF(left + 5, centreY - 0.5, option.rect.right() - horizontalMargin - left - 5, 1), accent);
}

void SidebarDelegate::paintPrompt(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    const QPalette &palette = option.palette;
    const bool selected = option.state & QStyle::State_Selected;
    const bool active = option.state & QStyle::State_Active;
    const QRect rowRect = option.rect.adjusted(6, 1, -6, -1);
    if (selected) {
        QColor fill = Theme::accent(palette);
        if (!(option.state & QStyle::State_HasFocus) && !active)
            fill = palette.color(QPalette::Inactive, QPalette::Highlight);
        QPainterPath path;
        path.addRoundedRect(rowRect, 6, 6);
        painter->fillPath(path, fill);
    } else {
        paintFocusRing(painter, option, rowRect);
    }
    const QColor onSelection = palette.color(QPalette::HighlightedText);
    const auto tone = [&](const QColor &normal, qreal alpha) {
        if (!selected)
            return normal;
        QColor c = onSelection;
        c.setAlphaF(alpha);
        return c;
    };

    const QString preview = index.data(SidebarModel::PreviewRole).toString();
    const QString title = index.data(SidebarModel::TitleRole).toString();
    const QVariant projectLine = index.data(SidebarModel::ProjectLineRole);
    const int variableCount = index.data(SidebarModel::VariableCountRole).toInt();

    if (isDropTarget && isDropTarget(index))
        paintInsertionLine(painter, option);

    QRect content = option.rect.adjusted(horizontalMargin, rowPadding, -horizontalMargin - 2, -rowPadding);
    const QPixmap icon = Icons::pixmap(QStringLiteral("doc.text"), tone(Theme::secondaryText(palette), 0.85), 14,
                                       ratio(painter));
    painter->drawPixmap(content.left() + 1, content.top() + 2, icon);
    content.setLeft(content.left() + iconColumn);

    // The badge of variables sits at the right of the first line.
    if (variableCount > 0) {
        const QFont countFont = Theme::font(10);
        const QString count = QString::number(variableCount);
        const int countWidth = QFontMetrics(countFont).horizontalAdvance(count);
        const int badgeWidth = 10 + 2 + countWidth;
        const QColor badgeColor = tone(Theme::tertiaryText(palette), 0.75);
        const int y = content.top() + 3;
        painter->drawPixmap(content.right() - badgeWidth, y, Icons::pixmap(QStringLiteral("curlybraces"), badgeColor,
                                                                           10, ratio(painter)));
        painter->setFont(countFont);
        painter->setPen(badgeColor);
        painter->drawText(QRect(content.right() - countWidth, y - 2, countWidth, 14), Qt::AlignVCenter, count);
        content.setRight(content.right() - badgeWidth - 6);
    }

    const auto line = [&](const QString &text, const QFont &font, const QColor &color) {
        painter->setFont(font);
        painter->setPen(color);
        const QFontMetrics metrics(font);
        const QRect lineRect(content.left(), content.top(), content.width(), metrics.height());
        painter->drawText(lineRect, Qt::AlignLeft | Qt::AlignVCenter,
                          metrics.elidedText(text, Qt::ElideRight, lineRect.width()));
        content.setTop(content.top() + metrics.height() + 2);
    };
    if (!preview.isEmpty()) {
        line(preview, Theme::font(13, QFont::Medium), tone(Theme::primaryText(palette), 1.0));
        if (!title.isEmpty())
            line(title, Theme::font(11), tone(Theme::tertiaryText(palette), 0.75));
    } else {
        line(title.isEmpty() ? QStringLiteral("New prompt") : title, Theme::font(13, QFont::Medium),
             tone(Theme::secondaryText(palette), 0.85));
    }
    if (!projectLine.isNull())
        line(projectLine.toString(), Theme::font(10), tone(Theme::tertiaryText(palette), 0.75));
}
