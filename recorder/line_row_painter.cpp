#include "recorder/line_row_painter.h"

#include <QFontDatabase>
#include <QPainter>

#include "recorder/line_log_model.h"

namespace halvex {

namespace {
constexpr std::size_t kMostLaidOut = 8192;
constexpr int kMargin = 4;

bool isFixed(int column) {
    return column == LineLogModel::Time || column == LineLogModel::Bytes;
}
}  // namespace

LineRowPainter::LineRowPainter(LineLogModel& model, QObject* parent)
    : QStyledItemDelegate(parent),
      model_(model),
      fixed_(QFontDatabase::systemFont(QFontDatabase::FixedFont)) {
    // Rows laid out for rows that are no longer there would only waste room.
    connect(&model_, &QAbstractItemModel::modelReset, this, [this] { texts_.clear(); });
}

const QStaticText& LineRowPainter::laidOut(const QModelIndex& index, const QFont& font) const {
    const std::uint64_t key = model_.sequenceAt(index.row()) * LineLogModel::ColumnCount +
                              static_cast<std::uint64_t>(index.column());
    const auto found = texts_.find(key);
    if (found != texts_.end()) {
        return found->second;
    }
    if (texts_.size() >= kMostLaidOut) {
        texts_.clear();
    }
    QStaticText text(index.data(Qt::DisplayRole).toString());
    text.setTextFormat(Qt::PlainText);
    text.prepare(QTransform(), font);
    return texts_.emplace(key, std::move(text)).first->second;
}

void LineRowPainter::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    if (selected) {
        painter->fillRect(option.rect, option.palette.highlight());
    }
    QColor pen = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    if (!selected) {
        const QVariant foreground = index.data(Qt::ForegroundRole);
        if (foreground.isValid()) {
            pen = foreground.value<QBrush>().color();
        }
    }
    const QFont& font = isFixed(index.column()) ? fixed_ : option.font;
    const QStaticText& text = laidOut(index, font);
    painter->save();
    painter->setPen(pen);
    painter->setFont(font);
    const QRect room = option.rect.adjusted(kMargin, 0, -kMargin, 0);
    painter->setClipRect(room);
    const qreal top = room.top() + (room.height() - text.size().height()) / 2.0;
    painter->drawStaticText(QPointF(room.left(), top), text);
    painter->restore();
}
}  // namespace halvex
