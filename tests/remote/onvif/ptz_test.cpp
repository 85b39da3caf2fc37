// The ONVIF server over the session: who is answered, what each request
// puts on the line, the faults for requests it cannot carry out (with
// nothing moved), and the HTTP connection's rules.

#include <QSignalSpy>

#include "tests/remote/onvif/onvif_rig.h"

namespace halvex::testing {
namespace {

using onvif::OnvifServices;

class OnvifServerTest : public OnvifTest {
  protected:
    static QString move(const char* operation, const QString& inside,
                        const char* profile = "profile1") {
        return QStringLiteral("<tptz:%1><tptz:ProfileToken>%2</tptz:ProfileToken>%3</tptz:%1>")
            .arg(QLatin1String(operation), QLatin1String(profile), inside);
    }
    static QString presetToken(const char* token) {
        return QStringLiteral("<tptz:PresetToken>%1</tptz:PresetToken>").arg(QLatin1String(token));
    }
    static QString panTilt(const char* element, double x, double y, const char* space = nullptr) {
        return QStringLiteral("<tptz:%1><tt:PanTilt x=\"%2\" y=\"%3\"%4/></tptz:%1>")
            .arg(QLatin1String(element))
            .arg(x)
            .arg(y)
            .arg(space ? QStringLiteral(" space=\"%1\"").arg(QLatin1String(space)) : QString());
    }
};

TEST_F(OnvifServerTest, OnlySignedRequestsAreAnsweredButTheTime) {
    const struct {
        const char* name;
        QByteArray request;
        int status;
        const char* answer;
    } cases[] = {
        {"unsigned", envelope("<trt:GetProfiles/>", QString()), 400,
         "env:Sender ter:NotAuthorized"},
        {"the time, unsigned", envelope("<tds:GetSystemDateAndTime/>", QString()), 200,
         "GetSystemDateAndTimeResponse"},
        {"not offered", envelope("<tptz:SetHomePosition/>"), 500,
         "env:Receiver ter:ActionNotSupported"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray response = post(c.request, "/onvif/media_service");
        EXPECT_EQ(statusOf(response), c.status);
        EXPECT_EQ(faultOf(bodyOf(response)), QString::fromLatin1(c.answer));
    }
}

TEST_F(OnvifServerTest, RequestsItCannotCarryOutAreFaultsAndMoveNothing) {
    ASSERT_TRUE(connect());
    const char* degrees = onvif::space::kPanTiltDegrees;
    const QString invalidArgs = "env:Sender ter:InvalidArgs";
    const QString notSupported = "env:Receiver ter:ActionNotSupported";
    const auto argVal = [](const char* sub) {
        return "env:Sender ter:InvalidArgVal ter:" + QString(sub);
    };
    const auto absoluteTo = [](const QString& position) {
        return move("AbsoluteMove", "<tptz:Position>" + position + "</tptz:Position>");
    };
    const auto within = [](const char* timeout) {
        return move("ContinuousMove",
                    panTilt("Velocity", 1, 0) + "<tptz:Timeout>" + timeout + "</tptz:Timeout>");
    };
    const std::pair<QString, QString> cases[] = {
        {"<trt:AbsoluteMove/>", notSupported},  // another service's namespace
        {"<tds:GetCapabilities><tds:Category>Imaging</tds:Category></tds:GetCapabilities>",
         notSupported + " ter:NoSuchService"},
        {move("AbsoluteMove", panTilt("Position", 0, 0), "profile3"), argVal("NoProfile")},
        {"<tptz:GetConfiguration><tptz:PTZConfigurationToken>ptz3</tptz:PTZConfigurationToken>"
         "</tptz:GetConfiguration>",
         argVal("NoConfig")},
        {move("AbsoluteMove", {}), invalidArgs},
        {absoluteTo("<tptz:PanTilt x=\"0\" y=\"0\"/>"), invalidArgs},  // the wrong namespace
        {absoluteTo("<tt:PanTilt x=\"left\" y=\"0\"/>"), "env:Sender ter:InvalidArgVal"},
        {move("AbsoluteMove", panTilt("Position", 1.5, 0)), argVal("InvalidPosition")},
        {move("AbsoluteMove", panTilt("Position", 0, 0, "urn:x")), argVal("InvalidPosition")},
        {move("AbsoluteMove", panTilt("Position", 175, 0, degrees)), argVal("InvalidPosition")},
        {absoluteTo("<tt:Zoom x=\"1.2\"/>"), argVal("InvalidPosition")},
        {move("ContinuousMove", panTilt("Velocity", 0, -2)), argVal("InvalidVelocity")},
        {within("PT0S"), argVal("TimeoutNotSupported")},
        {within("5s"), argVal("TimeoutNotSupported")},
        {move("GotoPreset", presetToken("03")), argVal("NoToken")},
        {move("GotoPreset", presetToken("-1")), argVal("NoToken")},
        {"<trt:GetStreamUri><trt:ProfileToken>profile1</trt:ProfileToken></trt:GetStreamUri>",
         argVal("NoSource")}};
    const std::size_t mark = line.frames().size();
    for (const auto& [body, fault] : cases) {
        SCOPED_TRACE(body.toStdString());
        EXPECT_EQ(ask(body), fault);
    }
    // A malformed envelope, answered before any operation is read.
    EXPECT_EQ(faultOf(bodyOf(post("<s:Envelope><tptz:Stop>"))),
              QStringLiteral("env:Sender ter:WellFormed"));
    runUntil([] { return false; }, 100);
    EXPECT_EQ(commandsSince(mark), Messages{});
    EXPECT_FALSE(server.services().jog().driving());
}

TEST_F(OnvifServerTest, MovesRefusedOfflineOrWhileTheOperatorJogsMoveNothing) {
    const QString moves[] = {move("AbsoluteMove", panTilt("Position", 0.2, 0.2)),
                             move("ContinuousMove", panTilt("Velocity", 0.5, 0)),
                             move("SetPreset", presetToken("2")), move("GetStatus", {})};
    for (const QString& request : moves) {
        SCOPED_TRACE(request.toStdString());
        EXPECT_EQ(ask(request), QStringLiteral("env:Receiver ter:Action ter:NoStatus"));
    }
    ASSERT_TRUE(connect());
    JogDemand operatorJog;
    operatorJog.pan = {60, true};
    session.jogSources().apply(JogSource::Keyboard, operatorJog);
    const std::size_t mark = line.frames().size();
    for (const QString& request : moves) {
        SCOPED_TRACE(request.toStdString());
        EXPECT_EQ(ask(request),
                  request.contains("GetStatus") ? "GetStatusResponse" : "env:Receiver ter:Action");
    }
    runUntil([] { return false; }, 100);
    EXPECT_EQ(commandsSince(mark), Messages{});
    EXPECT_EQ(session.jog().PanJogSpeed, 60);
}

TEST_F(OnvifServerTest, EachMoveReachesTheLineAsTheUnitsMessage) {
    ASSERT_TRUE(connect());
    namespace store = vocab::store_preset;
    const auto storeCurrent = [](int n) {
        return test::message<vocab::StoreCurrentPosition>(
            {{vocab::store_current_position::kPreset, n}});
    };
    const std::pair<QString, std::vector<Byte>> cases[] = {
        {move("AbsoluteMove", panTilt("Position", 12.345, -5.678, onvif::space::kPanTiltDegrees)),
         absolute(1235, -568)},
        {move("RelativeMove",
              panTilt("Translation", -10, 2.5, onvif::space::kPanTiltDegreesTranslation)),
         test::message<vocab::DeltaMove>(
             {{vocab::delta_move::kPan, -1000}, {vocab::delta_move::kTilt, 250}})},
        {move("GotoHomePosition", {}), vocab::blank<vocab::MoveToHome>()},
        {move("GotoPreset", presetToken("0")),
         test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, 0}})},
        // A preset removed is cleared, and a new one takes the first cleared.
        {move("RemovePreset", presetToken("7")),
         test::message<vocab::StorePreset>(
             {{store::kPreset, 7}, {store::kPan, 0}, {store::kTilt, 0}})},
        {move("SetPreset", "<tptz:PresetName>door</tptz:PresetName>"), storeCurrent(0)},
        {move("SetPreset", "<tptz:PresetName>Preset 12</tptz:PresetName>"), storeCurrent(12)}};
    for (const auto& [request, message] : cases) {
        SCOPED_TRACE(request.toStdString());
        const std::size_t mark = line.frames().size();
        EXPECT_TRUE(ask(request).endsWith(QLatin1String("Response")));
        EXPECT_EQ(commandsAfter(mark), Messages{message});
    }
}

