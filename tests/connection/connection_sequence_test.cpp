#include <gtest/gtest.h>

#include <QAction>
#include <QElapsedTimer>
#include <QTabWidget>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "connection/connection_sequence.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/console_rig.h"
#include "tests/support/finish.h"
#include "tests/support/messages.h"
#include "views/widgets/lamp_pictures.h"

using namespace halvex;
using namespace halvex::testing;
using Messages_ = std::vector<std::vector<Byte>>;

namespace {
template <class... M>
void addReads(Messages_& into) {
    (into.push_back(vocab::readRequest<M>()), ...);
}

// Every request of the connection sequence after the first jog message, in
// order, for a unit whose tours are empty, is where `requests` begins.
void expectSequence(Messages_ requests) {
    namespace v = vocab;
    using test::message;
    Messages_ expected = {message<v::OffsetsRequest>()};
    for (int limit = 0; limit < v::soft_limit::kLimits; ++limit) {
        expected.push_back(test::withBits(message<v::SoftLimit>({{v::soft_limit::kLimit, limit}}),
                                          {v::kReadRequest<v::SoftLimit>}));
    }
    for (int n = 0; n < 32; ++n) {
        expected.push_back(message<v::PresetRequest>({{v::preset_request::kPreset, n}}));
    }
    expected.push_back(message<v::TourStepCountRequest>({{v::tour_step_count_request::kTour, 0}}));
    expected.push_back(message<v::CentreRequest>());
    expected.push_back({0x92, 0x80, 0, 0, 0, 0, 0, 0, 0});
    addReads<v::PanSteps, v::TiltSteps, v::TopSpeeds>(expected);
    expected.push_back(test::withBits(v::readRequest<v::TopSpeeds>(), {v::top_speeds::kSecond}));
    addReads<v::CommTimeout, v::Directions, v::Heater>(expected);
    expected.push_back(message<v::FirmwareRequest>());
    addReads<v::Encoders, v::LensConfiguration, v::CameraLines, v::CameraTimeouts,
             v::VideoConfiguration, v::AngleDisplay, v::NameDisplay>(expected);
    ASSERT_GE(requests.size(), expected.size());
    requests.resize(expected.size());
    EXPECT_EQ(requests, expected);
}

bool isJog(const std::vector<Byte>& m) {
    return m.at(0) == vocab::JogMessage::kCode;
}
}  // namespace

TEST(ConnectionSequence, ReadsTheWholeUnitInOrderAndGoesOnline) {
    ConsoleRig rig;
    auto* tabs = rig.find<QTabWidget>(QStringLiteral("SSTab1"));
    ASSERT_TRUE(rig.connect());
    EXPECT_EQ(rig.window->windowTitle(),
              QStringLiteral("Halvex Remote Control Emulator Ver 2.00 Using COM1 At 9600 Online"));
    EXPECT_TRUE(tabs->isEnabled());
    EXPECT_EQ(tabs->currentIndex(), 0);
    EXPECT_TRUE(rig.shown.empty());

    expectSequence(rig.line.messages(false));
}

TEST(ConnectionSequence, MissingPortShowsTheMessageAndStaysOffline) {
    ConsoleRig rig;
    rig.port->setOpenFails(true);
    rig.click(QStringLiteral("StartBut"));
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_EQ(rig.shown[0].title, QStringLiteral("Could Not Open COM1"));
    EXPECT_FALSE(rig.window->link().Timer1().isActive());
    EXPECT_FALSE(rig.window->link().Timer2().isActive());
    EXPECT_TRUE(rig.window->windowTitle().endsWith(QStringLiteral(" Offline")));
    EXPECT_TRUE(rig.line.frames().empty());

    // The port opens but goes away before the unit answers: no second box.
    rig.port->setOpenFails(false);
    rig.line.setConnected(false);
    QTimer::singleShot(200, rig.window.get(), [&] { rig.port->close(); });
    rig.click(QStringLiteral("StartBut"));
    EXPECT_EQ(rig.shown.size(), 1u);
    EXPECT_FALSE(rig.find<QAction>(QStringLiteral("MenuReinitialize"))->isEnabled());
}

TEST(ConnectionSequence, SilentUnitGivesUpAfterTheConnectionTimeout) {
    ConsoleRig rig;
    // A tenth of the real 2.5 s: the unit in process would answer at once.
    rig.window->link().Timer1().setInterval(Link::kConnectTimeoutMs / 10);
    rig.line.setConnected(false);
    QElapsedTimer clock;
    clock.start();
    rig.click(QStringLiteral("StartBut"));
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_GE(clock.elapsed(), Link::kConnectTimeoutMs / 10 - 50);  // the timer's slack
    EXPECT_EQ(rig.shown[0].title, QStringLiteral("Could Not Establish Connection"));
    EXPECT_TRUE(rig.window->windowTitle().endsWith(QStringLiteral(" Initializing Pan & Tilt")));
    EXPECT_FALSE(rig.find<QTabWidget>(QStringLiteral("SSTab1"))->isEnabled());
    // Jog messages went out on every tick of the wait, and nothing else.
    EXPECT_GE(rig.line.frames().size(), 10u);
    EXPECT_EQ(rig.line.messages(false).size(), 0u);

    // The operator plugs the unit in and tries again (the pages' reads are
    // the first test's).
    rig.window->connection().unitConnection().setLaterSteps({});
    rig.line.setConnected(true);
    EXPECT_TRUE(rig.connect());
}

