// The Line Log's rows on their own: the bounded ring, batches, filters,
// pause, the texts copied and shown in detail, and the latency figures.

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "protocol/frame.h"
#include "recorder/latency_meter.h"
#include "recorder/line_log_model.h"
#include "recorder/line_log_window.h"
#include "recorder/line_recorder.h"

using namespace halvex;
using recording::LineKind;
using recording::LineRecord;
using recording::Verdict;

namespace {

LineRecord sentPreset(int number, std::int64_t timeUs = 0) {
    return {timeUs, LineKind::Sent, Verdict::Good,
            encodeFrame(kStx, 0, {0x40, static_cast<Byte>(number)}, 0)};
}

LineRecord receivedReport(std::int64_t timeUs = 0, Verdict verdict = Verdict::Good) {
    return {timeUs, LineKind::Received, verdict,
            encodeFrame(kAck, 1, {0x31, 0x9C, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0}, 1)};
}

// Preset requests for `first` to `last` - 1, or as many for preset `only`.
void sendPresets(LineLogModel& model, int first, int last, int only = -1) {
    for (int i = first; i < last; ++i) {
        model.append(sentPreset(only < 0 ? i : only));
    }
}

QString cell(const LineLogModel& model, int row, int column) {
    return model.data(model.index(row, column), Qt::DisplayRole).toString();
}

}  // namespace

TEST(LineLogModel, KeepsOnlyTheNewestRecordsAndShowsThemInBatchesOrHoldsThemWhilePaused) {
    LineLogModel model(50);
    // Fails the test on any insert or removal announced unlike it is done.
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    sendPresets(model, 0, 30);
    // Nothing shows before the batch: a burst is one update of the view.
    EXPECT_EQ(model.rowCount(), 0);
    int inserts = 0;
    int removals = 0;
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, [&inserts] { ++inserts; });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, [&removals] { ++removals; });
    model.flush();
    EXPECT_EQ(model.rowCount(), 30);
    EXPECT_EQ(inserts, 1);

    sendPresets(model, 30, 120);
    model.flush();
    EXPECT_EQ(model.kept(), 50u);
    ASSERT_EQ(model.rowCount(), 50);
    EXPECT_EQ(cell(model, 0, LineLogModel::Fields), QStringLiteral("preset 70"));
    EXPECT_EQ(cell(model, 49, LineLogModel::Fields), QStringLiteral("preset 119"));

    // With a filter, rows leave as their records leave the ring.
    LineFilter odd;
    odd.text = QStringLiteral("preset 1");  // 100..119 and nothing else kept
    model.setFilter(odd);
    EXPECT_EQ(model.rowCount(), 20);
    removals = 0;
    sendPresets(model, 0, 10, 200);
    model.flush();
    EXPECT_EQ(model.rowCount(), 20);  // 200s do not pass; 70..79 left, none of them shown
    EXPECT_EQ(removals, 0);
    sendPresets(model, 0, 35, 7);
    model.flush();
    // Only 5 of the 100s survive the 35 newer records.
    EXPECT_EQ(model.rowCount(), 5);
    EXPECT_EQ(cell(model, 0, LineLogModel::Fields), QStringLiteral("preset 115"));

    model.clear();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.kept(), 0u);

    // Paused, new rows wait, no more of them than the ring holds.
    model.setFilter({});
    model.append(sentPreset(1));
    model.flush();
    model.setPaused(true);
    sendPresets(model, 0, 65);
    model.flush();
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.waiting(), 50u);
    model.setPaused(false);
    EXPECT_EQ(model.rowCount(), 50);
    EXPECT_EQ(cell(model, 49, LineLogModel::Fields), QStringLiteral("preset 64"));
    EXPECT_EQ(model.waiting(), 0u);
}

