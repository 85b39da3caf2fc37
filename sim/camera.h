#pragma once

// The cameras on the unit's two camera ports. A camera answers the bytes it
// is sent; the unit takes an answer as complete once the port has been quiet
// for its response time-out, and hands it over on the next jog report.

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "protocol/frame.h"

namespace halvex::sim {

enum class CameraKind {
    Auto,   // VISCA packets get VISCA answers, anything else is echoed
    Visca,  // a Sony VISCA camera
    Echo,   // a plain ASCII camera that echoes what it is sent
    None,   // nothing connected
};

// Part of a camera's answer, due some time after the command reached it.
struct CameraAnswer {
    std::int64_t delayMs = 0;
    std::vector<Byte> bytes;
};

// The lens a camera reports when asked.
struct LensReading {
    Byte zoom = 0;
    Byte focus = 0;
};

std::vector<CameraAnswer> answerVisca(const std::vector<Byte>& data, LensReading lens);
std::vector<CameraAnswer> answerEcho(const std::vector<Byte>& data);

class CameraPort {
  public:
    // Most bytes one report carries for one camera.
    static constexpr std::size_t kMaxPerReport = 24;
    // Bytes kept waiting at most; a camera that talks faster loses the rest.
    static constexpr std::size_t kMaxPending = 512;

    explicit CameraPort(CameraKind kind = CameraKind::Auto) : kind_(kind) {}

    void setKind(CameraKind kind) { kind_ = kind; }
    // Delivers data to the camera. An unconfigured port (baud index 0)
    // passes nothing on. timeoutSteps is the response time-out, 8 ms each.
    void send(const std::vector<Byte>& data, std::int64_t nowMs, Byte portSettings,
              Byte timeoutSteps, LensReading lens);
    // Answer bytes ready by nowMs, at most kMaxPerReport.
    std::vector<Byte> takeReady(std::int64_t nowMs);

  private:
    struct PendingByte {
        std::int64_t dueMs;
        Byte value;
    };

    CameraKind kind_;
    std::deque<PendingByte> pending_;
};

}  // namespace halvex::sim
