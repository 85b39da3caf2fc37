// halvex-sim: the virtual unit on a pseudo-terminal, until SIGINT or SIGTERM.

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

// A link is only ever made over nothing or over an earlier link.
bool makeLink(const std::string& target, const std::string& link) {
    struct stat existing {};
    if (::lstat(link.c_str(), &existing) == 0) {
        if (!S_ISLNK(existing.st_mode)) {
            std::fprintf(stderr, "halvex-sim: %s exists and is not a link\n", link.c_str());
            return false;
        }
        ::unlink(link.c_str());
    }
    if (::symlink(target.c_str(), link.c_str()) != 0) {
        std::perror("halvex-sim: symlink");
        return false;
    }
    return true;
}

// The model, or a replayed recording when one is asked for.
std::unique_ptr<halvex::sim::PtyUnit> makeUnit(const halvex::sim::SimCommandLine& line) {
    if (line.replay.empty()) {
        return std::make_unique<halvex::sim::PtyUnit>(line.options);
    }
    std::vector<halvex::recording::LineRecord> records;
    std::string warning;
    const std::string error = halvex::sim::readRecordingFile(line.replay, records, warning);
    if (!error.empty()) {
        std::fprintf(stderr, "halvex-sim: %s\n", error.c_str());
        return nullptr;
    }
    if (!warning.empty()) {
        std::fprintf(stderr, "halvex-sim: %s; replaying what came before\n", warning.c_str());
    }
    auto answers = std::make_unique<halvex::sim::ReplayUnit>(records);
    std::fprintf(stderr, "halvex-sim: replaying %zu replies to %zu codes from %s\n",
                 answers->repliesRecorded(), answers->codesAnswered(), line.replay.c_str());
    return std::make_unique<halvex::sim::PtyUnit>(line.options, std::move(answers));
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

    std::unique_ptr<halvex::sim::PtyUnit> made = makeUnit(line);
    if (!made) {
        return 1;
    }
    halvex::sim::PtyUnit& unit = *made;
    QString error;
    if (!unit.open(&error)) {
        std::fprintf(stderr, "halvex-sim: %s\n", qPrintable(error));
        return 1;
    }
    if (line.verbose) {
        unit.unit().setFrameLog(logFrame);
    }
    const std::string device = unit.slavePath().toStdString();
    if (!line.link.empty() && !makeLink(device, line.link)) {
        return 1;
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
