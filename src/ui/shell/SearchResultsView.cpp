#include "SearchResultsView.h"

#include "AppState.h"
#include "Placeholder.h"
#include "PromptText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>
#include <QStyledItemDelegate>

namespace {

constexpr int cardMargin = 2;   // around the rounded card
constexpr int textInset = 6;    // inside it, above and below the text
constexpr int lineGap = 3;      // between the preview and the title

QFont headlineFont()
{
    return Theme::font(14, QFont::Medium);
}

QFont subtitleFont()
{
    return Theme::font(12);
}

// Body first as the headline (up to two lines), the title under it; a pin
// for pinned prompts. Every row has the height of the fullest one, so a
// long list lays out without measuring each text.
class SearchResultDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        static const int height = 2 * (cardMargin + textInset) + 2 * QFontMetrics(headlineFont()).height()
            + lineGap + QFontMetrics(subtitleFont()).height();
        Q_UNUSED(option);
        return {0, height}; // as wide as the list, whatever width it had before
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QPalette &p = option.palette;
        const bool selected = option.state & QStyle::State_Selected;
        const bool hovered = option.state & QStyle::State_MouseOver;
        const QRect card = option.rect.adjusted(10, cardMargin, -10, -cardMargin);
        if (selected || hovered) {
            QPainterPath path;
            path.addRoundedRect(card, 8, 8);
            QColor fill = selected ? Theme::accent(p) : p.color(QPalette::Midlight);
            if (!selected)
                fill.setAlphaF(0.35);
            painter->fillPath(path, fill);
        }
        if ((option.state & QStyle::State_HasFocus) && (option.state & QStyle::State_KeyboardFocusChange)) {
            painter->setPen(QPen(selected ? p.color(QPalette::HighlightedText) : Theme::accent(p), 1.5));
            painter->drawRoundedRect(QRectF(card).adjusted(0.75, 0.75, -0.75, -0.75), 8, 8);
        }
        const auto color = [&](const QColor &c) { return selected ? p.color(QPalette::HighlightedText) : c; };

        QRect text = card.adjusted(12, textInset, -12, -textInset);
        const QString preview = index.data(SearchResultsModel::PreviewRole).toString();
        const QString subtitle = index.data(SearchResultsModel::SubtitleRole).toString();
        const QFont headline = headlineFont();
        const QFontMetrics metrics(headline);
        const QFontMetrics subtitleMetrics(subtitleFont());
        const bool pinned = index.data(SearchResultsModel::PinnedRole).toBool();
        constexpr int pinSize = 10;
        if (pinned)
            text.setRight(text.right() - pinSize - 6);

        // The lines of the headline: the preview in at most two lines, the
        // last one elided; or the display title on one line.
        QStringList lines;
        if (preview.isEmpty()) {
            lines.append(metrics.elidedText(index.data().toString(), Qt::ElideRight, text.width()));
        } else {
            QTextLayout layout(preview, headline);
            layout.beginLayout();
            for (int i = 0; i < 2; ++i) {
                QTextLine line = layout.createLine();
                if (!line.isValid())
                    break;
                line.setLineWidth(text.width());
                const bool more = line.textStart() + line.textLength() < preview.size();
                lines.append(i == 1 && more ? metrics.elidedText(preview.mid(line.textStart()), Qt::ElideRight,
                                                                 text.width())
                                            : preview.mid(line.textStart(), line.textLength()).trimmed());
            }
            layout.endLayout();
        }
        const bool showSubtitle = !preview.isEmpty() && !subtitle.isEmpty();
        const int blockHeight = int(lines.size()) * metrics.height()
            + (showSubtitle ? lineGap + subtitleMetrics.height() : 0);
        int y = text.top() + (text.height() - blockHeight) / 2; // centred in the row

        if (pinned) { // just after the first line
            const int x = text.left() + std::min(metrics.horizontalAdvance(lines.constFirst()), text.width()) + 6;
            painter->drawPixmap(x, y + (metrics.height() - pinSize) / 2,
                                Icons::pixmap(QStringLiteral("pin.fill"), color(Theme::accent(p)), pinSize,
                                              painter->device()->devicePixelRatioF()));
        }
        painter->setFont(headline);
        painter->setPen(color(preview.isEmpty() ? Theme::secondaryText(p) : Theme::primaryText(p)));
        for (const QString &line : std::as_const(lines)) {
            painter->drawText(QRect(text.left(), y, text.width(), metrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                              line);
            y += metrics.height();
        }
        if (showSubtitle) {
            painter->setFont(subtitleFont());
            painter->setPen(color(Theme::tertiaryText(p)));
            painter->drawText(QRect(text.left(), y + lineGap, text.width(), subtitleMetrics.height()),
                              Qt::AlignLeft | Qt::AlignVCenter,
                              subtitleMetrics.elidedText(subtitle, Qt::ElideRight, text.width()));
        }
        painter->restore();
    }
};

