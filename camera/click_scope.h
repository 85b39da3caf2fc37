#pragma once

#include "protocol/form_state.h"

namespace halvex {

// Clears UserClickEnabled while a reply handler sets check boxes and option
// buttons, so their click handlers change nothing, and sets it again however
// the handler ends.
class UserClicksOff {
  public:
    explicit UserClicksOff(FormState& state) : state_(state) { state_.UserClickEnabled = false; }
    ~UserClicksOff() { state_.UserClickEnabled = true; }
    UserClicksOff(const UserClicksOff&) = delete;
    UserClicksOff& operator=(const UserClicksOff&) = delete;

  private:
    FormState& state_;
};

}  // namespace halvex
