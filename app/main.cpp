#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QStatusBar>
#include <QTimer>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include "app/command_line.h"
#include "app/commissioning_command.h"
#include "app/headless.h"
#include "connection/connection_sequence.h"
#include "console/data_folder.h"
#include "console/messages.h"
#include "protocol/fault_guard.h"
#include "recorder/line_recorder.h"
#include "remote/remote_bridges.h"
#include "sim/pty_unit.h"
#include "sim/video/unit_snapshot.h"
#include "sim/video/video_server.h"
#include "window/network_control.h"
#include "window/video_wiring.h"
#include "window/vornixu.h"

namespace {
// The virtual unit in this process, on a pseudo-terminal that COM1 maps to.
std::unique_ptr<halvex::sim::PtyUnit> startVirtualUnit() {
    auto unit = std::make_unique<halvex::sim::PtyUnit>(halvex::sim::PtyUnitOptions{});
    QString error;
    if (!unit->open(&error)) {
        std::fprintf(stderr, "halvex: cannot start the virtual unit: %s\n", qPrintable(error));
        return nullptr;
    }
    qputenv("HALVEX_COM1", unit->slavePath().toLocal8Bit());
    std::fprintf(stderr, "halvex: virtual unit on %s (COM1)\n", qPrintable(unit->slavePath()));
    return unit;
}

// The virtual unit's two video outputs over RTSP on a free port, for the
// console's panes; nothing (and why on stderr) when it cannot listen.
std::unique_ptr<halvex::sim::video::VideoServer> serveVirtualVideo(halvex::sim::PtyUnit& unit) {
    namespace video = halvex::sim::video;
    auto server = std::make_unique<video::VideoServer>(video::VideoServerOptions{}, [&unit] {
        return video::videoSnapshotOf(unit.unit().state());
    });
    std::string error;
    if (!server->start(&error)) {
        std::fprintf(stderr, "halvex: the virtual unit has no video: %s\n", error.c_str());
        return nullptr;
    }
    std::fprintf(stderr, "halvex: the virtual unit's video on %s and %s\n", server->url(0).c_str(),
                 server->url(1).c_str());
    return server;
}

// One line on stderr when the connection sequence ends, for scripts and for
// whoever watches the terminal: frames, wall time and CPU time it took.
void reportConnection(halvex::VornixU& window) {
    struct Start {
        QElapsedTimer wall;
        quint64 frames = 0;
        std::clock_t cpu = 0;
    };
    auto start = std::make_shared<Start>();
    QObject::connect(&window.connection().unitConnection(), &halvex::UnitConnection::stageChanged,
                     &window, [start, &window](halvex::ConnectStage stage) {
                         if (stage != halvex::ConnectStage::FirstAnswer) {
                             return;
                         }
                         start->wall.start();
                         start->frames = window.link().framesSent();
                         start->cpu = std::clock();
                     });
    QObject::connect(
        &window.connection(), &halvex::ConnectionSequence::finished, &window,
        [start, &window](bool online) {
            if (!online) {
                std::fprintf(stderr, "halvex: no connection\n");
                return;
            }
            const long cpuMs =
                static_cast<long>((std::clock() - start->cpu) * 1000 / CLOCKS_PER_SEC);
            std::fprintf(
                stderr, "halvex: online after %llu frames in %lld ms (CPU %ld ms)\n",
                static_cast<unsigned long long>(window.link().framesSent() - start->frames),
                static_cast<long long>(start->wall.elapsed()), cpuMs);
        });
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication::setApplicationName(QStringLiteral("halvex"));
    QApplication::setApplicationVersion(QStringLiteral(HALVEX_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(HALVEX_APP_ID));
    halvex::CommandLine commandLine;
    if (const auto status = commandLine.answerAtOnce(argc, argv)) {
        return *status;
    }
    if (const auto status = runCommissioningCommand(argc, argv)) {
        return *status;
    }
    if (commandLine.headless()) {
        return halvex::runHeadless(argc, argv, commandLine);
    }
    QApplication app(argc, argv);
    std::fprintf(stderr, "halvex: data files in %s\n", qPrintable(halvex::dataFolder()));

    std::unique_ptr<halvex::sim::PtyUnit> virtualUnit;
    std::unique_ptr<halvex::sim::video::VideoServer> virtualVideo;
    std::array<std::optional<QString>, 2> videoSources = commandLine.videoSources();
    if (commandLine.simulate()) {
        virtualUnit = startVirtualUnit();
        if (!virtualUnit) {
            return 1;
        }
        // The panes show the virtual unit's outputs, unless told otherwise.
        virtualVideo = serveVirtualVideo(*virtualUnit);
        for (int output = 0; virtualVideo && output < 2; ++output) {
            auto& source = videoSources.at(static_cast<std::size_t>(output));
            if (!source) {
                source = QString::fromStdString(virtualVideo->url(output));
            }
        }
    }

    halvex::VornixU window;
    if (const QString path = commandLine.recordPath(); !path.isEmpty()) {
        const QString error = window.lineRecorder().startRecording(path);
        if (!error.isEmpty()) {
            std::fprintf(stderr, "halvex: %s\n", qPrintable(error));
            return 1;
        }
        std::fprintf(stderr, "halvex: recording the line to %s\n", qPrintable(path));
    }
    const QString settingsError = window.Form_Load();
    window.show();
    if (!settingsError.isEmpty()) {
        window.messages().exclamation(QStringLiteral("Settings File"), settingsError);
    }
    reportConnection(window);
    window.videoWiring().overrideSources(videoSources);
    window.networkControl().setEndpoint(commandLine.rotctldAddress(), commandLine.rotctldPort());
    if (commandLine.rotctld()) {
        // A port in use is told on stderr and in the status bar; the console runs on.
        window.networkControl().start();
    }
    // The bridges the command line asks for, else those the operator left on.
    QStringList started;
    const QStringList failures = window.remoteBridges().apply(
        commandLine.bridges().any() ? commandLine.bridges() : halvex::loadBridgeSettings(),
        &started);
    for (const QString& line : started + failures) {
        std::fprintf(stderr, "halvex: %s\n", qPrintable(line));
    }
    if (!failures.isEmpty()) {
        window.statusBar()->showMessage(failures.join(QStringLiteral("; ")), 15000);
    }
    if (commandLine.connectAtStart()) {
        QTimer::singleShot(0, &window, [&window] {
            launch(window.state(), "StartBut_Click", window.connection().StartBut_Click());
        });
    }
    const int status = QApplication::exec();
    return status;
}
