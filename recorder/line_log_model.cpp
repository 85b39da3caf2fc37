#include "recorder/line_log_model.h"

#include <QBrush>
#include <QColor>
#include <QDateTime>
#include <QFontDatabase>
#include <QStringList>
#include <algorithm>

#include "protocol/frame_description.h"

namespace halvex {

using recording::LineKind;
using recording::LineRecord;
using recording::Verdict;

namespace {

// Rows described for painting, kept until there are this many.
constexpr std::size_t kMostDescribed = 4096;
constexpr qsizetype kMostShown = 100;

const char* const kHeaders[LineLogModel::ColumnCount] = {"Time", "Dir",    "Addr",  "Code",
                                                         "Name", "Fields", "Check", "Bytes"};

QString fromStd(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString hexCode(Byte code) {
    return QStringLiteral("%1").arg(code, 2, 16, QLatin1Char('0')).toUpper();
}

// The texts of a record's columns.
struct RowTexts {
    QString columns[LineLogModel::ColumnCount];
    std::optional<Byte> code;
};

RowTexts textsOf(const LineRecord& record) {
    RowTexts texts;
    texts.columns[LineLogModel::Time] = timeText(record.timeUs);
    texts.columns[LineLogModel::Direction] = directionText(record);
    if (record.kind == LineKind::Event) {
        texts.columns[LineLogModel::Name] = fromStd(record.text());
        return texts;
    }
    const table::FrameDescription frame = table::describeFrame(record.bytes);
    texts.code = frame.code;
    if (frame.address) {
        texts.columns[LineLogModel::Address] = QString::number(*frame.address);
    }
    if (frame.code) {
        texts.columns[LineLogModel::Code] = hexCode(*frame.code);
    }
    texts.columns[LineLogModel::Name] = fromStd(frame.name);
    QString fields = fromStd(frame.fieldsText());
    if (frame.shortPayload) {
        fields += fields.isEmpty() ? QStringLiteral("(short)") : QStringLiteral(" (short)");
    }
    texts.columns[LineLogModel::Fields] = fields;
    texts.columns[LineLogModel::Check] = checkText(record);
    texts.columns[LineLogModel::Bytes] = fromStd(table::hexBytes(record.bytes));
    return texts;
}

// Whether `text` holds `needle` (lower case), ignoring the case of ASCII
// letters.
bool containsFolded(const std::string& text, const std::string& needle) {
    const auto folded = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    return std::search(text.begin(), text.end(), needle.begin(), needle.end(),
                       [&folded](char a, char b) { return folded(a) == b; }) != text.end();
}

}  // namespace

QString timeText(std::int64_t timeUs) {
    return QDateTime::fromMSecsSinceEpoch(timeUs / 1000).toString(QStringLiteral("hh:mm:ss.zzz"));
}

QString directionText(const LineRecord& record) {
    switch (record.kind) {
        case LineKind::Sent:
            return QStringLiteral("\u2192 unit");
        case LineKind::Received:
            return QStringLiteral("\u2190 unit");
        case LineKind::Event:
            break;
    }
    return QStringLiteral("event");
}

QString checkText(const LineRecord& record) {
    if (record.kind == LineKind::Event) {
        return {};
    }
    if (record.kind == LineKind::Sent) {
        return QStringLiteral("sent");
    }
    switch (record.verdict) {
        case Verdict::Good:
            return QStringLiteral("good");
        case Verdict::BadLrc:
            return QStringLiteral("LRC wrong");
        case Verdict::Cut:
            return QStringLiteral("cut");
        case Verdict::Noise:
            break;
    }
    return QStringLiteral("noise");
}

LineLogModel::LineLogModel(std::size_t capacity, QObject* parent)
    : QAbstractTableModel(parent), capacity_(std::max<std::size_t>(capacity, 1)) {
    batch_.setSingleShot(true);
    batch_.setInterval(kBatchMs);
    connect(&batch_, &QTimer::timeout, this, &LineLogModel::flush);
}

void LineLogModel::append(LineRecord record) {
    pending_.push_back(std::move(record));
    if (pending_.size() > capacity_) {
        pending_.pop_front();
    }
    if (!paused_ && !batch_.isActive()) {
        batch_.start();
    }
}

void LineLogModel::flush() {
    batch_.stop();
    if (paused_ || pending_.empty()) {
        return;
    }
    std::vector<Entry> incoming;
    incoming.reserve(pending_.size());
    for (LineRecord& record : pending_) {
        incoming.push_back(Entry{nextSequence_++, std::move(record)});
    }
    pending_.clear();

    // Room for the newcomers: the oldest go first. append() keeps no more
    // newcomers than the ring holds, so the ring always has enough to give.
    const std::size_t total = ring_.size() + incoming.size();
    if (total > capacity_) {
        dropOldest(total - capacity_);
    }
    std::vector<std::uint64_t> shownNow;
    for (Entry& entry : incoming) {
        if (passes(entry.record)) {
            shownNow.push_back(entry.sequence);
        }
        ring_.push_back(std::move(entry));
    }
    if (shownNow.empty()) {
        return;
    }
    const int first = static_cast<int>(shown_.size());
    beginInsertRows({}, first, first + static_cast<int>(shownNow.size()) - 1);
    shown_.insert(shown_.end(), shownNow.begin(), shownNow.end());
    endInsertRows();
    emit rowsShown();
}

void LineLogModel::dropOldest(std::size_t count) {
    if (count == 0) {
        return;
    }
    const std::uint64_t firstKept =
        count < ring_.size() ? ring_[count].sequence : ring_.back().sequence + 1;
    int hidden = 0;
    while (static_cast<std::size_t>(hidden) < shown_.size() &&
           shown_[static_cast<std::size_t>(hidden)] < firstKept) {
        ++hidden;
    }
    if (hidden > 0) {
        beginRemoveRows({}, 0, hidden - 1);
        shown_.erase(shown_.begin(), shown_.begin() + hidden);
        endRemoveRows();
    }
    ring_.erase(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(count));
}

void LineLogModel::setPaused(bool paused) {
    paused_ = paused;
    if (!paused_) {
        flush();
    }
}

void LineLogModel::clear() {
    beginResetModel();
    ring_.clear();
    shown_.clear();
    pending_.clear();
    describedCache_.clear();
    endResetModel();
}

void LineLogModel::setFilter(const LineFilter& filter) {
    if (filter == filter_) {
        return;
    }
    filter_ = filter;
    needle_ = filter.text.toLower().toStdString();
    refilter();
}

void LineLogModel::refilter() {
    beginResetModel();
    shown_.clear();
    for (const Entry& entry : ring_) {
        if (passes(entry.record)) {
            shown_.push_back(entry.sequence);
        }
    }
    endResetModel();
}

bool LineLogModel::passes(const LineRecord& record) const {
    using Direction = LineFilter::Direction;
    switch (filter_.direction) {
        case Direction::All:
            break;
        case Direction::ToUnit:
            if (record.kind != LineKind::Sent) {
                return false;
            }
            break;
        case Direction::FromUnit:
            if (record.kind != LineKind::Received) {
                return false;
            }
            break;
        case Direction::Events:
            if (record.kind != LineKind::Event) {
                return false;
            }
            break;
    }
    if (!filter_.code && needle_.empty()) {
        return true;
    }
    // Plain strings, not the row's texts: a filter runs over the whole ring.
    if (record.kind == LineKind::Event) {
        return !filter_.code && containsFolded(record.text(), needle_);
    }
    const table::FrameDescription frame = table::describeFrame(record.bytes);
    if (filter_.code && frame.code != filter_.code) {
        return false;
    }
    return needle_.empty() || containsFolded(frame.name, needle_) ||
           containsFolded(frame.fieldsText(), needle_) ||
           containsFolded(table::hexBytes(record.bytes), needle_);
}

const LineLogModel::Entry& LineLogModel::entryOf(int row) const {
    const std::uint64_t sequence = shown_.at(static_cast<std::size_t>(row));
    return ring_[static_cast<std::size_t>(sequence - ring_.front().sequence)];
}

const LineRecord& LineLogModel::recordAt(int row) const {
    return entryOf(row).record;
}

const LineLogModel::Described& LineLogModel::described(int row) const {
    const Entry& entry = entryOf(row);
    const auto cached = describedCache_.find(entry.sequence);
    if (cached != describedCache_.end()) {
        return cached->second;
    }
    if (describedCache_.size() >= kMostDescribed) {
        describedCache_.clear();
    }
    RowTexts texts = textsOf(entry.record);
    Described out;
    for (int column = 0; column < ColumnCount; ++column) {
        out.columns[column] = std::move(texts.columns[column]);
    }
    out.faulty = entry.record.kind == LineKind::Received && entry.record.verdict != Verdict::Good;
    return describedCache_.emplace(entry.sequence, std::move(out)).first->second;
}

int LineLogModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int LineLogModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LineLogModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole: {
            // Laying text out is most of a row's painting, and no column
            // shows more than this; the tool tip, the detail and a copy have
            // it all.
            return described(index.row()).columns[index.column()].left(kMostShown);
        }
        case Qt::ToolTipRole:
            return index.column() == Fields || index.column() == Name || index.column() == Bytes
                       ? QVariant(described(index.row()).columns[index.column()])
                       : QVariant();
        case Qt::ForegroundRole:
            if (recordAt(index.row()).kind == LineKind::Event) {
                return QBrush(QColor(200, 100, 0));
            }
            return described(index.row()).faulty ? QVariant(QBrush(QColor(210, 0, 0))) : QVariant();
        case Qt::FontRole:
            return index.column() == Bytes || index.column() == Time
                       ? QVariant(QFontDatabase::systemFont(QFontDatabase::FixedFont))
                       : QVariant();
        default:
            return {};
    }
}

