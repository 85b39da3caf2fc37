// One scenario over every kind of line the console opens: a pseudo-terminal
// to halvex-sim, a device server's raw TCP and RFC 2217 ports (Debian's
// ser2net in front of halvex-sim), halvex-sim's own TCP port, and the
// in-process port. On each the session goes online, moves the platform,
// loses the unit, takes it back by itself and moves it again.

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>

#include "protocol/vocabulary.h"
#include "session/session.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/cpu_share.h"
#include "tests/support/finish.h"
#include "tests/support/recording_peer.h"
#include "tests/support/ser2net_process.h"
#include "tests/support/sim_process.h"
#include "tests/support/test_port.h"

namespace halvex::testing {
namespace {

// A unit on one kind of line, which can be taken away and brought back.
class UnitOnLine {
  public:
    virtual ~UnitOnLine() = default;
    virtual bool ready() const = 0;
    virtual QString device() const = 0;
    // The port the session uses; null for the console's own device port.
    virtual SerialPort* port() { return nullptr; }
    virtual void takeAway() = 0;
    virtual bool bringBack() = 0;
    // The speed the line's far end runs at now, where the test can see it.
    virtual speed_t farSpeed() const { return B0; }
    // Whether the unit brought back is the one taken away, where it was.
    virtual bool sameUnitComesBack() const { return true; }
};

// halvex-sim on a pseudo-terminal reached through a link of a stable name, as
// a USB adapter's by-id link: pulled out and plugged in again.
class PtyUnit : public UnitOnLine {
  public:
    bool ready() const override { return sim_ && !sim_->device().isEmpty(); }
    QString device() const override { return link_; }
    void takeAway() override { sim_.reset(); }
    bool sameUnitComesBack() const override { return false; }
    bool bringBack() override {
        sim_ = std::make_unique<SimProcess>(arguments());
        return ready();
    }
    speed_t farSpeed() const override {
        const int fd = ::open(link_.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        termios settings{};
        const bool read = ::tcgetattr(fd, &settings) == 0;  // fails on -1 too
        ::close(fd);
        return read ? ::cfgetospeed(&settings) : B0;
    }

  private:
    QStringList arguments() const { return {QStringLiteral("--link"), link_}; }

    QTemporaryDir folder_;
    QString link_ = folder_.filePath(QStringLiteral("unit"));
    std::unique_ptr<SimProcess> sim_ = std::make_unique<SimProcess>(arguments());
};

// ser2net in front of the pseudo-terminal; the server is restarted.
class DeviceServerUnit : public PtyUnit {
  public:
    explicit DeviceServerUnit(Ser2netProcess::Accepter accepter)
        : accepter_(accepter), server_(PtyUnit::device(), accepter) {}
    bool ready() const override { return PtyUnit::ready() && server_.listening(); }
    QString device() const override { return server_.device(); }
    void takeAway() override { server_.stop(); }
    bool sameUnitComesBack() const override { return true; }
    bool bringBack() override { return server_.start(); }
    // A raw port carries bytes only: the line keeps the server's own speed.
    speed_t farSpeed() const override {
        return accepter_ == Ser2netProcess::Accepter::Rfc2217 ? PtyUnit::farSpeed() : B0;
    }

  private:
    Ser2netProcess::Accepter accepter_;
    Ser2netProcess server_;
};

// halvex-sim --tcp with these options: stopped, and started again on the
// same port.
class TcpUnit : public UnitOnLine {
  public:
    explicit TcpUnit(const QStringList& options = {}) : options_(options) {}
    bool ready() const override { return device_.startsWith(QLatin1String("socket://")); }
    QString device() const override { return device_; }
    void takeAway() override { sim_.reset(); }
    bool sameUnitComesBack() const override { return false; }
    bool bringBack() override {
        sim_ = std::make_unique<SimProcess>(
            QStringList{QStringLiteral("--tcp"), device_.section(QLatin1Char(':'), -1)} + options_);
        return sim_->device() == device_;
    }
    SimProcess& sim() { return *sim_; }

  private:
    QStringList options_;
    std::unique_ptr<SimProcess> sim_ = std::make_unique<SimProcess>(
        QStringList{QStringLiteral("--tcp"), QStringLiteral("0")} + options_);
    QString device_ = sim_->device();
};

// The virtual unit in the same process: the adapter fails and then will not
// open until it is back.
class InProcessUnit : public UnitOnLine {
  public:
    bool ready() const override { return true; }
    QString device() const override { return QStringLiteral("virtual"); }
    SerialPort* port() override { return port_; }
    void takeAway() override { fail(true); }
    bool bringBack() override { return fail(false); }