TEST_F(OnvifServerTest, GenericSpacesSpanSoftLimitsThatAreNotCentredAndMovesByLandInside) {
    // The unit reads pan 100 and tilt 37.5 where it rests, and its soft
    // limits as pan -50..150 and tilt -60..70.
    unit.state().settings.panOffset = 10000;
    unit.state().settings.tiltOffset = 3750;
    unit.state().settings.softLimits = {5000, -15000, 3250, -9750};
    ASSERT_TRUE(connect());
    ASSERT_TRUE(arrives(100.0, 37.5));
    const auto moved = [&](const QString& request) {
        const std::size_t mark = line.frames().size();
        EXPECT_TRUE(ask(request).endsWith(QLatin1String("Response")));
        return commandsAfter(mark);
    };
    namespace delta = vocab::delta_move;
    EXPECT_EQ(
        moved(move("RelativeMove", panTilt("Translation", 0.25, -0.1))),
        Messages{test::message<vocab::DeltaMove>({{delta::kPan, 2500}, {delta::kTilt, -650}})});
    // Past the soft limits from where the unit is, not from the centre.
    const char* degrees = onvif::space::kPanTiltDegreesTranslation;
    for (const auto& [pan, tilt] : {std::pair{55.0, 0.0}, std::pair{0.0, 40.0}}) {
        EXPECT_EQ(ask(move("RelativeMove", panTilt("Translation", pan, tilt, degrees))),
                  QStringLiteral("env:Sender ter:InvalidArgVal ter:InvalidTranslation"));
    }
    // A zoom by alone holds pan and tilt where they are: camera 1's lens from
    // half way (128) a quarter further in.
    namespace lenses = vocab::absolute_move_with_lenses;
    const auto hold = vocab::absolute_move::kHoldAxis;
    EXPECT_EQ(
        moved(move("RelativeMove", "<tptz:Translation><tt:Zoom x=\"0.25\"/></tptz:Translation>")),
        Messages{test::message<vocab::AbsoluteMoveWithLenses>({{lenses::kPan, hold},
                                                               {lenses::kTilt, hold},
                                                               {lenses::kLens[0], 192},
                                                               {lenses::kLens[1], 128},
                                                               {lenses::kLens[2], 128},
                                                               {lenses::kLens[3], 128}})});
    EXPECT_EQ(moved(move("AbsoluteMove", panTilt("Position", 0.5, 0.5))),
              Messages{absolute(10000, 3750)});
}