QVariant LineLogModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount) {
        return {};
    }
    return QString::fromLatin1(kHeaders[section]);
}

QString LineLogModel::rowText(int row) const {
    QStringList columns;
    for (int column = 0; column < ColumnCount; ++column) {
        columns << described(row).columns[column];
    }
    return columns.join(QLatin1Char('\t'));
}

QString LineLogModel::detailText(int row) const {
    const LineRecord& record = recordAt(row);
    const QString when = timeText(record.timeUs) + QStringLiteral("  ") + directionText(record);
    if (record.kind == LineKind::Event) {
        return when + QStringLiteral("\n") + fromStd(record.text());
    }
    const table::FrameDescription frame = table::describeFrame(record.bytes);
    QStringList lines;
    lines << when + QStringLiteral("  ") + checkText(record);
    QString heading = fromStd(frame.name);
    if (frame.code) {
        heading += QStringLiteral(" (code %1, address %2)")
                       .arg(hexCode(*frame.code))
                       .arg(*frame.address);  // a frame with a code has one
    }
    lines << heading;
    for (const table::DescribedField& field : frame.fields) {
        lines << QStringLiteral("  [%1] %2: %3")
                     .arg(field.offset)
                     .arg(fromStd(field.name), fromStd(field.value));
    }
    if (frame.shortPayload) {
        lines << QStringLiteral("  (the payload ends before its last field)");
    }
    if (frame.lrc) {
        lines << QStringLiteral("  LRC %1: %2")
                     .arg(hexCode(*frame.lrc),
                          frame.lrcMatchesAddress
                              ? QStringLiteral("adds up with the frame's address")
                              : QStringLiteral("does not add up with the frame's address"));
    }
    lines << QStringLiteral("Bytes: ") + fromStd(table::hexBytes(record.bytes));
    return lines.join(QLatin1Char('\n'));
}

}  // namespace halvex
