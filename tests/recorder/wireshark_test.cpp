// A session against the virtual unit, recorded and opened with Debian's
// tshark running the dissector the build generates: every frame is named,
// directed and decoded as the Line Log shows it.

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include "protocol/frame_description.h"
#include "protocol/line_recording.h"
#include "recorder/line_recorder.h"
#include "sim/replay_unit.h"
#include "tests/support/console_rig.h"
#include "tests/support/messages.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;
using recording::LineKind;
using recording::LineRecord;

namespace {

// tshark's fields, one list per packet.
enum { PacketDirection, Direction, Name, Info, Pan, Tilt, Expert };
const char* const kFields[] = {"frame.packet_flags_direction",
                               "halvex.direction",
                               "halvex.name",
                               "_ws.col.Info",
                               "halvex.pan",
                               "halvex.tilt",
                               "_ws.expert.message"};

std::vector<QStringList> dissect(const QString& path, QString* errors) {
    QStringList arguments = {QStringLiteral("-X"), QStringLiteral("lua_script:" HALVEX_DISSECTOR),
                             QStringLiteral("-r"), path,
                             QStringLiteral("-T"), QStringLiteral("fields"),
                             QStringLiteral("-E"), QStringLiteral("occurrence=f")};
    for (const char* field : kFields) {
        arguments << QStringLiteral("-e") << QLatin1String(field);
    }
    QProcess tshark;
    tshark.start(QStandardPaths::findExecutable(QStringLiteral("tshark")), arguments);
    EXPECT_TRUE(tshark.waitForFinished(60000));
    *errors = QString::fromUtf8(tshark.readAllStandardError());
    std::vector<QStringList> packets;
    for (const QString& line : QString::fromUtf8(tshark.readAllStandardOutput())
                                   .split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        packets.push_back(line.split(QLatin1Char('\t')));
        EXPECT_EQ(packets.back().size(), qsizetype{std::size(kFields)}) << line.toStdString();
        packets.back().resize(qsizetype{std::size(kFields)});
    }
    return packets;
}

}  // namespace

TEST(Wireshark, DissectorNamesAndDecodesEveryFrameOfARecordedSessionAsTheLineLogDoes) {
    if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty()) {
        GTEST_SKIP() << "tshark is not installed (Debian package tshark)";
    }
    const QString path = QDir(QDir::tempPath()).filePath(QStringLiteral("wireshark-test.pcapng"));
    {
        ConsoleRig rig;
        ASSERT_EQ(rig.window->lineRecorder().startRecording(path), QString());
        ASSERT_TRUE(rig.connect());
        rig.window->panTiltPage().PanDesLED->setValue(45.5);
        rig.window->panTiltPage().TiltDesLED->setValue(-10.25);
        rig.click(QStringLiteral("AbsoBut"));
        // A reply whose LRC the console refuses.
        auto refused = encodeFrame(kAck, 0, test::sample(30), 0);
        refused[refused.size() - 2] ^= 0x40;
        rig.port->injectIncoming(refused);
        QTest::qWait(150);
        rig.window->lineRecorder().stopRecording();
    }
    std::vector<LineRecord> records;
    std::string warning;
    sim::readRecordingFile(path.toStdString(), records, warning);
    EXPECT_EQ(warning, "");
    QString errors;
    const std::vector<QStringList> packets = dissect(path, &errors);
    EXPECT_FALSE(errors.contains(QStringLiteral("Lua"))) << errors.toStdString();
    ASSERT_EQ(packets.size(), records.size()) << errors.toStdString();
    ASSERT_GT(records.size(), 100u);

    bool sawTarget = false;
    bool sawRefused = false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const LineRecord& record = records[i];
        const QStringList& packet = packets[i];
        SCOPED_TRACE(packet[Info].toStdString());
        if (record.kind == LineKind::Event) {
            EXPECT_EQ(packet[Info],
                      QStringLiteral("event: ") + QString::fromStdString(record.text()));
            continue;
        }
        const table::FrameDescription frame = table::describeFrame(record.bytes);
        // Word for word what the Line Log says.
        EXPECT_EQ(packet[Info], QString::fromStdString(frame.summary()));
        EXPECT_EQ(packet[Name], QString::fromStdString(frame.name));
        const bool sent = record.kind == LineKind::Sent;
        EXPECT_EQ(packet[PacketDirection],
                  sent ? QStringLiteral("0x00000002") : QStringLiteral("0x00000001"));
        EXPECT_EQ(packet[Direction], sent ? QStringLiteral("1") : QStringLiteral("2"));

        if (frame.name == "target report" && frame.code == vocab::AbsoluteMove::kCode) {
            sawTarget = true;
            EXPECT_DOUBLE_EQ(packet[Pan].toDouble(), 45.5);
            EXPECT_DOUBLE_EQ(packet[Tilt].toDouble(), -10.25);
        }
        if (record.verdict == recording::Verdict::BadLrc) {
            sawRefused = true;
            EXPECT_TRUE(packet[Expert].contains(QStringLiteral("console rejected")));
        }
    }
    EXPECT_TRUE(sawTarget);
    EXPECT_TRUE(sawRefused);
    QFile::remove(path);
}
