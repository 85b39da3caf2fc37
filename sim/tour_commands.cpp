// Tour commands: 0x37 execute, 0x50 clear, 0x51 read a step, 0x52 append,
// 0x53 insert, 0x54 delete, 0x55 replace, 0x56 step count.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr Byte kNone = 255;

Response stepReply(Byte code, int tour, std::optional<int> position, TourStep step) {
    return Response::answer(Reply(code)
                                .byte(tour)
                                .byte(position ? *position : kNone)
                                .byte(step.preset)
                                .byte(step.dwell));
}

Response execute(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    const bool started = state.tourRunner.start(tour, state.nowMs, state.plant());
    return Response::answer(Reply(command.code()).byte(started ? tour : kNone));
}

Response clear(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    state.tours.clear(tour);
    return Response::answer(Reply(command.code()).byte(tour));
}

Response readStep(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    const int position = command.byte(2);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const auto step = state.tours.step(tour, position);
    return stepReply(command.code(), tour, step ? std::optional(position) : std::nullopt,
                     step.value_or(TourStep{}));
}

Response append(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const TourStep step{command.byte(2), command.byte(3)};
    return stepReply(command.code(), tour, state.tours.append(tour, step), step);
}

// Insert (0x53) and replace (0x55) share a layout: t, s, p, d.
Response editAt(UnitState& state, const Command& command, bool insert) {
    const int tour = command.byte(1);
    const int position = command.byte(2);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const TourStep step{command.byte(3), command.byte(4)};
    const bool done = insert ? state.tours.insert(tour, position, step)
                             : state.tours.replace(tour, position, step);
    return stepReply(command.code(), tour, done ? std::optional(position) : std::nullopt, step);
}

Response insert(UnitState& state, const Command& command) {
    return editAt(state, command, true);
}

Response replace(UnitState& state, const Command& command) {
    return editAt(state, command, false);
}

Response remove(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    const int position = command.byte(2);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const auto removed = state.tours.remove(tour, position);
    return stepReply(command.code(), tour, removed ? std::optional(position) : std::nullopt,
                     removed.value_or(TourStep{}));
}

Response count(UnitState& state, const Command& command) {
    const int tour = command.byte(1);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    return Response::answer(Reply(command.code()).byte(tour).byte(state.tours.size(tour)));
}

}  // namespace

void addTourCommands(CommandTable& table) {
    table.add(0x37, 1, execute);
    table.add(0x50, 1, clear);
    table.add(0x51, 2, readStep);
    table.add(0x52, 3, append);
    table.add(0x53, 4, insert);
    table.add(0x54, 2, remove);
    table.add(0x55, 4, replace);
    table.add(0x56, 1, count);
}

}  // namespace halvex::sim