TEST_F(OnvifServerTest, StopEndsPanAndTiltOrZoomAloneAndAPresetIsNotSavedWhileJogging) {
    ASSERT_TRUE(connect());
    ASSERT_EQ(ask(move("ContinuousMove",
                       "<tptz:Velocity><tt:PanTilt x=\"0.2\" y=\"-0.2\"/><tt:Zoom x=\"-0.5\"/>"
                       "</tptz:Velocity>",
                       "profile2")),
              QStringLiteral("ContinuousMoveResponse"));
    ASSERT_TRUE(runUntil([&] { return session.jog().PanJogSpeed == 51; }, 2000));
    EXPECT_EQ(session.jog().TiltJogSpeed, 51);
    // Camera 2's profile zooms camera 2's lens.
    EXPECT_EQ(session.jog().LensJogSpeeds[2], lensJogByte(-64));
    EXPECT_EQ(ask(move("SetPreset", presetToken("4"))),
              QStringLiteral("env:Receiver ter:Action ter:MovingPTZ"));

    EXPECT_EQ(ask(move("Stop", "<tptz:PanTilt>true</tptz:PanTilt><tptz:Zoom>false</tptz:Zoom>")),
              QStringLiteral("StopResponse"));
    EXPECT_EQ(session.jog().PanJogSpeed, 0);
    EXPECT_EQ(session.jog().LensJogSpeeds[2], lensJogByte(-64));
    const std::size_t mark = line.frames().size();
    EXPECT_EQ(ask(move("Stop", {})), QStringLiteral("StopResponse"));
    EXPECT_EQ(session.jog().LensJogSpeeds[2], 0);
    EXPECT_TRUE(runUntil([&] { return stopsSince(mark) >= 1; }, 2000));
    EXPECT_FALSE(server.services().jog().driving());

    // A Timeout ends a continuous move with no Stop.
    EXPECT_EQ(ask(move("ContinuousMove",
                       panTilt("Velocity", -1, 0) + "<tptz:Timeout>PT0.15S</tptz:Timeout>")),
              QStringLiteral("ContinuousMoveResponse"));
    ASSERT_TRUE(runUntil([&] { return session.jog().PanJogSpeed == 255; }, 2000));
    EXPECT_TRUE(runUntil([&] { return session.jog().PanJogSpeed == 0; }, 2000));
    EXPECT_FALSE(server.services().jog().driving());
}