TEST(ConnectionSequence, UnitWithoutSecondCameraHidesItsControlsForGood) {
    sim::UnitOptions options;
    options.variant = 1;
    ConsoleRig rig(options);
    ASSERT_TRUE(rig.connect());
    // Camera 2's controls go; camera 1's stay, also where both are elements
    // of one array.
    for (const QString& name :
         QStringLiteral("Z2LED ZFScroll_2 SendBut_1 Lens2Check_1 VideoFrame "
                        "!Z1LED !ZFScroll_1 !SendBut_0 !Lens1Check_1 !CamTOSpin_0")
             .split(' ')) {
        auto* widget = rig.find<QWidget>(QString(name).remove('!'));
        ASSERT_NE(widget, nullptr) << name.toStdString();
        EXPECT_EQ(widget->isHidden(), !name.startsWith('!')) << name.toStdString();
    }
}

TEST(ConnectionSequence,
     StartWhileOnlineDoesNothingReinitializeLightsTheLampStopAndExitStopTheUnit) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    rig.line.clear();
    rig.click(QStringLiteral("StartBut"));
    for (const auto& frame : rig.line.frames()) {
        EXPECT_TRUE(isJog(frame.message)) << "Start ran the connection sequence again";
    }
    auto* start = rig.find<QPushButton>(QStringLiteral("StartBut"));
    ASSERT_EQ(start->property("lamp").toString(), QStringLiteral("good"));
    rig.window->connection().unitConnection().setLaterSteps({});  // sooner online again
    rig.window->findChild<QAction*>(QStringLiteral("MenuReinitialize"))->trigger();
    settle();
    EXPECT_TRUE(rig.window->windowTitle().endsWith(QStringLiteral(" Online")));
    // The picture itself, not only the lamp state: it must not stay grey.
    const QImage good = goodLinkPicture().pixmap(32).toImage();
    EXPECT_TRUE(
        ConsoleRig::waitFor([&] { return start->icon().pixmap(32).toImage() == good; }, 1000));

    const auto stopSent = [&rig] {
        const auto& frames = rig.line.frames();
        return std::any_of(frames.begin(), frames.end(), [](const auto& frame) {
            return isJog(frame.message) && vocab::isSet(frame.message.at(1), vocab::jog::kStop);
        });
    };
    // Stop, with no lost device being looked for: a jog message carries the
    // stop request.
    rig.line.clear();
    rig.click(QStringLiteral("StopBut"));
    EXPECT_TRUE(ConsoleRig::waitFor(stopSent, 1000));

    // Exit: a jog message carries the stop request (on a slow machine another
    // may follow it while Exit waits for the reply), then the port closes.
    rig.line.clear();
    rig.window->close();
    settle();
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_TRUE(stopSent());
}

TEST(ConnectionSequence, AUnitFoundAgainButNotYetAnsweringIsLookedForAgainWithoutABox) {
    ConsoleRig rig;
    rig.window->link().Timer1().setInterval(Link::kConnectTimeoutMs / 10);
    rig.window->connection().unitConnection().setReconnectInterval(UnitConnection::kReconnectMs /
                                                                   10);
    ASSERT_TRUE(rig.connect());
    rig.window->connection().unitConnection().setLaterSteps({});  // found again sooner
    QStringList faults;
    QObject::connect(&rig.window->state(), &FormState::faultReported,
                     [&](const QString& message) { faults << message; });
    // The cable is pulled, and the unit is still powering up when it is back.
    rig.line.setConnected(false);
    rig.port->setWriteFails(true);
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !rig.port->isOpen(); }));
    rig.port->setWriteFails(false);
    ASSERT_TRUE(ConsoleRig::waitFor(
        [&] { return faults.join('\n').contains(QStringLiteral("no unit answers yet")); }, 8000));
    EXPECT_TRUE(rig.shown.empty()) << "a box for a unit that is still powering up";
    EXPECT_TRUE(rig.window->windowTitle().endsWith(QStringLiteral(" Offline")));
    EXPECT_TRUE(rig.window->connection().reconnecting());
    auto* pages = rig.find<QTabWidget>(QStringLiteral("SSTab1"));
    EXPECT_FALSE(pages->isEnabled()) << "the pages stay open to a lost unit";
    // It answers at last: online by itself.
    rig.line.setConnected(true);
    EXPECT_TRUE(ConsoleRig::waitFor(
        [&] { return rig.window->windowTitle().endsWith(QStringLiteral(" Online")); }, 10000));
    EXPECT_TRUE(rig.shown.empty());
    EXPECT_TRUE(pages->isEnabled());
}
