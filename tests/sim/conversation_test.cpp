// Every command the virtual unit knows, with a handful of payloads each,
// against the transcript in unit_conversation.txt: each reply byte for byte, what came later (the
// long procedures' answers), where the platform is nine seconds on, and which stored settings the
// command changed. The console's own tests lean on the virtual unit answering as a unit does; this
// keeps every answer as it was checked.
//
// After a deliberate change to the virtual unit, write the transcript again
// with HALVEX_WRITE_CONVERSATION=1 and read the difference before keeping it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "protocol/frame_description.h"
#include "sim/command_table.h"
#include "sim/state_file.h"
#include "tests/sim/unit_test_support.h"
#include "tests/support/kept_text.h"

namespace halvex::sim::testing {
namespace {

constexpr auto hex = &table::hexBytes;
std::string replies(const std::vector<DecodedFrame>& frames) {
    std::string out;
    for (const DecodedFrame& frame : frames) {
        out += (out.empty() ? "< " : "\n< ") + std::string(frame.start == kAck ? "" : "NAK ") +
               hex(frame.message) + (frame.lrcGood ? "" : " (bad LRC)");
    }
    return frames.empty() ? "< nothing" : out;
}

// The unit's stored settings as its state file writes them, a set of lines.
std::set<std::string> storedLines(const UnitState& state) {
    const auto path = std::filesystem::temp_directory_path() /
                      ("halvex-conversation-" + std::to_string(::getpid()) + ".state");
    saveState(path.string(), {state.settings, state.powerUp, state.presets, state.tours});
    std::ifstream file(path);
    std::set<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.insert(line);
    }
    std::filesystem::remove(path);
    return lines;
}

// All zeros, counting up, 0x55 after a first byte of 1, all ones, small
// numbers (angles of a few degrees where angles go), and one byte longer.
std::vector<std::vector<Byte>> payloadsFor(std::size_t size) {
    std::vector<std::vector<Byte>> payloads(5, std::vector<Byte>(size));
    for (std::size_t i = 0; i < size; ++i) {
        payloads[1][i] = static_cast<Byte>(i + 1);
        payloads[2][i] = i == 0 ? 1 : 0x55;
        payloads[3][i] = 0xFF;
        payloads[4][i] = i % 3 == 2 ? 0 : static_cast<Byte>((i * 37 + 5) % 40);
    }
    payloads.emplace_back(size + 1, 0x33);
    return payloads;
}

// The whole conversation, as the transcript writes it.
std::string converse() {
    UnitOptions options;
    options.clockDate = CalendarDate{2026, 11, 25};  // not today's: the transcript keeps
    std::ostringstream out;
    const std::set<std::string> factory = storedLines(UnitHarness(options).unit.state());
    for (int code = 0; code < 256; ++code) {
        const CommandEntry* entry = CommandTable::standard().find(static_cast<Byte>(code));
        if (entry == nullptr) {
            continue;
        }
        UnitHarness unit(options);
        out << "# command " << hex({static_cast<Byte>(code)}) << '\n';
        for (const std::vector<Byte>& payload : payloadsFor(entry->minPayload)) {
            std::vector<Byte> message(payload.size() + 1, static_cast<Byte>(code));
            std::copy(payload.begin(), payload.end(), message.begin() + 1);
            out << "> " << hex(message) << '\n' << replies(unit.send(message)) << '\n';
            unit.advance(100);
            const auto late = unit.unit.takeOutput();  // long procedures, camera answers
            if (!late.empty()) {
                out << "later " << replies(decodeFrames(late)) << '\n';
            }
        }
        const auto jog = vocab::blank<vocab::JogMessage>();
        for (int tick = 0; tick < 90; ++tick) {  // jogging at speed 0, as the console does
            unit.advance(100);
            for (const DecodedFrame& frame : unit.send(jog)) {
                if (frame.message.empty() || frame.message.front() != jog[0]) {
                    out << "later " << replies({frame}) << '\n';
                }
            }
        }
        out << "9 s later " << replies(unit.send(jog)) << '\n';
        for (const std::string& line : storedLines(unit.unit.state())) {
            if (factory.count(line) == 0) {
                out << "stored " << line << '\n';
            }
        }
    }
    return out.str();
}

TEST(UnitConversation, EveryCommandAnswersAsTheTranscriptSays) {
    halvex::testing::expectAsKept(converse(), HALVEX_SIM_TEST_DATA "/unit_conversation.txt",
                                  "HALVEX_WRITE_CONVERSATION");
}

}  // namespace
}  // namespace halvex::sim::testing
