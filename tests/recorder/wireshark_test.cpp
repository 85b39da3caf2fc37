// A session against the virtual unit, recorded and opened with Debian's
// tshark running the dissector the build generates: every frame is named,
// directed and decoded as the Line Log shows it.

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <set>

#include "protocol/frame_description.h"
#include "protocol/line_recording.h"
#include "recorder/line_recorder.h"
#include "tests/support/console_rig.h"
#include "tests/support/messages.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;
using recording::LineKind;
using recording::LineRecord;

namespace {

// The records of a recording, as far as it reads.
std::vector<LineRecord> readRecording(const QString& path, std::string* error = nullptr) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray bytes = file.readAll();
    recording::RecordingReader reader(reinterpret_cast<const Byte*>(bytes.constData()),
                                      static_cast<std::size_t>(bytes.size()));
    std::vector<LineRecord> records;
    while (auto record = reader.next()) {
        records.push_back(*record);
    }
    if (error != nullptr) {
        *error = reader.error();
    }
    return records;
}

// One line of tshark's field output per packet.
struct Packet {
    QString packetDirection;  // frame.packet_flags_direction
    QString direction;        // halvex.direction
    QString name;
    QString info;
    QString pan;
    QString tilt;
    QString preset;
    QString expert;
};

std::vector<Packet> dissect(const QString& path, QString* errors) {
    QStringList arguments = {QStringLiteral("-X"), QStringLiteral("lua_script:" HALVEX_DISSECTOR),
                             QStringLiteral("-r"), path,
                             QStringLiteral("-T"), QStringLiteral("fields"),
                             QStringLiteral("-E"), QStringLiteral("occurrence=f")};
    for (const char* field :
         {"frame.packet_flags_direction", "halvex.direction", "halvex.name", "_ws.col.Info",
          "halvex.pan", "halvex.tilt", "halvex.preset", "_ws.expert.message"}) {
        arguments << QStringLiteral("-e") << QLatin1String(field);
    }
    QProcess tshark;
    tshark.start(QStandardPaths::findExecutable(QStringLiteral("tshark")), arguments);
    EXPECT_TRUE(tshark.waitForFinished(60000));
    *errors = QString::fromUtf8(tshark.readAllStandardError());
    std::vector<Packet> packets;
    for (const QString& line : QString::fromUtf8(tshark.readAllStandardOutput())
                                   .split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList f = line.split(QLatin1Char('\t'));
        if (f.size() < 8) {
            ADD_FAILURE() << line.toStdString();
            continue;
        }
        packets.push_back({f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7]});
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
        // Preset 5 holds a place worth reading back.
        const auto wire =
            encodeFrame(kStx, 0,
                        test::message<vocab::StorePreset>({{vocab::store_preset::kPreset, 5},
                                                           {vocab::store_preset::kPan, 1234},
                                                           {vocab::store_preset::kTilt, -500}}),
                        0);
        rig.unit.receiveFromConsole(wire.data(), wire.size());
        rig.unit.takeOutput();

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
    std::string error;
    const std::vector<LineRecord> records = readRecording(path, &error);
    EXPECT_EQ(error, "");
    QString errors;
    const std::vector<Packet> packets = dissect(path, &errors);
    EXPECT_FALSE(errors.contains(QStringLiteral("Lua"))) << errors.toStdString();
    ASSERT_EQ(packets.size(), records.size()) << errors.toStdString();
    ASSERT_GT(records.size(), 100u);

    bool sawTarget = false;
    bool sawPreset = false;
    bool sawRefused = false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const LineRecord& record = records[i];
        const Packet& packet = packets[i];
        SCOPED_TRACE(packet.info.toStdString());
        if (record.kind == LineKind::Event) {
            EXPECT_EQ(packet.info,
                      QStringLiteral("event: ") + QString::fromStdString(record.text()));
            continue;
        }
        const table::FrameDescription frame = table::describeFrame(record.bytes);
        // Word for word what the Line Log says.
        EXPECT_EQ(packet.info, QString::fromStdString(frame.summary()));
        EXPECT_EQ(packet.name, QString::fromStdString(frame.name));
        const bool sent = record.kind == LineKind::Sent;
        EXPECT_EQ(packet.packetDirection,
                  sent ? QStringLiteral("0x00000002") : QStringLiteral("0x00000001"));
        EXPECT_EQ(packet.direction, sent ? QStringLiteral("1") : QStringLiteral("2"));

        if (frame.name == "target report" && frame.code == vocab::AbsoluteMove::kCode) {
            sawTarget = true;
            EXPECT_DOUBLE_EQ(packet.pan.toDouble(), 45.5);
            EXPECT_DOUBLE_EQ(packet.tilt.toDouble(), -10.25);
        }
        if (frame.name == "preset record" && packet.preset == QStringLiteral("5")) {
            sawPreset = true;
            EXPECT_DOUBLE_EQ(packet.pan.toDouble(), 12.34);
            EXPECT_DOUBLE_EQ(packet.tilt.toDouble(), -5.0);
        }
        if (record.verdict == recording::Verdict::BadLrc) {
            sawRefused = true;
            EXPECT_TRUE(packet.expert.contains(QStringLiteral("console rejected")));
        }
    }
    EXPECT_TRUE(sawTarget);
    EXPECT_TRUE(sawPreset);
    EXPECT_TRUE(sawRefused);
    QFile::remove(path);
}

