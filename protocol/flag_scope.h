#pragma once

namespace halvex {

// Sets a plain flag for the life of a scope and clears it however the scope
// ends (a range fault included).
class FlagScope {
  public:
    explicit FlagScope(bool& flag) : flag_(flag) { flag_ = true; }
    ~FlagScope() { flag_ = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

  private:
    bool& flag_;
};

}  // namespace halvex
