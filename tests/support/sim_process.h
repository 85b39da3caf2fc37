#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// halvex-sim as an operator runs it, on its own pseudo-terminal; the test
// target names the program in HALVEX_SIM_PATH. device() is the terminal to
// open, empty when the program did not start.
class SimProcess {
  public:
    explicit SimProcess(const QStringList& arguments = {}) {
        process_.setProgram(QStringLiteral(HALVEX_SIM_PATH));
        process_.setArguments(arguments);
        process_.start();
        if (process_.waitForStarted(5000) && process_.waitForReadyRead(5000)) {
            device_ = QString::fromLocal8Bit(process_.readLine()).trimmed();
        }
    }
    ~SimProcess() {
        process_.terminate();
        if (!process_.waitForFinished(3000)) {
            process_.kill();
            process_.waitForFinished(3000);
        }
    }
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    const QString& device() const { return device_; }

    // One line on the program's standard input (a line command, with --control).
    void say(const QString& line) {
        process_.write((line + QLatin1Char('\n')).toLocal8Bit());
        process_.waitForBytesWritten(1000);
    }

  private:
    QProcess process_;
    QString device_;
};
