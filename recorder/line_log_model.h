#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "protocol/frame.h"
#include "protocol/line_record.h"

namespace halvex {

// Which records the Line Log shows.
struct LineFilter {
    enum class Direction { All, ToUnit, FromUnit, Events };
    Direction direction = Direction::All;
    std::optional<Byte> code;  // frames of this code only (events never match)
    QString text;              // in the name, fields, bytes or event text, any case

    bool operator==(const LineFilter&) const = default;
};

// The Line Log's rows: a bounded ring of the last records of the line, of
// which those that pass the filter are shown. Records are taken in at once
// but shown in batches (every kBatchMs, or when flushed), so that a burst
// of frames costs one update of the view, not one per frame. Rows are
// described from the protocol table when they are painted, not before;
// only the rows on screen are kept described.
class LineLogModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    static constexpr std::size_t kDefaultCapacity = 100000;
    static constexpr int kBatchMs = 250;

    enum Column { Time, Direction, Address, Code, Name, Fields, Check, Bytes, ColumnCount };

    explicit LineLogModel(std::size_t capacity = kDefaultCapacity, QObject* parent = nullptr);

    // Takes a record in; it shows at the next batch unless paused.
    void append(recording::LineRecord record);
    // Shows what was taken in, now.
    void flush();
    // While paused nothing new shows; what comes meanwhile waits (as much as
    // the ring holds) and shows when the pause ends.
    void setPaused(bool paused);
    bool paused() const { return paused_; }
    std::size_t waiting() const { return pending_.size(); }
    void clear();

    void setFilter(const LineFilter& filter);
    const LineFilter& filter() const { return filter_; }

    // Records in the ring, shown or not.
    std::size_t kept() const { return ring_.size(); }
    std::size_t capacity() const { return capacity_; }
    const recording::LineRecord& recordAt(int row) const;
    // A number that stays with the row's record while it is kept.
    std::uint64_t sequenceAt(int row) const { return shown_.at(static_cast<std::size_t>(row)); }
    // The row's columns joined by tabs, for the clipboard.
    QString rowText(int row) const;
    // Every field of the row's frame on a line of its own, with offsets.
    QString detailText(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  signals:
    // After each batch that added rows.
    void rowsShown();

  private:
    struct Entry {
        std::uint64_t sequence;
        recording::LineRecord record;
    };
    // A row as painted.
    struct Described {
        QString columns[ColumnCount];
        bool faulty = false;
    };
    bool passes(const recording::LineRecord& record) const;
    const Entry& entryOf(int row) const;
    const Described& described(int row) const;
    void dropOldest(std::size_t count);
    void refilter();

    std::size_t capacity_;
    std::deque<Entry> ring_;
    std::deque<std::uint64_t> shown_;  // sequences of the rows shown, ascending
    std::deque<recording::LineRecord> pending_;
    std::uint64_t nextSequence_ = 0;
    LineFilter filter_;
    std::string needle_;  // the filter's text in lower case
    bool paused_ = false;
    QTimer batch_;
    mutable std::unordered_map<std::uint64_t, Described> describedCache_;
};

// One row's texts, by the protocol table: the same words the dissector uses.
QString timeText(std::int64_t timeUs);
QString directionText(const recording::LineRecord& record);
QString checkText(const recording::LineRecord& record);

}  // namespace halvex
