#include "tests/support/pty_pair.h"

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace halvex::testing {

PtyPair::PtyPair() {
    char name[256] = {};
    if (openpty(&master_, &slave_, name, nullptr, nullptr) != 0) {
        master_ = slave_ = -1;
        return;
    }
    termios raw{};
    tcgetattr(slave_, &raw);
    cfmakeraw(&raw);
    tcsetattr(slave_, TCSANOW, &raw);
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
    slavePath_ = QString::fromLocal8Bit(name);
}

PtyPair::~PtyPair() {
    if (master_ >= 0) {
        ::close(master_);
    }
    if (slave_ >= 0) {
        ::close(slave_);
    }
}

void PtyPair::write(const std::vector<unsigned char>& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(master_, bytes.data() + done, bytes.size() - done);
        if (n <= 0) {
            break;
        }
        done += static_cast<std::size_t>(n);
    }
}

void PtyPair::closeUnitSide() {
    for (int* fd : {&master_, &slave_}) {
        if (*fd >= 0) {
            ::close(*fd);
            *fd = -1;
        }
    }
}

std::vector<unsigned char> PtyPair::readAvailable() {
    std::vector<unsigned char> out;
    unsigned char buffer[512];
    while (true) {
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) {
            break;
        }
        out.insert(out.end(), buffer, buffer + n);
    }
    return out;
}

}  // namespace halvex::testing