  private:
    bool fail(bool fails) {
        port_->setOpenFails(fails);
        port_->setWriteFails(fails);
        return true;
    }
    sim::Unit unit_{[] {
        sim::UnitOptions options;
        options.alignmentMs = options.homingMs = 300;
        return options;
    }()};
    RecordingPeer peer_{unit_, 4};
    TestPort* port_ = new TestPort(&peer_);  // the session's
};

// A session and its connection on `device`, as `halvex --headless` runs them,
// reading the whole unit once online or only what going online needs.
struct HeadlessConsole {
    explicit HeadlessConsole(const QString& device, SerialPort* port = nullptr,
                             bool wholeUnit = true, int tickMs = 10)
        : session(port, tickMs),
          connection(session, {[device] { return device; }, [] { return 57600; },
                               [device] { return QStringLiteral("COM1 (%1)").arg(device); }}) {
        QObject::connect(&session.state(), &FormState::faultReported,
                         [this](const QString& fault) { faults << fault; });
        connection.setReconnectInterval(200);
        if (wholeUnit) {
            connection.setLaterSteps(connection.unitReads());
        }
    }
    ~HeadlessConsole() { finish(connection.exit()); }

    bool start() { return finish(connection.start(), 30000) && session.online(); }
    bool near(double pan, double tilt) const {
        const UnitStatus& s = session.status();
        return std::abs(s.CurrentPan - pan) < 0.01 && std::abs(s.CurrentTilt - tilt) < 0.01;
    }
    QString told() const { return faults.join('\n'); }

