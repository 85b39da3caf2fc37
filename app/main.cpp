#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <ctime>
#include <memory>

#include "connection/connection_sequence.h"
#include "console/messages.h"
#include "sim/pty_unit.h"
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

// One line on stderr when the connection sequence ends, for scripts and for
// whoever watches the terminal: frames, wall time and CPU time it took.
void reportConnection(halvex::VornixU& window) {
    struct Start {
        QElapsedTimer wall;
        quint64 frames = 0;
        std::clock_t cpu = 0;
    };
    auto start = std::make_shared<Start>();
    QObject::connect(window.findChild<QPushButton*>(QStringLiteral("StartBut")),
                     &QPushButton::pressed, &window, [start, &window] {
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
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("halvex"));
    QApplication::setApplicationVersion(QStringLiteral("2.0"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Operator console for Halvex pan & tilt units.\n"
                       "COMn is the device in $HALVEX_COM<n>, else /dev/ttyS<n-1>."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption simulate(
        QStringLiteral("simulate"), QStringLiteral("Run a virtual unit in this process on COM1."));
    const QCommandLineOption connectAtStart(
        QStringLiteral("connect"), QStringLiteral("Press Start as soon as the window is up."));
    parser.addOption(simulate);
    parser.addOption(connectAtStart);
    parser.process(app);

    std::unique_ptr<halvex::sim::PtyUnit> virtualUnit;
    if (parser.isSet(simulate)) {
        virtualUnit = startVirtualUnit();
        if (!virtualUnit) {
            return 1;
        }
    }

    halvex::VornixU window;
    const QString settingsError = window.Form_Load();
    window.show();
    if (!settingsError.isEmpty()) {
        window.messages().exclamation(QStringLiteral("Settings File"), settingsError);
    }
    reportConnection(window);
    if (parser.isSet(connectAtStart)) {
        QTimer::singleShot(0, &window, [&window] {
            if (auto* start = window.findChild<QPushButton*>(QStringLiteral("StartBut"))) {
                start->click();
            }
        });
    }
    const int status = QApplication::exec();
    return status;
}
