#include "sim/replay_unit.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

#include "protocol/frame_description.h"
#include "protocol/line_recording.h"

namespace halvex::sim {

using recording::LineKind;
using recording::LineRecord;
using recording::Verdict;

ReplayUnit::ReplayUnit(const std::vector<LineRecord>& records)
    : assembler_([this](const ConsoleFrame& frame) { answer(frame); }) {
    // The frame waiting for its reply, by code.
    std::optional<Byte> asked;
    for (const LineRecord& record : records) {
        if (record.kind == LineKind::Event || record.bytes.empty()) {
            continue;
        }
        if (record.kind == LineKind::Sent) {
            if (asked) {
                replies_[*asked].wires.emplace_back();  // it got no reply
            }
            asked = table::describeFrame(record.bytes).code;
            continue;
        }
        const bool reply = record.bytes.front() == kAck && record.verdict != Verdict::Noise;
        if (reply && asked) {
            replies_[*asked].wires.push_back(record.bytes);
            asked.reset();
        }
    }
}

void ReplayUnit::receiveFromConsole(const std::uint8_t* data, std::size_t size) {
    assembler_.feed(data, size);
}

void ReplayUnit::answer(const ConsoleFrame& frame) {
    if (!frame.lrcGood || frame.message.empty()) {
        return;
    }
    const auto found = replies_.find(frame.message.front());
    if (found == replies_.end()) {
        return;
    }
    Replies& replies = found->second;
    const std::vector<Byte>* wire = nullptr;
    if (replies.next < replies.wires.size()) {
        wire = &replies.wires[replies.next++];
    } else {
        const auto last = std::find_if(replies.wires.rbegin(), replies.wires.rend(),
                                       [](const std::vector<Byte>& w) { return !w.empty(); });
        wire = last != replies.wires.rend() ? &*last : nullptr;
    }
    if (wire != nullptr) {
        output_.insert(output_.end(), wire->begin(), wire->end());
    }
}

std::vector<std::uint8_t> ReplayUnit::takeOutput() {
    std::vector<std::uint8_t> bytes;
    bytes.swap(output_);
    return bytes;
}

std::size_t ReplayUnit::codesAnswered() const {
    return static_cast<std::size_t>(
        std::count_if(replies_.begin(), replies_.end(), [](const auto& entry) {
            const auto& wires = entry.second.wires;
            return std::any_of(wires.begin(), wires.end(),
                               [](const std::vector<Byte>& w) { return !w.empty(); });
        }));
}

std::size_t ReplayUnit::repliesRecorded() const {
    std::size_t count = 0;
    for (const auto& entry : replies_) {
        count += entry.second.wires.size();
    }
    return count;
}

std::string readRecordingFile(const std::string& path, std::vector<LineRecord>& records,
                              std::string& warning) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return "cannot read " + path;
    }
    const std::vector<Byte> bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
    recording::RecordingReader reader(bytes.data(), bytes.size());
    while (auto record = reader.next()) {
        records.push_back(std::move(*record));
    }
    const bool anyFrame = std::any_of(records.begin(), records.end(), [](const LineRecord& r) {
        return r.kind != LineKind::Event;
    });
    if (!anyFrame) {
        return path + " holds no frames" + (reader.error().empty() ? "" : ": " + reader.error());
    }
    if (!reader.error().empty()) {
        warning = path + ": reading stopped, " + reader.error();
    }
    return {};
}

}  // namespace halvex::sim