TEST_F(OnvifServerTest, ConnectionsKeepAliveAndEndOnRequestsThatBreakTheRules) {
    server.setTimeouts(100, 250);
    QSignalSpy handled(&server, &OnvifServer::commandHandled);
    const QByteArray time = httpPost(envelope("<tds:GetSystemDateAndTime/>", QString()));
    HttpClient kept;
    ASSERT_TRUE(kept.connectTo(server.serverPort()));
    kept.socket.write(time + time);
    const QByteArray first = kept.response();
    EXPECT_TRUE(first.startsWith(
        "HTTP/1.1 200 OK\r\nContent-Type: application/soap+xml; "
        "charset=utf-8\r\nContent-Length: " +
        QByteArray::number(bodyOf(first).size()) + "\r\nConnection: keep-alive\r\n\r\n<?xml"));
    EXPECT_EQ(statusOf(kept.response()), 200);
    EXPECT_EQ(server.clientCount(), 1);
    ASSERT_EQ(handled.size(), 2);
    EXPECT_EQ(handled[0],
              (QVariantList{QStringLiteral("GetSystemDateAndTime"),
                            QStringLiteral("127.0.0.1:%1").arg(kept.socket.localPort())}));

    // Asked to close: the request after it is not answered.
    HttpClient closing;
    ASSERT_TRUE(closing.connectTo(server.serverPort()));
    QByteArray last = time;
    closing.socket.write(last.replace("\r\n\r\n", "\r\nConnection: close\r\n\r\n") + time);
    EXPECT_EQ(statusOf(closing.response()), 200);
    EXPECT_TRUE(closing.waitClosedByServer());
    EXPECT_TRUE(closing.received.isEmpty());

    // A client that says nothing is let go.
    HttpClient idle;
    ASSERT_TRUE(idle.connectTo(server.serverPort()));
    EXPECT_TRUE(idle.waitClosedByServer());
    EXPECT_TRUE(idle.received.isEmpty());

    // The whole response: what went wrong, and whether the connection stays.
    const auto plain = [](const char* status, const char* connection, const QByteArray& text) {
        return "HTTP/1.1 " + QByteArray(status) +
               "\r\nContent-Type: text/plain\r\nContent-Length: " +
               QByteArray::number(text.size() + 1) + "\r\nConnection: " + connection + "\r\n" +
               (text.startsWith("SOAP") ? "Allow: POST\r\n" : "") + "\r\n" + text + "\n";
    };
    const struct {
        const char* name;
        QByteArray request;
        QByteArray response;
    } cases[] = {
        {"GET", "GET /onvif/device_service HTTP/1.1\r\n\r\n",
         plain("405 Method Not Allowed", "keep-alive", "SOAP requests are POSTed")},
        {"unknown path", httpPost("<x/>", "/index.html"),
         plain("404 Not Found", "keep-alive", "no such service")},
        {"cut short", time.left(time.size() - 10),
         plain("408 Request Timeout", "close", "the rest of the request did not come")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        HttpClient client;
        ASSERT_TRUE(client.connectTo(server.serverPort()));
        client.socket.write(c.request);
        EXPECT_EQ(client.response(), c.response);
        if (c.response.contains("close")) {
            EXPECT_TRUE(client.waitClosedByServer());
        }
    }
    server.close();
    EXPECT_TRUE(kept.waitClosedByServer());
    EXPECT_EQ(server.clientCount(), 0);
}

}  // namespace
}  // namespace halvex::testing
