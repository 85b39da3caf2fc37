// The Line Log in the whole console against the virtual unit: every frame
// both ways, the link's events, filters, pause, follow, copy, the line's
// times, recording from the window and opening a recording without a unit.

#include <gtest/gtest.h>

#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>

#include "recorder/line_log_window.h"
#include "recorder/line_recorder.h"
#include "recorder/line_tap.h"
#include "sim/replay_unit.h"
#include "tests/support/console_rig.h"
#include "tests/support/full_disk.h"
#include "tests/support/kept_picture.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;
using recording::LineKind;

namespace {

struct LogRig : ConsoleRig {
    LineRecorder& recorder() { return window->lineRecorder(); }
    LineLogModel& model() { return recorder().model(); }
    LineLogWindow* log() { return window->findChild<LineLogWindow*>(QStringLiteral("LineLog")); }
    template <typename T>
    T* inLog(const char* name) {
        return log()->findChild<T*>(QString::fromLatin1(name));
    }
    void openLog() { window->findChild<QAction*>(QStringLiteral("MenuLineLog"))->trigger(); }
    // Stops the jog messages and lets the last replies in.
    void quieten() {
        window->link().Timer2().stop();
        QTest::qWait(60);
        model().flush();
    }
    QString cell(int row, int column) {
        return model().data(model().index(row, column), Qt::DisplayRole).toString();
    }
    // The first row whose `column` holds `text`, or -1; a link's event is
    // named by its text.
    int rowWith(int column, const QString& text) {
        model().flush();
        for (int row = 0; row < model().rowCount(); ++row) {
            if (cell(row, column).contains(text)) {
                return row;
            }
        }
        return -1;
    }
    // Whether an event with `text` comes within a while.
    bool seesEvent(const char* text) {
        return waitFor([&] { return rowWith(LineLogModel::Name, QString::fromUtf8(text)) >= 0; });
    }
};

constexpr Byte kHome = vocab::MoveToHome::kCode;

}  // namespace

