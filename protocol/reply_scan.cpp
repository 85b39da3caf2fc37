#include "protocol/reply_scan.h"

#include <algorithm>

namespace halvex {

namespace {
// One more than RxBuffer holds: storing that one is the range fault that
// stops a runaway reply.
constexpr std::size_t kMostBodyBytes = ByteTable::kLastIndex + 2;

// Reads stuffed fields from `waiting`, starting at `next`.
class FieldReader {
  public:
    FieldReader(const std::vector<Byte>& waiting, std::size_t next, bool settled)
        : waiting_(waiting), next_(next), settled_(settled) {}

    enum class Result { Value, NoneYet, Dry };

    // One field byte, unstuffed, with its raw first byte; the capture gets
    // the escape (if any) and the value.
    Result read(Byte& value, Byte& raw, std::vector<Byte>& capture) {
        if (next_ >= waiting_.size()) {
            return settled_ ? Result::Dry : Result::NoneYet;
        }
        raw = waiting_[next_];
        if (raw == kEsc) {
            if (next_ + 1 < waiting_.size()) {
                capture.push_back(kEsc);
                value = unstuffed(waiting_[next_ + 1]);
                next_ += 2;
                capture.push_back(value);
                return Result::Value;
            }
            if (!settled_) {
                return Result::NoneYet;
            }
        }
        value = raw;
        ++next_;
        capture.push_back(value);
        return Result::Value;
    }

    std::size_t next() const { return next_; }

  private:
    const std::vector<Byte>& waiting_;
    std::size_t next_;
    bool settled_;
};
}  // namespace

ReplyScan scanReply(const std::vector<Byte>& waiting, bool settled) {
    ReplyScan scan;
    // The hunt for the 0x06. One that is the last byte waiting only starts a
    // reply if something follows it.
    const auto start = std::find(waiting.begin(), waiting.end(), kAck);
    if (start == waiting.end()) {
        scan.outcome = ReplyScan::Outcome::NoStart;
        scan.used = waiting.size();
        scan.start = scan.used;
        return scan;
    }
    if (start + 1 == waiting.end()) {
        if (!settled) {
            return scan;
        }
        scan.outcome = ReplyScan::Outcome::NoStart;
        scan.used = waiting.size();
        scan.start = scan.used;
        return scan;
    }

    scan.start = static_cast<std::size_t>(start - waiting.begin());
    scan.capture.push_back(kAck);
    FieldReader reader(waiting, static_cast<std::size_t>(start - waiting.begin()) + 1, settled);
    Byte value = 0;
    Byte raw = 0;
    if (reader.read(value, raw, scan.capture) != FieldReader::Result::Value) {
        // Only an escape can be the address's first byte and lack its partner.
        return ReplyScan{};
    }
    scan.address = value;

    while (true) {
        const FieldReader::Result result = reader.read(value, raw, scan.capture);
        if (result == FieldReader::Result::NoneYet) {
            return ReplyScan{};
        }
        if (result == FieldReader::Result::Dry) {
            scan.outcome = ReplyScan::Outcome::RanDry;
            break;
        }
        scan.body.push_back(value);
        if (scan.body.size() == kMostBodyBytes) {
            scan.outcome = ReplyScan::Outcome::Overlong;
            break;
        }
        if (raw == kEtx) {
            scan.outcome = ReplyScan::Outcome::Ended;
            break;
        }
    }
    scan.used = reader.next();
    return scan;
}

}  // namespace halvex