    Session session;
    UnitConnection connection;
    QStringList faults;
};

struct LineKind {
    const char* name;
    std::function<std::unique_ptr<UnitOnLine>()> make;
    bool needsSer2net = false;
};

const LineKind kLineKinds[] = {
    {"pseudo-terminal", [] { return std::make_unique<PtyUnit>(); }},
    {"ser2net raw",
     [] { return std::make_unique<DeviceServerUnit>(Ser2netProcess::Accepter::Raw); }, true},
    {"ser2net RFC 2217",
     [] { return std::make_unique<DeviceServerUnit>(Ser2netProcess::Accepter::Rfc2217); }, true},
    {"halvex-sim --tcp", [] { return std::make_unique<TcpUnit>(); }},
    {"in-process", [] { return std::make_unique<InProcessUnit>(); }},
};

// One unit on each kind of line, and a console on each.
struct Line {
    const char* name;
    std::unique_ptr<UnitOnLine> unit;
    std::unique_ptr<HeadlessConsole> console;
};

// Runs `operation` on every line at once and checks each outcome: the lines
// share one event loop, as they would in one console, so their waits overlap.
template <class T>
void onEveryLine(std::vector<Line>& lines,
                 const std::function<QCoro::Task<T>(HeadlessConsole&)>& operation,
                 const std::function<void(const Line&, T)>& check) {
    std::vector<QCoro::Task<T>> running;
    for (Line& line : lines) {
        running.push_back(operation(*line.console));
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i].name);
        check(lines[i], finish(std::move(running[i]), 30000));
    }
}

bool allOf(std::vector<Line>& lines, const std::function<bool(HeadlessConsole&)>& holds) {
    const auto each = [&](Line& line) { return holds(*line.console); };
    return runUntil([&] { return std::all_of(lines.begin(), lines.end(), each); }, 20000);
}

// Moves the platform on every line at once, and waits until each is there.
void moveEveryLine(std::vector<Line>& lines, double pan, double tilt) {
    onEveryLine<Outcome>(
        lines,
        [=](HeadlessConsole& c) {
            return c.session.moveTo({pan, tilt});
        },
        [](const Line&, const Outcome& moved) {
            EXPECT_TRUE(moved.isDone()) << moved.text().toStdString();
        });
    EXPECT_TRUE(allOf(lines, [=](HeadlessConsole& c) { return c.near(pan, tilt); }));
}

TEST(EveryKindOfLine, GoesOnlineMovesLosesTheUnitAndTakesItBackByItself) {
    std::vector<Line> lines;
    for (const LineKind& kind : kLineKinds) {
        if (kind.needsSer2net && Ser2netProcess::program().isEmpty()) {
            ADD_FAILURE() << "ser2net is not installed (Debian package ser2net)";
            continue;
        }
        auto unit = kind.make();
        ASSERT_TRUE(unit->ready()) << kind.name;
        auto console = std::make_unique<HeadlessConsole>(unit->device(), unit->port());
        lines.push_back({kind.name, std::move(unit), std::move(console)});
    }

    // The whole unit is read, the chosen speed reaches the line where the
    // line can carry it, and the platform moves.
    onEveryLine<bool>(
        lines, [](HeadlessConsole& c) { return c.connection.start(); },
        [](const Line& line, bool started) {
            EXPECT_TRUE(started && line.console->session.online());
            if (line.unit->farSpeed() != B0) {
                EXPECT_EQ(line.unit->farSpeed(), speed_t{B57600});
            }
        });
    moveEveryLine(lines, 2.34, -4.5);

    // Each unit goes away: told once, and looked for again and again, quietly.
    for (Line& line : lines) {
        EXPECT_TRUE(line.console->faults.isEmpty())
            << line.name << ": " << line.console->told().toStdString();
        line.console->connection.setLaterSteps({});  // found again sooner
        line.unit->takeAway();
    }
    ASSERT_TRUE(allOf(lines, [](HeadlessConsole& c) { return !c.session.online(); }));
    EXPECT_LT(cpuShareWhileWaiting(500), kSpinningCpuShare) << "a lost line is worked in a loop";
    for (Line& line : lines) {
        SCOPED_TRACE(line.name);
        const HeadlessConsole& c = *line.console;
        EXPECT_TRUE(c.connection.reconnecting());
        EXPECT_TRUE(c.faults.value(0).startsWith(
            QStringLiteral("COM1 (%1) lost: ").arg(line.unit->device())))
            << c.told().toStdString();
        // Why it was lost and, at most, why the first look failed.
        EXPECT_LE(c.faults.size(), 2) << c.told().toStdString();
        EXPECT_TRUE(line.unit->bringBack());
    }

    // Found again by itself, where the platform was left when it is the same
    // unit, and it moves again.
    ASSERT_TRUE(allOf(lines, [](HeadlessConsole& c) { return c.session.online(); }));
    for (Line& line : lines) {
        SCOPED_TRACE(line.name);
        EXPECT_TRUE(
            line.console->faults.last().endsWith(QStringLiteral("is back: connecting again.")));
        if (line.unit->sameUnitComesBack()) {
            EXPECT_TRUE(line.console->near(2.34, -4.5)) << "not where it was left";
        }
    }
    moveEveryLine(lines, 1.25, -3.5);
}

TEST(VirtualUnit, RestsWhenNobodyFeedsItLineCommandsAnyMore) {
    SimProcess sim({QStringLiteral("--control")});
    ASSERT_FALSE(sim.device().isEmpty());
    sim.endInput();
    QTest::qWait(300);
    const long before = sim.cpuTicks();
    ASSERT_GE(before, 0);
    QTest::qWait(500);
    // Ticks are hundredths of a second: 5 in half a second is 10 % of a core.
    EXPECT_LT(sim.cpuTicks() - before, 5) << "halvex-sim spins on its ended input";
}

// How halvex-sim -v logs a message with the code of `M` coming in.
template <class M>
QString loggedIn() {
    return QStringLiteral("in  02 00 %1").arg(M::kCode, 2, 16, QLatin1Char('0'));
}

TEST(HalvexSimTcp, AConnectionCutMidReplyIsToldAndNothingIsSentTwice) {
    TcpUnit unit({QStringLiteral("--control"), QStringLiteral("-v")});
    HeadlessConsole c(unit.device(), nullptr, false);
    ASSERT_TRUE(c.start());

    // Replies crawl out at 300 baud, so the line is always in the middle of
    // one; the move goes out, and the unit goes away under its reply.
    unit.sim().say(QStringLiteral("pace 300"));
    QCoro::Task<Outcome> move = c.session.moveTo({30.0, 5.0});
    const QString absoluteMove = loggedIn<vocab::AbsoluteMove>();
    ASSERT_TRUE(runUntil([&] { return unit.sim().errorOutput().count(absoluteMove) == 1; }, 5000));
    ASSERT_TRUE(runUntil([&] { return c.session.port().bytesWaiting() > 0; }, 5000))
        << "no reply on its way";
    unit.sim().stop();
    const QString firstLog = unit.sim().errorOutput();
    ASSERT_TRUE(runUntil([&] { return !c.session.online(); }, 5000));
    EXPECT_TRUE(
        c.told().contains(QStringLiteral("COM1 (%1) lost: the device server closed the connection.")
                              .arg(unit.device())));
    EXPECT_FALSE(finish(std::move(move)).isDone());

    // The unit back on the same port: the session reconnects by itself and
    // asks nothing of it but the connection sequence.
    ASSERT_TRUE(unit.bringBack());
    ASSERT_TRUE(runUntil([&] { return c.session.online(); }, 10000));
    QTest::qWait(300);
    EXPECT_EQ(firstLog.count(absoluteMove), 1);
    EXPECT_EQ(unit.sim().errorOutput().count(absoluteMove), 0) << "the move was sent again";
    EXPECT_TRUE(unit.sim().errorOutput().contains(loggedIn<vocab::OffsetsRequest>()))
        << "no connection sequence";
}

}  // namespace
}  // namespace halvex::testing
