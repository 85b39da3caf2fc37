#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QTimer>

// halvex-sim as a separate program on a pseudo-terminal behind a fixed link
// path, with its line commands on standard input, and a schedule that moves
// the line through its faults and pulls the cable now and then.
class UnitProcess : public QObject {
    Q_OBJECT
  public:
    struct Schedule {
        int phaseSeconds = 20;
        int unplugEverySeconds = 180;
        int unpluggedSeconds = 5;
    };

    UnitProcess(const QString& program, const QString& folder, Schedule schedule,
                QObject* parent = nullptr);
    ~UnitProcess() override;

    // Starts the unit; up() follows once it has made its device.
    void start();
    // Starts the phases and the unplugging.
    void runSchedule();

    const QString& link() const { return link_; }
    bool pluggedIn() const { return pluggedIn_; }
    int unplugs() const { return unplugs_; }
    const QString& phase() const { return phase_; }

  signals:
    // The unit is there to be opened (again).
    void up();

  private:
    void onOutput();
    void nextPhase();
    void unplug();
    void say(const QString& line);

    QString program_;
    QString link_;
    QString stateFile_;
    Schedule schedule_;
    QProcess process_;
    QTimer phaseTimer_;
    QTimer unplugTimer_;
    int phaseIndex_ = 0;
    int unplugs_ = 0;
    bool pluggedIn_ = false;
    QString phase_;
};
