#include "recorder/latency_meter.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <algorithm>
#include <vector>

#include "protocol/frame_description.h"
#include "recorder/line_tap.h"

namespace halvex {

namespace {
// Frames sent and not answered yet; a unit that stopped answering must not
// make the list grow.
constexpr std::size_t kMostOutstanding = 16;
// Enough for ten samples a second over the whole window.
constexpr std::size_t kMostSamples = 4000;

bool isOperatorInput(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return true;
        default:
            return false;
    }
}

// The nearest-rank percentile of sorted values.
double percentile(const std::vector<std::int64_t>& sorted, int percent) {
    const std::size_t rank = (sorted.size() * static_cast<std::size_t>(percent) + 99) / 100;
    return static_cast<double>(sorted[std::max<std::size_t>(rank, 1) - 1]) / 1000.0;
}
}  // namespace

LatencyMeter::LatencyMeter(QObject* parent) : QObject(parent) {}

void LatencyMeter::add(std::deque<Sample>& samples, Sample sample) {
    samples.push_back(sample);
    while (samples.size() > kMostSamples ||
           (!samples.empty() && samples.front().atUs < sample.atUs - kWindowUs)) {
        samples.pop_front();
    }
}

void LatencyMeter::note(const recording::LineRecord& record) {
    if (record.kind == recording::LineKind::Event) {
        return;
    }
    const table::FrameDescription frame = table::describeFrame(record.bytes);
    if (!frame.code) {
        return;
    }
    if (record.kind == recording::LineKind::Sent) {
        outstanding_.push_back({record.timeUs, *frame.code});
        if (outstanding_.size() > kMostOutstanding) {
            outstanding_.pop_front();
        }
        return;
    }
    if (frame.start != table::FrameStart::Reply) {
        return;
    }
    // Replies come in the order of the frames: earlier frames of other codes
    // that this reply overtakes got none.
    const auto answered =
        std::find_if(outstanding_.begin(), outstanding_.end(),
                     [&frame](const Outstanding& o) { return o.code == *frame.code; });
    if (answered == outstanding_.end()) {
        return;
    }
    add(replies_, {record.timeUs, record.timeUs - answered->sentUs});
    outstanding_.erase(outstanding_.begin(), answered + 1);
}

void LatencyMeter::watchInput() {
    QCoreApplication::instance()->installEventFilter(this);
}

bool LatencyMeter::eventFilter(QObject* watched, QEvent* event) {
    if (isOperatorInput(event->type())) {
        inputUs_ = LineTap::nowUs();
        const std::uint64_t serial = ++inputSerial_;
        // Once the event loop comes round again the input has been handled.
        QTimer::singleShot(0, this, [this, serial] {
            if (serial == inputSerial_) {
                inputUs_.reset();
            }
        });
    }
    return QObject::eventFilter(watched, event);
}

void LatencyMeter::noteQueued(const void* frame) {
    if (inputUs_) {
        clickedFrame_ = frame;
        clickedUs_ = *inputUs_;
        inputUs_.reset();
    }
}

void LatencyMeter::noteWritten(const void* frame, std::int64_t timeUs) {
    if (frame != nullptr && frame == clickedFrame_) {
        add(clicks_, {timeUs, timeUs - clickedUs_});
        clickedFrame_ = nullptr;
    }
}

LatencyMeter::Figures LatencyMeter::figures(const std::deque<Sample>& samples, std::int64_t nowUs) {
    std::vector<std::int64_t> taken;
    for (const Sample& sample : samples) {
        if (sample.atUs >= nowUs - kWindowUs) {
            taken.push_back(sample.takenUs);
        }
    }
    Figures out;
    if (taken.empty()) {
        return out;
    }
    std::sort(taken.begin(), taken.end());
    out.count = static_cast<int>(taken.size());
    out.p50Ms = percentile(taken, 50);
    out.p99Ms = percentile(taken, 99);
    return out;
}

LatencyMeter::Figures LatencyMeter::clickToWire(std::int64_t nowUs) const {
    return figures(clicks_, nowUs);
}

LatencyMeter::Figures LatencyMeter::frameToReply(std::int64_t nowUs) const {
    return figures(replies_, nowUs);
}

void LatencyMeter::clear() {
    clicks_.clear();
    replies_.clear();
    outstanding_.clear();
    clickedFrame_ = nullptr;
}

}  // namespace halvex
