#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "console/messages.h"
#include "sim/unit.h"
#include "tests/support/finish.h"
#include "tests/support/recording_peer.h"
#include "tests/support/test_port.h"
#include "window/vornixu.h"

namespace halvex::testing {

// The whole console against the virtual unit on the in-process port, in a
// scratch current directory, with message boxes recorded instead of shown.
class ConsoleRig {
  public:
    // The unit in the same process answers at once, so the console may send
    // a frame every few milliseconds, far faster than a real line allows.
    static constexpr int kFastTickMs = 3;

    // `unitTimeScale`: how many times as fast as a real one the unit's clock
    // runs (see RecordingPeer).
    explicit ConsoleRig(const sim::UnitOptions& options = {}, int tickMs = kFastTickMs,
                        int unitTimeScale = 1);
    ~ConsoleRig();
    ConsoleRig(const ConsoleRig&) = delete;
    ConsoleRig& operator=(const ConsoleRig&) = delete;

    // Presses Start and waits until the title says " Online".
    bool connect();
    // Waits until `done` holds, letting the console and the unit run.
    static bool waitFor(const std::function<bool()>& done, int timeoutMs = 5000) {
        return QTest::qWaitFor(done, timeoutMs);
    }
    template <typename T>
    T* find(const QString& name) {
        return window->findChild<T*>(name);
    }
    // Clicks and lets what the click started run to its end.
    void click(const QString& buttonName);

    QTemporaryDir directory;
    QString previousDirectory;
    std::vector<Message> shown;
    // What the operator answers to an OK/Cancel box: OK when true.
    bool presenterAnswer = true;
    sim::Unit unit;
    RecordingPeer line;
    TestPort* port;
    std::unique_ptr<VornixU> window;
};

}  // namespace halvex::testing
