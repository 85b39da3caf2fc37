#include "bench/soak/unit_process.h"

#include <QDir>
#include <QStringList>

namespace {
// The line's states in turn: a name and the line commands that make it.
struct Phase {
    const char* name;
    QStringList commands;
};

const std::vector<Phase>& phases() {
    static const std::vector<Phase> all = {
        {"clean", {}},
        {"noise burst", {QStringLiteral("noise 0.3"), QStringLiteral("chatter 2")}},
        {"corrupt and drop", {QStringLiteral("corrupt 0.1"), QStringLiteral("drop 0.1")}},
        {"9600 baud", {QStringLiteral("pace 9600")}},
        {"silent 4 s", {QStringLiteral("silent 4")}},
    };
    return all;
}
}  // namespace

UnitProcess::UnitProcess(const QString& program, const QString& folder, Schedule schedule,
                         QObject* parent)
    : QObject(parent),
      program_(program),
      link_(QDir(folder).filePath(QStringLiteral("unit"))),
      stateFile_(QDir(folder).filePath(QStringLiteral("unit.state"))),
      schedule_(schedule) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    phaseTimer_.setInterval(schedule_.phaseSeconds * 1000);
    connect(&phaseTimer_, &QTimer::timeout, this, &UnitProcess::nextPhase);
    unplugTimer_.setInterval(schedule_.unplugEverySeconds * 1000);
    connect(&unplugTimer_, &QTimer::timeout, this, &UnitProcess::unplug);
    connect(&process_, &QProcess::readyReadStandardOutput, this, &UnitProcess::onOutput);
}

UnitProcess::~UnitProcess() {
    process_.kill();
    process_.waitForFinished(3000);
}

void UnitProcess::start() {
    process_.start(program_, {QStringLiteral("--control"), QStringLiteral("--link"), link_,
                              QStringLiteral("--state"), stateFile_});
}

void UnitProcess::onOutput() {
    if (!process_.canReadLine()) {
        return;
    }
    process_.readLine();  // the device; the link points at it
    pluggedIn_ = true;
    // The phase the line was in goes on after the unit is back.
    for (const QString& command : phases()[static_cast<std::size_t>(phaseIndex_)].commands) {
        say(command);
    }
    emit up();
}

void UnitProcess::runSchedule() {
    phaseIndex_ = 0;
    phase_ = QString::fromLatin1(phases().front().name);
    phaseTimer_.start();
    unplugTimer_.start();
}

void UnitProcess::nextPhase() {
    phaseIndex_ = (phaseIndex_ + 1) % static_cast<int>(phases().size());
    const Phase& phase = phases()[static_cast<std::size_t>(phaseIndex_)];
    phase_ = QString::fromLatin1(phase.name);
    say(QStringLiteral("clean"));
    for (const QString& command : phase.commands) {
        say(command);
    }
}

void UnitProcess::unplug() {
    // Pulled, not shut down: no goodbye, the link left dangling.
    process_.kill();
    pluggedIn_ = false;
    ++unplugs_;
    QTimer::singleShot(schedule_.unpluggedSeconds * 1000, this, &UnitProcess::start);
}

void UnitProcess::say(const QString& line) {
    if (process_.state() == QProcess::Running) {
        process_.write((line + QLatin1Char('\n')).toLocal8Bit());
    }
}
