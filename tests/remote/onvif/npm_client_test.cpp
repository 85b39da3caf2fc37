// The npm "onvif" client, as video management systems use it, against the
// ONVIF server over the virtual unit: each of its steps is checked by what
// it reads and by the messages that reach the line.

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include "tests/remote/onvif/onvif_rig.h"

namespace halvex::testing {
namespace {

// The client as a node process, driven a step at a time.
class NpmClient {
  public:
    bool start(quint16 port) {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral("node"),
                      {QStringLiteral(HALVEX_ONVIF_CLIENT_SCRIPT),
                       QStringLiteral(HALVEX_ONVIF_CLIENT_DIR "/node_modules"),
                       QString::number(port), QLatin1String(kUser), QLatin1String(kPassword)});
        return process.waitForStarted(5000);
    }
    ~NpmClient() {
        process.closeWriteChannel();
        if (!process.waitForFinished(3000)) {
            process.kill();
            process.waitForFinished(1000);
        }
    }
    // Runs one step and gives its answer (empty when none comes).
    QJsonObject step(const QJsonObject& step) {
        process.write(QJsonDocument(step).toJson(QJsonDocument::Compact) + '\n');
        QJsonObject answer;
        runUntil(
            [&] {
                if (!process.canReadLine()) {
                    return false;
                }
                answer = QJsonDocument::fromJson(process.readLine()).object();
                return true;
            },
            10000);
        return answer;
    }
    QJsonObject call(const char* method, const QJsonObject& options) {
        return step({{"op", "call"}, {"method", QLatin1String(method)}, {"options", options}});
    }
    // Whether a call went through.
    bool ok(const char* method, const QJsonObject& options) {
        return call(method, options).value("ok").toBool();
    }

    QProcess process;
};

class NpmClientTest : public OnvifTest {
  protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable(QStringLiteral("node")).isEmpty() ||
            !QFileInfo::exists(
                QStringLiteral(HALVEX_ONVIF_CLIENT_DIR "/node_modules/onvif/package.json"))) {
            GTEST_SKIP() << "node or the npm onvif client is not installed "
                            "(tests/remote/onvif/install-client.sh)";
        }
        ASSERT_TRUE(client.start(server.serverPort()));
    }

    NpmClient client;
};

TEST_F(NpmClientTest, ConnectsReadsAndMovesTheUnit) {
    ASSERT_TRUE(connect());
    QStringList handled;
    QObject::connect(&server, &OnvifServer::commandHandled,
                     [&handled](const QString& what, const QString&) { handled << what; });
    // A wrong password: the time is read, nothing after it.
    EXPECT_EQ(client.step({{"op", "connect"}, {"password", "wrong"}}),
              (QJsonObject{{"op", "connect"},
                           {"ok", false},
                           {"error", "ONVIF SOAP Fault: wrong user name or password"}}));
    EXPECT_EQ(handled, QStringList{"GetSystemDateAndTime"});

    EXPECT_EQ(client.step({{"op", "connect"}}).value("result").toObject(),
              (QJsonObject{{"profiles", QJsonArray{"profile1", "profile2"}},
                           {"activeSource", "profile1"},
                           {"services", QJsonArray{"device", "media", "ptz"}}}));

    // A tenth of the way to the right and down the soft limits (170, 85),
    // camera 1's zoom half way in.
    std::size_t mark = line.frames().size();
    const LensPositions lens = session.status().Lens;
    EXPECT_TRUE(client.ok("absoluteMove", {{"x", 0.1}, {"y", -0.1}, {"zoom", 0.5}}));
    namespace moving = vocab::absolute_move_with_lenses;
    EXPECT_EQ(
        commandsAfter(mark),
        Messages{test::message<vocab::AbsoluteMoveWithLenses>({{moving::kPan, 1700},
                                                               {moving::kTilt, -850},
                                                               {moving::kLens[0], 128},
                                                               {moving::kLens[1], lens[1]},
                                                               {moving::kLens[2], lens[2]},
                                                               {moving::kLens[3], lens[3]}})});
    ASSERT_TRUE(arrives(17.0, -8.5));
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == 128; }, 5000));
    EXPECT_EQ(client.call("getStatus", {}).value("result").toObject().value("position"),
              (QJsonObject{{"x", 0.1}, {"y", -0.1}, {"zoom", 0.50196078}}));

    EXPECT_TRUE(client.ok("continuousMove", {{"x", 0.5}, {"y", 0}, {"zoom", 0.25}}));
    ASSERT_TRUE(runUntil([&] { return session.jog().PanJogSpeed == 128; }, 2000));
    EXPECT_TRUE(session.jog().PanJogDirection);
    EXPECT_EQ(session.jog().LensJogSpeeds[0], lensJogByte(32));
    EXPECT_TRUE(client.ok("stop", {}));
    EXPECT_EQ(session.jog().PanJogSpeed, 0);

    mark = line.frames().size();
    const QJsonObject saved =
        client.call("setPreset", {{"presetToken", "5"}, {"presetName", "Preset 5"}});
    EXPECT_EQ(saved.value("result").toArray().at(0)["setPresetResponse"][0]["presetToken"][0], "5");
    EXPECT_EQ(commandsAfter(mark), Messages{test::message<vocab::StoreCurrentPosition>(
                                       {{vocab::store_current_position::kPreset, 5}})});
}

}  // namespace
}  // namespace halvex::testing
