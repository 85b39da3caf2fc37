#pragma once

#include <QCoro/QCoroTask>

#include "protocol/flag_scope.h"

namespace halvex {

// Keeps a reload from running inside itself. A request that comes while the
// reload waits for a reply (a click, or a reply that asks for a reload) does
// not start a second copy nested in the first; the running one stops at its
// next step and starts over once. So a burst of requests costs one reload,
// not one per request stacked on the send path.
class RerunGuard {
  public:
    // `body` returns the task of one pass; it is called again for a pass
    // that starts over. A request made while a pass runs completes at once.
    template <typename Body>
    QCoro::Task<> run(Body body) {
        if (running_) {
            requested_ = true;
            co_return;
        }
        FlagScope running(running_);
        do {
            requested_ = false;
            co_await body();
        } while (requested_);
    }

    // True when the running pass should stop and start over.
    bool superseded() const { return requested_; }
    bool running() const { return running_; }

  private:
    bool running_ = false;
    bool requested_ = false;
};

}  // namespace halvex
