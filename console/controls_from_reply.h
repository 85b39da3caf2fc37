#pragma once

#include "protocol/form_state.h"

namespace halvex {

// Clears UserClickEnabled while a reply sets check boxes, option buttons and
// scroll bars, so that their change handlers send nothing; puts the flag back
// however the decoder ends (a range fault included).
class ControlsFromReply {
  public:
    explicit ControlsFromReply(FormState& state)
        : state_(state), previous_(state.UserClickEnabled) {
        state_.UserClickEnabled = false;
    }
    ~ControlsFromReply() { state_.UserClickEnabled = previous_; }
    ControlsFromReply(const ControlsFromReply&) = delete;
    ControlsFromReply& operator=(const ControlsFromReply&) = delete;

  private:
    FormState& state_;
    bool previous_;
};

}  // namespace halvex
