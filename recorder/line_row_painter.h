#pragma once

#include <QFont>
#include <QStaticText>
#include <QStyledItemDelegate>
#include <unordered_map>

namespace halvex {

class LineLogModel;

// Paints the Line Log's cells from text laid out once per row, not on every
// paint: laying text out is most of what painting a row costs, and the log
// repaints its rows several times a second while it follows the line. A
// cell's text is clipped at its edge (the tool tip and the detail have it
// all).
class LineRowPainter : public QStyledItemDelegate {
    Q_OBJECT
  public:
    LineRowPainter(LineLogModel& model, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  private:
    const QStaticText& laidOut(const QModelIndex& index, const QFont& font) const;

    LineLogModel& model_;
    QFont fixed_;
    // By row sequence and column; cleared when it grows past the rows a
    // screen can show many times over.
    mutable std::unordered_map<std::uint64_t, QStaticText> texts_;
};

}  // namespace halvex