// The console program itself, recording from the start of a connection; it
// is killed, not closed: every frame before that is in the file.
TEST(Wireshark, HalvexRecordsTheLineFromTheStart) {
    if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty()) {
        GTEST_SKIP() << "tshark is not installed (Debian package tshark)";
    }
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("start.pcapng"));
    QProcess console;
    console.setWorkingDirectory(folder.path());
    // The user's own settings stay out of it.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder.path());
    console.setProcessEnvironment(environment);
    console.setProcessChannelMode(QProcess::SeparateChannels);
    console.start(QStringLiteral(HALVEX_PATH),
                  {QStringLiteral("--simulate"), QStringLiteral("--connect"),
                   QStringLiteral("--record"), path});
    // Killed as soon as the first reads of the connection sequence are in
    // the file.
    QByteArray said;
    const auto requestsSoFar = [&path] {
        std::set<Byte> codes;
        for (const LineRecord& record : readRecording(path)) {
            if (record.kind == LineKind::Sent) {
                codes.insert(table::describeFrame(record.bytes).code.value_or(0));
            }
        }
        return codes.size() - codes.count(vocab::JogMessage::kCode);
    };
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return requestsSoFar() >= 2; }, 30000));
    console.kill();
    console.waitForFinished(5000);
    said += console.readAllStandardError();
    EXPECT_TRUE(said.contains("halvex: recording the line to " + path.toUtf8()))
        << said.toStdString();

    QString errors;
    const std::vector<Packet> packets = dissect(path, &errors);
    ASSERT_GT(packets.size(), 2u) << errors.toStdString();
    EXPECT_EQ(packets[0].name, QStringLiteral("jog message"));
    EXPECT_EQ(packets[0].direction, QStringLiteral("1"));
    EXPECT_EQ(packets[1].name, QStringLiteral("position report"));
    EXPECT_EQ(packets[1].direction, QStringLiteral("2"));
    QStringList requests;
    for (const Packet& packet : packets) {
        if (packet.direction == QStringLiteral("1") &&
            packet.name != QStringLiteral("jog message") && !requests.contains(packet.name)) {
            requests << packet.name;
        }
    }
    // The connection sequence's first reads, in its order.
    EXPECT_EQ(requests.mid(0, 2), (QStringList{QStringLiteral("offsets request"),
                                               QStringLiteral("soft limit request")}));

    // Handed a file it cannot write, the console says so and does not start.
    QProcess refused;
    refused.start(QStringLiteral(HALVEX_PATH),
                  {QStringLiteral("--record"), QStringLiteral("/proc/no/such/file.pcapng")});
    ASSERT_TRUE(refused.waitForFinished(10000));
    EXPECT_EQ(refused.exitCode(), 1);
    EXPECT_TRUE(
        refused.readAllStandardError().contains("Cannot record to /proc/no/such/file.pcapng"));
}