// One session in the open Line Log: it follows the tail and pauses while the
// console jogs, times clicks and replies, and shows every frame both ways
// named and decoded, filtered from its controls and copied, and the link's
// events among them.
TEST(LineLog, FollowsPausesTimesShowsFiltersAndCopiesTheSessionsFramesAndTheLinksEvents) {
    LogRig rig;
    rig.openLog();
    ASSERT_NE(rig.log(), nullptr);
    EXPECT_TRUE(rig.log()->isVisible());
    ASSERT_TRUE(rig.connect());
    rig.model().flush();
    auto& table = rig.log()->table();
    QScrollBar* bar = table.verticalScrollBar();
    EXPECT_EQ(bar->value(), bar->maximum());

    // Pause: frames wait to be shown (the model's rule, line_log_model_test.cpp).
    rig.inLog<QPushButton>("PauseBut")->click();
    ASSERT_TRUE(ConsoleRig::waitFor([&rig] { return rig.model().waiting() > 0; }));
    EXPECT_TRUE(rig.inLog<QLabel>("LineStatus")->text().contains(QStringLiteral("paused:")));
    rig.inLog<QPushButton>("PauseBut")->click();
    EXPECT_EQ(rig.model().waiting(), 0u);

    // Scrolling away from the end stops following; the view stays put.
    bar->triggerAction(QAbstractSlider::SliderToMinimum);
    EXPECT_FALSE(rig.inLog<QPushButton>("FollowBut")->isChecked());
    // New rows come in their batch.
    const int shown = rig.model().rowCount();
    EXPECT_TRUE(ConsoleRig::waitFor([&rig, shown] { return rig.model().rowCount() > shown; }));
    EXPECT_EQ(bar->value(), 0);
    rig.inLog<QPushButton>("FollowBut")->click();
    EXPECT_EQ(bar->value(), bar->maximum());
    bar->triggerAction(QAbstractSlider::SliderToMaximum);  // at the end by hand: still following
    EXPECT_TRUE(rig.inLog<QPushButton>("FollowBut")->isChecked());

    // Click to wire and frame to reply in the status line.
    const std::size_t before = rig.line.frames().size();
    rig.click(QStringLiteral("HomeBut"));
    ASSERT_TRUE(ConsoleRig::waitFor([&] {
        const auto& frames = rig.line.frames();
        return std::any_of(frames.begin() + static_cast<long>(before), frames.end(),
                           [](const auto& f) { return f.message.front() == kHome; });
    }));
    // A click that sends nothing adds no sample.
    rig.click(QStringLiteral("ClrLEDBut_0"));
    const auto clicks = rig.recorder().latency().clickToWire(LineTap::nowUs());
    EXPECT_EQ(clicks.count, 1);
    // A command waits at most about two ticks of 10 ms for its turn.
    EXPECT_LT(clicks.p99Ms, 1000.0);
    EXPECT_GT(rig.recorder().latency().frameToReply(LineTap::nowUs()).count, 50);
    rig.log()->refreshStatus();
    const QString status = rig.inLog<QLabel>("LineStatus")->text();
    for (const char* part :
         {"Click to wire p50 ", " ms (1)", "Frame to reply p50 ", "Not recording"}) {
        EXPECT_TRUE(status.contains(QLatin1String(part))) << status.toStdString();
    }

    rig.quieten();
    // How a row reads is the model's (line_log_model_test.cpp).
    const int preset = rig.rowWith(LineLogModel::Fields, QStringLiteral("preset 31;"));
    ASSERT_GE(preset, 0);

    // The selected row in full below the table.
    table.selectRow(preset);
    const auto* detail = rig.inLog<QPlainTextEdit>("LineDetail");
    EXPECT_TRUE(detail->toPlainText().contains(QStringLiteral("[1] preset: 31")))
        << detail->toPlainText().toStdString();

    // Copied: the selected rows, a line each, tab between the cells.
    table.selectRow(0);
    table.selectionModel()->select(rig.model().index(2, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    rig.inLog<QPushButton>("CopyBut")->click();
    EXPECT_FALSE(rig.inLog<QPushButton>("CopyBut")->isChecked());  // a button, not a switch
    const QStringList lines =
        QApplication::clipboard()->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], rig.model().rowText(0));
    EXPECT_EQ(lines[1], rig.model().rowText(2));

    // Filtered from the controls: every frame the unit heard is a row to it,
    // every answer a row from it.
    const int all = rig.model().rowCount();
    auto* direction = rig.inLog<QComboBox>("DirectionFilter");
    direction->setCurrentIndex(1);
    EXPECT_EQ(static_cast<std::size_t>(rig.model().rowCount()), rig.line.frames().size());
    direction->setCurrentIndex(2);
    EXPECT_EQ(static_cast<std::uint64_t>(rig.model().rowCount()), rig.unit.framesAnswered());
    direction->setCurrentIndex(0);
    auto* code = rig.inLog<QComboBox>("CodeFilter");
    const int presets = code->findData(0x40);
    EXPECT_TRUE(code->itemText(presets).startsWith(QStringLiteral("40  ")));
    EXPECT_GE(code->view()->minimumWidth(), code->view()->sizeHintForColumn(0));  // not cut
    code->setCurrentIndex(presets);
    EXPECT_EQ(rig.model().rowCount(), 64);  // 32 requests, 32 records
    code->setCurrentIndex(1);
    EXPECT_LT(rig.model().rowCount(), all);
    code->setCurrentIndex(0);
    auto* text = rig.inLog<QLineEdit>("TextFilter");
    QTest::keyClicks(text, QStringLiteral("limit ccw"));
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(rig.model().rowCount(), 2);  // the request and the reply
    text->clear();
    // Typing waits for a pause before it filters.
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.model().rowCount() == all; }, 2000));

    // The link's events among the frames. A preset number past the table: the decoder's range
    // fault.
    rig.port->injectIncoming(encodeFrame(
        kAck, 0, test::message<vocab::PresetRecord>({{vocab::preset_record::kPreset, 40}}), 0));
    EXPECT_TRUE(rig.seesEvent("Run-time error"));

    // The unit falls silent: the watchdog.
    rig.window->link().Timer2().start();
    rig.line.setConnected(false);
    EXPECT_TRUE(rig.seesEvent("Watchdog expired: no reply within 250 ms"));
}

