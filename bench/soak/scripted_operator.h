#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <deque>
#include <random>

#include "protocol/frame.h"

namespace halvex {
class VornixU;
}

// An operator who, while the console is online and its pages are open,
// clicks a move, a preset save or a tour load every so often, and keeps
// book of what became of each click: its frame went out, the console said
// it was not sent, or neither (a command lost without a report).
class ScriptedOperator : public QObject {
    Q_OBJECT
  public:
    ScriptedOperator(halvex::VornixU& window, int everyMs, QObject* parent = nullptr);

    void start() { timer_.start(); }

    int clicks() const { return clicks_; }
    int sent() const { return sent_; }
    int reportedNotSent() const { return reported_; }
    int lostSilently() const { return lost_; }
    // Clicks still waiting for their frame or a report.
    int outstanding() const { return static_cast<int>(expected_.size()); }

    // Clicks whose frame has neither gone out nor been reported this long.
    static constexpr int kGiveUpMs = 15000;

  private:
    struct Expected {
        halvex::Byte code;
        QElapsedTimer since;
    };

    void act();
    void click(int page, const char* button, halvex::Byte code);
    void onFrameSent(const QString& capture);
    void onFault(const QString& message);
    void giveUpOnOld();

    halvex::VornixU& window_;
    QTimer timer_;
    std::mt19937 random_{20261125};
    std::deque<Expected> expected_;
    int next_ = 0;
    int clicks_ = 0;
    int sent_ = 0;
    int reported_ = 0;
    int lost_ = 0;
};
