// A long run of the console against a unit on a line that misbehaves: the
// console (the same main window, serial port and link as halvex, offscreen)
// on halvex-sim's pseudo-terminal, the line moved every few seconds through
// noise bursts, corrupted and dropped replies, replies at 9600 baud and a
// silent unit, the cable pulled every few minutes, and a scripted operator
// clicking moves, preset saves and tour loads. Prints what became of it.
//
//   halvex-soak [MINUTES] [--phase SECONDS] [--unplug-every SECONDS]
//
// Exit status 0 when there was no false device loss, no command lost without
// a report and no wait that never ended.

#include <sys/resource.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMap>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/cpu_time.h"
#include "bench/soak/scripted_operator.h"
#include "bench/soak/unit_process.h"
#include "protocol/wait.h"
#include "window/vornixu.h"

namespace {
using halvex::bench::cpuSeconds;

long peakMemoryKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

struct Options {
    double minutes = 30;
    UnitProcess::Schedule schedule;
};

Options readOptions(const QStringList& arguments) {
    Options options;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const bool valued = i + 1 < arguments.size();
        if (argument == QLatin1String("--phase") && valued) {
            options.schedule.phaseSeconds = std::max(1, arguments[++i].toInt());
        } else if (argument == QLatin1String("--unplug-every") && valued) {
            options.schedule.unplugEverySeconds = std::max(10, arguments[++i].toInt());
        } else {
            options.minutes = std::max(0.1, argument.toDouble());
        }
    }
    return options;
}

// What the run saw, second by second and event by event.
struct Tally {
    int falseLosses = 0;
    int realLosses = 0;
    int reopenedInPlace = 0;
    std::vector<double> backOnlineSeconds;
    std::vector<double> cpuPerSecond;
    QElapsedTimer pluggedBackIn;
};

double mean(const std::vector<double>& values) {
    double sum = 0;
    for (double value : values) {
        sum += value;
    }
    return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

double peak(const std::vector<double>& values) {
    return values.empty() ? 0.0 : *std::max_element(values.begin(), values.end());
}
}  // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    const Options options = readOptions(QApplication::arguments());
    QTemporaryDir scratch;
    QDir::setCurrent(scratch.path());

    UnitProcess unit(QStringLiteral(HALVEX_SIM_PATH), scratch.path(), options.schedule);
    qputenv("HALVEX_COM1", unit.link().toLocal8Bit());
    QMap<QString, int> boxes;
    halvex::VornixU window(nullptr, [&boxes](QWidget*, const halvex::Message& message) {
        ++boxes[message.title];
        return true;
    });
    window.Form_Load();
    window.show();

    Tally tally;
    QObject::connect(&window.SerPort1(), &halvex::SerialPort::lost,
                     [&] { ++(unit.pluggedIn() ? tally.falseLosses : tally.realLosses); });
    QObject::connect(&window.SerPort1(), &halvex::SerialPort::reopened,
                     [&] { ++tally.reopenedInPlace; });
    QObject::connect(&unit, &UnitProcess::up, [&] { tally.pluggedBackIn.start(); });
    QObject::connect(&window, &QWidget::windowTitleChanged, [&](const QString& title) {
        if (title.endsWith(QStringLiteral(" Online")) && tally.pluggedBackIn.isValid() &&
            unit.unplugs() > 0) {
            tally.backOnlineSeconds.push_back(tally.pluggedBackIn.elapsed() / 1000.0);
            tally.pluggedBackIn.invalidate();
        }
    });

    unit.start();
    QElapsedTimer startup;
    startup.start();
    while (!unit.pluggedIn() && startup.elapsed() < 10000) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    // Start returns at once; the connection goes on from the event loop.
    window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    const auto online = [&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); };
    QElapsedTimer connecting;
    connecting.start();
    while (!online() && connecting.elapsed() < 30000) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    if (!online()) {
        std::printf("the console did not come online\n");
        return 1;
    }

    ScriptedOperator person(window, 1500);
    person.start();
    unit.runSchedule();
    const quint64 sentAtStart = window.link().framesSent();
    const quint64 answeredAtStart = window.link().framesAnswered();

    // CPU second by second; the run ends after the given minutes.
    double lastCpu = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    QTimer sampler;
    sampler.setInterval(1000);
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        const double now = cpuSeconds();
        tally.cpuPerSecond.push_back(now - lastCpu);
        lastCpu = now;
    });
    sampler.start();
    const double startCpu = cpuSeconds();
    QTimer::singleShot(static_cast<int>(options.minutes * 60000), &app, &QApplication::quit);
    QApplication::exec();
    const double cpuShare = (cpuSeconds() - startCpu) / (wall.elapsed() / 1000.0);

    const halvex::WaitCensus waits = halvex::waitCensus();
    // A wait still running this long at the end is one that never ended.
    constexpr qint64 kNeverMs = 30000;
    const int endlessWaits = waits.oldestRunningMs > kNeverMs ? waits.running : 0;
    const quint64 sent = window.link().framesSent() - sentAtStart;
    const quint64 answered = window.link().framesAnswered() - answeredAtStart;

    std::printf("| Measure | Result |\n|---|---|\n");
    std::printf("| run | %.1f min, %d unplugs, line phases of %d s |\n", wall.elapsed() / 60000.0,
                unit.unplugs(), options.schedule.phaseSeconds);
    std::printf("| frames sent / answered | %llu / %llu (%.1f %%) |\n",
                static_cast<unsigned long long>(sent), static_cast<unsigned long long>(answered),
                sent ? 100.0 * static_cast<double>(answered) / static_cast<double>(sent) : 0.0);
    std::printf("| operator clicks: sent / reported not sent / waiting | %d: %d / %d / %d |\n",
                person.clicks(), person.sent(), person.reportedNotSent(), person.outstanding());
    std::printf("| commands lost without a report | %d |\n", person.lostSilently());
    std::printf("| false device losses | %d |\n", tally.falseLosses);
    std::printf("| ports reopened in place | %d |\n", tally.reopenedInPlace);
    std::printf("| real losses | %d |\n", tally.realLosses);
    std::printf("| back online after the unit returned | mean %.1f s, max %.1f s |\n",
                mean(tally.backOnlineSeconds), peak(tally.backOnlineSeconds));
    std::printf("| waits: ended / longest / never ended | %llu / %.1f s / %d |\n",
                static_cast<unsigned long long>(waits.ended), waits.longestMs / 1000.0,
                endlessWaits);
    std::printf("| CPU, mean / peak second | %.1f %% / %.1f %% of a core |\n", 100.0 * cpuShare,
                100.0 * peak(tally.cpuPerSecond));
    std::printf("| peak memory | %.0f MB |\n", peakMemoryKb() / 1024.0);
    QStringList shown;
    for (auto box = boxes.cbegin(); box != boxes.cend(); ++box) {
        shown << QStringLiteral("%1 x \"%2\"").arg(box.value()).arg(box.key());
    }
    std::printf("| message boxes | %s |\n",
                shown.isEmpty() ? "none" : qPrintable(shown.join(QStringLiteral(", "))));
    const bool clean = tally.falseLosses == 0 && person.lostSilently() == 0 && endlessWaits == 0;
    return clean ? 0 : 1;
}
