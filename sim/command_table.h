#pragma once

// Maps each command code to its handler and the payload it needs. Handlers
// live with their command group and are added by that group.

#include <array>
#include <cstddef>
#include <optional>

#include "sim/message.h"
#include "sim/unit_state.h"

namespace halvex::sim {

// What a handler asks the unit to send.
struct Response {
    enum class Kind { Answer, Nothing, Refuse };

    static Response answer(Reply reply) { return {Kind::Answer, std::move(reply)}; }
    static Response nothing() { return {Kind::Nothing, std::nullopt}; }
    // Not carried out: the unit sends a NAK.
    static Response refuse() { return {Kind::Refuse, std::nullopt}; }

    Kind kind;
    std::optional<Reply> reply;
};

using Handler = Response (*)(UnitState& state, const Command& command);

struct CommandEntry {
    Handler handler = nullptr;
    std::size_t minPayload = 0;
};

class CommandTable {
  public:
    // M's code, taking M's shortest form and anything longer.
    template <class M>
    void add(Handler handler) {
        static_assert(M::kShortest >= 1, "a message holds at least its code");
        entries_[M::kCode] = CommandEntry{handler, static_cast<std::size_t>(M::kShortest - 1)};
    }
    const CommandEntry* find(Byte code) const {
        return entries_[code].handler != nullptr ? &entries_[code] : nullptr;
    }

    // The table of every command the unit knows.
    static const CommandTable& standard();

  private:
    std::array<CommandEntry, 256> entries_{};
};

void addMotionCommands(CommandTable& table);
void addPresetCommands(CommandTable& table);
void addTourCommands(CommandTable& table);
void addCameraCommands(CommandTable& table);
void addVideoCommands(CommandTable& table);
void addAlignmentCommands(CommandTable& table);
void addSetupCommands(CommandTable& table);

}  // namespace halvex::sim
