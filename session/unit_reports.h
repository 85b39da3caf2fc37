#pragma once

#include "protocol/form_state.h"
#include "protocol/receiver.h"
#include "session/unit_status.h"

namespace halvex {

class Session;

// Reads what the unit says about itself into the session's status: the
// position report that answers the jog message and every move, and the
// soft-limit reply. Each change is announced by the session's signals, in
// the order the report carries them.
class UnitReports {
  public:
    // The most bytes a camera's answer may bring in one report.
    static constexpr int kCameraBufferLast = 100;

    UnitReports(Session& session, FormState& state, UnitStatus& status, Receiver& receiver);

    void decodePositionReport();
    void decodeSoftLimit();

  private:
    // One camera's bytes from the report, starting at `index`.
    void takeCameraBytes(int& index, int count, int camera);

    Session& session_;
    FormState& state_;
    UnitStatus& status_;
};

}  // namespace halvex
