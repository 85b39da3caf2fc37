#pragma once

// A disk that fills up after a few bytes, for as long as this lives: files
// written meanwhile by this process are cut short as on a full disk (the
// file size limit, with its signal ignored so that the write fails instead).

#include <sys/resource.h>

#include <csignal>

namespace halvex::testing {

class FullDisk {
  public:
    explicit FullDisk(rlim_t bytesLeft) {
        getrlimit(RLIMIT_FSIZE, &before_);
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit full = before_;
        full.rlim_cur = bytesLeft;
        active_ = setrlimit(RLIMIT_FSIZE, &full) == 0;
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    bool active() const { return active_; }

  private:
    rlimit before_{};
    void (*previousHandler_)(int) = nullptr;
    bool active_ = false;
};

}  // namespace halvex::testing
