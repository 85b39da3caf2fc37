#pragma once

#include <QObject>
#include <cstdint>
#include <deque>
#include <optional>

#include "protocol/frame.h"
#include "protocol/line_record.h"

namespace halvex {

// How long the line and the unit take, from the records of the line and
// from the operator's input: the time from a click (or key) to the frame it
// sends going on the wire, and from a frame to its reply (the next reply of
// the same code). Keeps the samples of the last minutes.
class LatencyMeter : public QObject {
    Q_OBJECT
  public:
    static constexpr std::int64_t kWindowUs = 5LL * 60 * 1000 * 1000;

    struct Figures {
        int count = 0;
        double p50Ms = 0;
        double p99Ms = 0;
    };

    explicit LatencyMeter(QObject* parent = nullptr);

    // Every record of the line, in order.
    void note(const recording::LineRecord& record);
    // Operator input: installs an application-wide filter for clicks and keys.
    void watchInput();
    // A frame was handed to the link while the input that caused it was
    // being handled: it is the input's frame.
    void noteQueued(const void* frame);
    // That frame went on the wire at this time.
    void noteWritten(const void* frame, std::int64_t timeUs);

    // Over the samples younger than kWindowUs at `nowUs`.
    Figures clickToWire(std::int64_t nowUs) const;
    Figures frameToReply(std::int64_t nowUs) const;

    void clear();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Sample {
        std::int64_t atUs;
        std::int64_t takenUs;
    };
    struct Outstanding {
        std::int64_t sentUs;
        Byte code;
    };
    static void add(std::deque<Sample>& samples, Sample sample);
    static Figures figures(const std::deque<Sample>& samples, std::int64_t nowUs);

    std::deque<Sample> clicks_;
    std::deque<Sample> replies_;
    std::deque<Outstanding> outstanding_;
    // The input being handled, until the event loop comes round again.
    std::optional<std::int64_t> inputUs_;
    std::uint64_t inputSerial_ = 0;
    // The frame that input queued, waiting for its tick.
    const void* clickedFrame_ = nullptr;
    std::int64_t clickedUs_ = 0;
};

}  // namespace halvex