TEST(LineLogModel, FiltersByDirectionCodeAndTextAndNamesEachColumn) {
    LineLogModel model;
    model.append(sentPreset(3));
    model.append(receivedReport(0, Verdict::BadLrc));
    model.append(recording::eventRecord(0, "Zoom Aborted: no reply within 250 ms"));
    model.append({0, LineKind::Received, Verdict::Noise, {0x55, 0x66}});
    model.flush();
    ASSERT_EQ(model.rowCount(), 4);
    // The words of each column show in the kept picture of a recording
    // (line_log_test.cpp); the bytes and address are read by the filters below.
    EXPECT_EQ(cell(model, 0, LineLogModel::Bytes), QStringLiteral("02 00 40 1B 83 43 03"));
    EXPECT_EQ(cell(model, 1, LineLogModel::Address), QStringLiteral("1"));
    // Refused frames in red, events in orange, the rest in the palette's text.
    const auto colour = [&model](int row) {
        return model.data(model.index(row, 0), Qt::ForegroundRole).value<QBrush>().color();
    };
    EXPECT_EQ(colour(1), QColor(210, 0, 0));
    EXPECT_EQ(colour(2), QColor(200, 100, 0));
    // Times and bytes in the fixed font, so that they line up; words not.
    for (const int column : {LineLogModel::Time, LineLogModel::Bytes, LineLogModel::Name}) {
        EXPECT_EQ(model.data(model.index(0, column), Qt::FontRole).isValid(),
                  column != LineLogModel::Name);
    }

    using D = LineFilter::Direction;
    const QString report = QStringLiteral("position report");
    const QString event = QStringLiteral("Zoom Aborted: no reply within 250 ms");
    const struct {
        LineFilter filter;
        QStringList names;
    } cases[] = {
        {{D::ToUnit, {}, {}}, {QStringLiteral("preset request")}},
        {{D::FromUnit, {}, {}}, {report, QStringLiteral("noise")}},
        {{D::Events, {}, {}}, {event}},
        {{D::All, 0x31, {}}, {report}},
        {{D::All, {}, QStringLiteral("zoom aBORTED")}, {event}},
        {{D::All, {}, QStringLiteral("9c ff ff")}, {report}},  // the bytes, any case
        {{D::All, {}, QStringLiteral("-1.00")}, {report}},
    };
    for (const auto& c : cases) {
        model.setFilter(c.filter);
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row) {
            names << cell(model, row, LineLogModel::Name);
        }
        EXPECT_EQ(names, c.names) << c.names.join(' ').toStdString();
    }

    model.setFilter({});
    const QStringList copied = model.rowText(0).split(QLatin1Char('\t'));
    ASSERT_EQ(copied.size(), LineLogModel::ColumnCount);
    EXPECT_EQ(copied[LineLogModel::Name], QStringLiteral("preset request"));
    EXPECT_EQ(copied[LineLogModel::Fields], QStringLiteral("preset 3"));
    // Words and bytes have a tool tip in full, the short columns none.
    EXPECT_EQ(model.data(model.index(0, LineLogModel::Bytes), Qt::ToolTipRole),
              cell(model, 0, LineLogModel::Bytes));
    EXPECT_FALSE(model.data(model.index(0, LineLogModel::Code), Qt::ToolTipRole).isValid());
    const QString detail = model.detailText(1);
    EXPECT_TRUE(detail.contains(QStringLiteral("position report (code 31, address 1)")))
        << detail.toStdString();
    // The console's verdict, and what the LRC says of the frame's own
    // address (a reply from another unit is refused though it adds up).
    EXPECT_TRUE(detail.contains(QStringLiteral("\u2190 unit  LRC wrong"))) << detail.toStdString();
    EXPECT_TRUE(detail.contains(QStringLiteral("adds up with the frame's address")))
        << detail.toStdString();
}

TEST(LatencyMeter, MatchesRepliesToFramesOfTheirCodeAndTakesPercentiles) {
    LatencyMeter meter;
    std::int64_t now = 1'000'000'000;
    // 100 exchanges taking 1..100 ms; replies to other codes in between do
    // not count, and a frame the unit never answered is passed over.
    for (int i = 1; i <= 100; ++i) {
        meter.note(sentPreset(i, now));
        if (i % 10 == 0) {
            meter.note({now, LineKind::Sent, Verdict::Good, encodeFrame(kStx, 0, {0x9A}, 0)});
        }
        meter.note(receivedReport(now + 500));
        meter.note(
            {now + i * 1000, LineKind::Received, Verdict::Good,
             encodeFrame(kAck, 0, {0x40, static_cast<Byte>(i), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0)});
        now += 200'000;
    }
    const auto figures = meter.frameToReply(now);
    EXPECT_EQ(figures.count, 100);
    EXPECT_DOUBLE_EQ(figures.p50Ms, 50.0);
    EXPECT_DOUBLE_EQ(figures.p99Ms, 99.0);
    // Older than the window: gone.
    EXPECT_EQ(meter.frameToReply(now + LatencyMeter::kWindowUs + 30'000'000).count, 0);
    // As the status bar says them: tenths only below 10 ms.
    EXPECT_EQ(figuresText(figures), QStringLiteral("p50 50 ms, p99 99 ms (100)"));
    EXPECT_EQ(figuresText({2, 2.5, 10.0}), QStringLiteral("p50 2.5 ms, p99 10 ms (2)"));
    EXPECT_EQ(figuresText({}), QStringLiteral("none yet"));
}