TEST(LineLog, RecordsFromItsWindowAndOpensRecordingsWithoutAUnit) {
    const QString path = QDir(QDir::tempPath()).filePath(QStringLiteral("line-log-test.pcapng"));
    QFile::remove(path);
    {
        LogRig rig;
        rig.openLog();
        std::vector<bool> forSaving;
        rig.recorder().setPathChooser([&path, &forSaving](bool saving) -> QCoro::Task<QString> {
            forSaving.push_back(saving);
            co_return path;
        });
        ASSERT_TRUE(rig.connect());
        auto* record = rig.inLog<QPushButton>("RecordBut");
        record->click();
        EXPECT_EQ(forSaving, std::vector<bool>{true});
        EXPECT_EQ(record->text(), QStringLiteral("Stop Recording"));
        QTest::qWait(50);
        rig.log()->refreshStatus();
        EXPECT_TRUE(rig.inLog<QLabel>("LineStatus")
                        ->text()
                        .contains(QStringLiteral("Recording to line-log-test.pcapng (")));
        record->click();
        EXPECT_FALSE(rig.recorder().recording());
        EXPECT_EQ(record->text(), QStringLiteral("Record..."));

        // A disk that fills up while recording: the recording stops, and
        // says so once the frame at hand is taken.
        const QString filling =
            QDir(QDir::tempPath()).filePath(QStringLiteral("line-log-filling.pcapng"));
        ASSERT_EQ(rig.recorder().startRecording(filling), QString());
        rig.log()->refreshStatus();
        EXPECT_TRUE(
            rig.inLog<QLabel>("LineStatus")->text().contains(QStringLiteral("(0 records)")));
        {
            const FullDisk full(static_cast<rlim_t>(QFileInfo(filling).size()) + 64);
            ASSERT_TRUE(full.active());
            ASSERT_TRUE(ConsoleRig::waitFor([&] { return !rig.recorder().recording(); }, 3000));
        }
        QFile::remove(filling);
        ASSERT_TRUE(ConsoleRig::waitFor([&] { return !rig.shown.empty(); }, 1000));
        EXPECT_EQ(
            rig.shown.back().text,
            QStringLiteral("Recording to %1 stopped: the file could not be written.").arg(filling));
        EXPECT_EQ(record->text(), QStringLiteral("Record..."));
        rig.shown.clear();

        // A folder nobody can write to: told, and nothing recorded.
        rig.recorder().setPathChooser(
            [](bool) -> QCoro::Task<QString> { co_return QStringLiteral("/proc/no/such.pcapng"); });
        record->click();
        EXPECT_FALSE(rig.recorder().recording());
        ASSERT_FALSE(rig.shown.empty());
        EXPECT_EQ(rig.shown.back().title, QStringLiteral("Record"));
        // A disk already full: refused at once, not one frame later.
        EXPECT_NE(rig.recorder().startRecording(QStringLiteral("/dev/full")), QString());
    }

    // What the file holds, frame by frame, is read in wireshark_test.cpp.
    std::vector<recording::LineRecord> read;
    std::string warning;
    ASSERT_EQ(sim::readRecordingFile(path.toStdString(), read, warning), "");
    EXPECT_EQ(warning, "");
    const int records = static_cast<int>(read.size());

    // Opened in a console that never went online.
    LogRig offline;
    bool openedForSaving = true;
    offline.recorder().setPathChooser(
        [&path, &openedForSaving](bool saving) -> QCoro::Task<QString> {
            openedForSaving = saving;
            co_return path;
        });
    offline.openLog();
    offline.inLog<QPushButton>("OpenBut")->click();
    EXPECT_FALSE(openedForSaving);
    auto* opened = offline.window->findChild<LineLogWindow*>(QStringLiteral("LineLogFile"));
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->windowTitle(), QStringLiteral("Line Log - line-log-test.pcapng"));
    EXPECT_EQ(opened->model().rowCount(), records);
    EXPECT_EQ(opened->findChild<QPushButton*>(QStringLiteral("RecordBut")), nullptr);
    opened->refreshStatus();
    // No clicks in a file: only its replies are timed.
    const QString status = opened->findChild<QLabel*>(QStringLiteral("LineStatus"))->text();
    EXPECT_TRUE(status.contains(QStringLiteral("line-log-test.pcapng: %1 records").arg(records)));
    EXPECT_TRUE(status.contains(QStringLiteral("Frame to reply ")));
    EXPECT_FALSE(status.contains(QStringLiteral("Click to wire"))) << status.toStdString();

    QFile::remove(path);
}

// A kept recording opened in the Line Log: the columns, the colours of
// events and of refused frames, the status line. The times are the
// recording's own, shown in UTC.
TEST(LineLog, AKeptRecordingLooksAsKept) {
    qputenv("TZ", "UTC");
    tzset();
    LogRig offline;
    offline.recorder().setPathChooser([](bool) -> QCoro::Task<QString> {
        co_return QStringLiteral(HALVEX_FUZZ_CASES "/recording-corpus/verdicts-and-events.pcapng");
    });
    offline.openLog();
    offline.inLog<QPushButton>("OpenBut")->click();
    auto* opened = offline.window->findChild<LineLogWindow*>(QStringLiteral("LineLogFile"));
    ASSERT_NE(opened, nullptr);
    opened->resize(1000, 300);
    opened->refreshStatus();
    // The longest name a frame has is not cut.
    EXPECT_GT(opened->table().horizontalHeader()->sectionSize(LineLogModel::Name),
              opened->table().fontMetrics().horizontalAdvance("lens configuration request"));
    expectLooksAsKept(*opened, {HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES},
                      QStringLiteral("line-log-recording"));
}