// Picking a result ends the search, so the keyboard only moves among the
// results; Return or Space picks the current one. A click picks at once.
class SearchResultsList : public QListView
{
public:
    using QListView::QListView;

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override
    {
        if (event && event->type() == QEvent::KeyPress)
            return QItemSelectionModel::NoUpdate;
        return QListView::selectionCommand(index, event);
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        window()->setAttribute(Qt::WA_KeyboardFocusChange); // show where the keyboard is
        const bool pick = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter
            || event->key() == Qt::Key_Space;
        if (pick && currentIndex().isValid() && event->modifiers() == Qt::NoModifier) {
            selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect);
            return;
        }
        QListView::keyPressEvent(event);
    }
};

} // namespace

void SearchResultsModel::setResults(const QList<Prompt> &prompts, const QList<qsizetype> &indices)
{
    if (prompts.isSharedWith(m_prompts) && indices == m_indices)
        return;
    beginResetModel();
    m_prompts = prompts;
    m_indices = indices;
    endResetModel();
}

int SearchResultsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_indices.size());
}

QVariant SearchResultsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_indices.size() || m_indices[index.row()] >= m_prompts.size())
        return {};
    const Prompt &prompt = m_prompts.at(m_indices[index.row()]);
    switch (role) {
    case Qt::DisplayRole:
        return prompt.displayTitle();
    case PromptIdRole:
        return prompt.id;
    case Qt::AccessibleTextRole:
        return PromptText::spoken(prompt);
    case PreviewRole:
        return PromptText::preview(prompt.body, 200);
    case SubtitleRole:
        return prompt.frontMatter.title.trimmed();
    case PinnedRole:
        return prompt.frontMatter.pinned;
    default:
        return {};
    }
}

SearchResultsView::SearchResultsView(AppState *state, QWidget *parent)
    : QStackedWidget(parent)
    , m_state(state)
    , m_model(new SearchResultsModel(this))
    , m_list(new SearchResultsList(this))
{
    setObjectName(QStringLiteral("searchResults"));
    m_list->setModel(m_model);
    m_list->setAccessibleName(QStringLiteral("Search results"));
    m_list->setItemDelegate(new SearchResultDelegate(m_list));
    m_list->setUniformItemSizes(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setMouseTracking(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setSpacing(0);
    m_list->setContentsMargins(0, 6, 0, 6);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        QSet<QString> ids;
        for (const QModelIndex &index : m_list->selectionModel()->selectedIndexes())
            ids.insert(index.data(SearchResultsModel::PromptIdRole).toString());
        if (!ids.isEmpty())
            m_state->setSelectedPromptIDs(ids);
    });

    auto *noMatches = new Placeholder(QStringLiteral("magnifyingglass"), 36, this);
    noMatches->setTexts(QStringLiteral("No matches"),
                        QStringLiteral("Try a different query — searches run across titles, bodies, and tags."));
    m_noMatches = noMatches;
    addWidget(m_list);
    addWidget(m_noMatches);
}

bool SearchResultsView::enterFromSearchField()
{
    if (currentWidget() != m_list || m_model->rowCount() == 0)
        return false;
    m_list->setFocus(Qt::TabFocusReason);
    m_list->selectionModel()->setCurrentIndex(m_model->index(0), QItemSelectionModel::NoUpdate);
    return true;
}

bool SearchResultsView::pickFirst()
{
    if (currentWidget() != m_list || m_model->rowCount() == 0)
        return false;
    m_list->selectionModel()->select(m_model->index(0), QItemSelectionModel::ClearAndSelect);
    return true;
}

void SearchResultsView::setResults(const QList<Prompt> &prompts, const QList<qsizetype> &indices)
{
    setCurrentWidget(indices.isEmpty() ? m_noMatches : static_cast<QWidget *>(m_list));
    m_model->setResults(prompts, indices);
}
