#include "fuzz/recording_harness.h"

#include <algorithm>
#include <vector>

#include "protocol/frame_description.h"
#include "protocol/line_recording.h"
#include "sim/replay_unit.h"

namespace halvex::fuzz {

namespace {

using recording::LineRecord;

std::vector<LineRecord> readAll(const Byte* data, std::size_t size, std::string& error) {
    recording::RecordingReader reader(data, size);
    std::vector<LineRecord> records;
    while (auto record = reader.next()) {
        records.push_back(std::move(*record));
    }
    error = reader.error();
    return records;
}

bool same(const LineRecord& a, const LineRecord& b) {
    return a.timeUs == b.timeUs && a.kind == b.kind && a.verdict == b.verdict && a.bytes == b.bytes;
}

// The frames a console sends on connecting, and one of every start byte.
std::vector<std::vector<Byte>> consoleFrames() {
    std::vector<std::vector<Byte>> frames;
    for (const std::vector<Byte>& message : {std::vector<Byte>{0x31, 0, 0, 0, 0, 0, 0, 0},
                                             {0x85},
                                             {0x81, 0x80},
                                             {0x40, 0},
                                             {0x56, 0},
                                             {0x9A},
                                             {0x92, 0x80, 0, 0, 0, 0, 0, 0, 0},
                                             {0x40, 1}}) {
        frames.push_back(encodeFrame(kStx, 0, message, 0));
    }
    return frames;
}

}  // namespace

std::string checkRecording(const std::uint8_t* data, std::size_t size) {
    std::string error;
    const std::vector<LineRecord> records = readAll(data, size, error);
    std::size_t bytesRead = 0;
    for (const LineRecord& record : records) {
        bytesRead += record.bytes.size();
        if (record.timeUs < 0) {
            return "a record before 1970";
        }
        if (record.kind != recording::LineKind::Event &&
            table::describeFrame(record.bytes).summary().empty()) {
            return "a frame described by nothing";
        }
    }
    // Each record is a block of at least 32 bytes carrying its bytes.
    if (bytesRead > size || records.size() * 32 > size) {
        return "read more than the file holds";
    }

    // Written back by the console's own writer, they read the same.
    std::vector<Byte> rewritten = recording::recordingHeader("fuzz", "line");
    for (const LineRecord& record : records) {
        const auto block = recording::recordingBlock(record);
        rewritten.insert(rewritten.end(), block.begin(), block.end());
    }
    std::string again;
    const std::vector<LineRecord> reread = readAll(rewritten.data(), rewritten.size(), again);
    if (!again.empty()) {
        return "a rewritten recording fails to read: " + again;
    }
    if (reread.size() != records.size() ||
        !std::equal(records.begin(), records.end(), reread.begin(), same)) {
        return "a rewritten recording reads differently";
    }

    // The replay answers with replies from the file and nothing else.
    std::vector<std::vector<Byte>> replies;
    for (const LineRecord& record : records) {
        if (record.kind == recording::LineKind::Received) {
            replies.push_back(record.bytes);
        }
    }
    sim::ReplayUnit replay(records);
    for (const auto& frame : consoleFrames()) {
        replay.receiveFromConsole(frame.data(), frame.size());
        const std::vector<Byte> answer = replay.takeOutput();
        if (!answer.empty() && std::find(replies.begin(), replies.end(), answer) == replies.end()) {
            return "the replay answered with a reply it was never given";
        }
    }
    return {};
}

}  // namespace halvex::fuzz
