#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

#include "tests/support/child_process.h"

// halvex-sim as an operator runs it, on its own pseudo-terminal (or with
// --tcp on a TCP port); the test target names the program in
// HALVEX_SIM_PATH. device() is what to open, empty when the program did not
// start.
class SimProcess {
  public:
    explicit SimProcess(const QStringList& arguments = {}) {
        process_.setProgram(QStringLiteral(HALVEX_SIM_PATH));
        process_.setArguments(arguments);
        endWithParent(process_);
        process_.start();
        if (process_.waitForStarted(5000) && process_.waitForReadyRead(5000)) {
            device_ = QString::fromLocal8Bit(process_.readLine()).trimmed();
        }
    }
    ~SimProcess() { stop(); }
    // Stopped as by Ctrl-C; what it said stays readable.
    void stop() { stopChild(process_); }
    // Stopped by the signal and gone by itself, with status 0.
    bool endedCleanly() const {
        return process_.state() == QProcess::NotRunning &&
               process_.exitStatus() == QProcess::NormalExit && process_.exitCode() == 0;
    }
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    const QString& device() const { return device_; }

    // What it has said on stderr so far (with -v, every frame).
    const QString& errorOutput() {
        errors_ += QString::fromLocal8Bit(process_.readAllStandardError());
        return errors_;
    }

    // One line on the program's standard input (a line command, with --control).
    void say(const QString& line) {
        process_.write((line + QLatin1Char('\n')).toLocal8Bit());
        process_.waitForBytesWritten(1000);
    }

    // Its standard input ends, as when whatever fed it line commands quits.
    void endInput() { process_.closeWriteChannel(); }

    // Processor time it has used so far, in clock ticks (from /proc).
    long cpuTicks() const {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(process_.processId()));
        if (!stat.open(QIODevice::ReadOnly)) {
            return -1;
        }
        // The fields after the name, which is in parentheses: utime and stime
        // are the 12th and 13th of them.
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        return fields.size() > 12 ? fields[11].toLong() + fields[12].toLong() : -1;
    }

  private:
    QProcess process_;
    QString device_;
    QString errors_;
};
