// halvex-sim: the virtual unit on a pseudo-terminal or a TCP port, and its
// video outputs over RTSP when asked, until SIGINT or SIGTERM.

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "sim/pty_unit.h"
#include "sim/replay_unit.h"
#include "sim/sim_command_line.h"
#include "sim/tcp_unit.h"
#include "sim/video/unit_snapshot.h"
#include "sim/video/video_server.h"

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto ignored = ::write(signalPipe[1], &byte, 1);
}

// Turns SIGINT and SIGTERM into a quit of the event loop, so that the
// program ends through its normal clean-up.
bool quitOnSignals(QCoreApplication& app) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) {
        return false;
    }
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    return ::sigaction(SIGINT, &action, nullptr) == 0 &&
           ::sigaction(SIGTERM, &action, nullptr) == 0;
}

void logFrame(halvex::sim::FrameDirection direction, const std::vector<halvex::Byte>& wire) {
    std::string line = direction == halvex::sim::FrameDirection::In ? "in  " : "out ";
    char hex[4];
    for (halvex::Byte value : wire) {
        std::snprintf(hex, sizeof hex, "%02X ", value);
        line += hex;
    }
    line.back() = '\n';
    std::fputs(line.c_str(), stderr);
}

// A link is only ever made over nothing or over an earlier link, and it is
// replaced in one step: a console looking for the unit again never finds the
// path missing for a moment.
bool makeLink(const std::string& target, const std::string& link) {
    struct stat existing {};
    if (::lstat(link.c_str(), &existing) == 0 && !S_ISLNK(existing.st_mode)) {
        std::fprintf(stderr, "halvex-sim: %s exists and is not a link\n", link.c_str());
        return false;
    }
    const std::string fresh = link + ".new";
    ::unlink(fresh.c_str());
    if (::symlink(target.c_str(), fresh.c_str()) != 0 ||
        ::rename(fresh.c_str(), link.c_str()) != 0) {
        std::perror("halvex-sim: symlink");
        ::unlink(fresh.c_str());
        return false;
    }
    return true;
}

// Reads line commands from standard input and applies them to the unit; a
// bad command is told on stderr and changes nothing.
void listenForLineCommands(QCoreApplication& app, halvex::sim::StreamUnit& unit) {
    auto* notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &app);
    auto reader = std::make_shared<halvex::sim::LineCommandReader>();
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier, reader, &unit] {
        char buffer[512];
        const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count <= 0) {
            notifier->setEnabled(false);  // nobody will say more
            return;
        }
        for (const auto& command : reader->feed(buffer, static_cast<std::size_t>(count))) {
            if (const auto* error = std::get_if<std::string>(&command)) {
                std::fprintf(stderr, "halvex-sim: %s\n", error->c_str());
            } else {
                unit.apply(std::get<halvex::sim::LineCommand>(command));
            }
        }
    });
}

// Lets a recording answer instead of the model, when one is asked for; false
// (and why on stderr) when it cannot be read.
bool answerFromRecording(const std::string& path, halvex::sim::StreamUnit& unit) {
    std::vector<halvex::recording::LineRecord> records;
    std::string warning;
    const std::string error = halvex::sim::readRecordingFile(path, records, warning);
    if (!error.empty()) {
        std::fprintf(stderr, "halvex-sim: %s\n", error.c_str());
        return false;
    }
    if (!warning.empty()) {
        std::fprintf(stderr, "halvex-sim: %s; replaying what came before\n", warning.c_str());
    }
    auto answers = std::make_unique<halvex::sim::ReplayUnit>(records);
    std::fprintf(stderr, "halvex-sim: replaying %zu replies to %zu codes from %s\n",
                 answers->repliesRecorded(), answers->codesAnswered(), path.c_str());
    unit.answerWith(std::move(answers));
    return true;
}

// Serves the unit's two video outputs, drawn from the unit's state; nothing
// (and why on stderr) when it cannot listen.
std::unique_ptr<halvex::sim::video::VideoServer> serveVideo(
    const halvex::sim::VideoCommandLine& options, halvex::sim::StreamUnit& unit) {
    namespace video = halvex::sim::video;
    const video::VideoServerOptions serverOptions{*options.port, options.address, options.width,
                                                  options.height, options.rate};
    auto server = std::make_unique<video::VideoServer>(
        serverOptions, [&unit] { return video::videoSnapshotOf(unit.unit().state()); });
    std::string error;
    if (!server->start(&error)) {
        std::fprintf(stderr, "halvex-sim: %s\n", error.c_str());
        return nullptr;
    }
    // Scripts and tests wait for this line and take the port from it.
    std::fprintf(stderr, "video on %s and %s\n", server->url(0).c_str(), server->url(1).c_str());
    return server;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const auto parsed =
        halvex::sim::parseSimCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (const auto* error = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "halvex-sim: %s\n%s", error->c_str(), halvex::sim::simUsage().c_str());
        return 2;
    }
    const auto& line = std::get<halvex::sim::SimCommandLine>(parsed);
    if (line.help) {
        std::fputs(halvex::sim::simUsage().c_str(), stdout);
        return 0;
    }
    if (line.version) {
        std::printf("halvex-sim %s\n", HALVEX_VERSION);
        return 0;
    }

    std::unique_ptr<halvex::sim::StreamUnit> unit;
    std::string device;
    QString error;
    if (line.tcpPort) {
        auto network = std::make_unique<halvex::sim::TcpUnit>(line.options);
        if (!network->listen(static_cast<quint16>(*line.tcpPort), &error)) {
            std::fprintf(stderr, "halvex-sim: %s\n", qPrintable(error));
            return 1;
        }
        network->setLog([](const QString& what) {
            std::fprintf(stderr, "halvex-sim: %s\n", qPrintable(what));
        });
        device = "socket://127.0.0.1:" + std::to_string(network->port());
        unit = std::move(network);
    } else {
        auto terminal = std::make_unique<halvex::sim::PtyUnit>(line.options);
        if (!terminal->open(&error)) {
            std::fprintf(stderr, "halvex-sim: %s\n", qPrintable(error));
            return 1;
        }
        device = terminal->slavePath().toStdString();
        if (!line.link.empty() && !makeLink(device, line.link)) {
            return 1;
        }
        unit = std::move(terminal);
    }
    if (!line.replay.empty() && !answerFromRecording(line.replay, *unit)) {
        return 1;
    }
    if (line.verbose) {
        unit->unit().setFrameLog(logFrame);
    }
    if (line.control) {
        listenForLineCommands(app, *unit);
    }
    std::unique_ptr<halvex::sim::video::VideoServer> video;
    if (line.video.port) {
        video = serveVideo(line.video, *unit);
        if (!video) {
            return 1;
        }
    }
    if (!quitOnSignals(app)) {
        std::perror("halvex-sim: signals");
        return 1;
    }
    std::printf("%s\n", device.c_str());
    std::fflush(stdout);

    const int result = app.exec();
    if (!line.link.empty()) {
        ::unlink(line.link.c_str());
    }
    return result;
}
