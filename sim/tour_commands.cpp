// Tour commands: executing and clearing a tour, and reading, appending,
// inserting, deleting and replacing its steps, and counting them.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

template <class M>
int valueOf(const Command& command, vocab::Field<M> place) {
    return static_cast<int>(command.field(place));
}

template <class Step>
TourStep stepOf(const Command& command) {
    return {static_cast<Byte>(command.field(Step::kPresetByte)),
            static_cast<Byte>(command.field(Step::kDwellByte))};
}

// The answer to every step command: the tour, the step's position (or none)
// and the step.
Response stepReply(Byte code, int tour, std::optional<int> position, TourStep step) {
    namespace v = vocab::tour_step;
    return Response::answer(
        Reply::of<vocab::TourStep>(code)
            .set(v::kTour, static_cast<std::uint32_t>(tour))
            .set(v::kStep, position ? static_cast<std::uint32_t>(*position) : v::kNoStep)
            .set(v::Step::kPresetByte, step.preset)
            .set(v::Step::kDwellByte, step.dwell));
}

Response execute(UnitState& state, const Command& command) {
    namespace v = vocab::tour_started;
    const int tour = valueOf(command, vocab::execute_tour::kTour);
    const bool started = state.tourRunner.start(tour, state.nowMs, state.plant());
    return Response::answer(Reply::of<vocab::TourStarted>().set(
        v::kTour, started ? static_cast<std::uint32_t>(tour) : v::kEmpty));
}

Response clear(UnitState& state, const Command& command) {
    const int tour = valueOf(command, vocab::clear_tour::kTour);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    state.tours.clear(tour);
    return Response::answer(Reply::of<vocab::TourCleared>().set(vocab::tour_cleared::kTour,
                                                                static_cast<std::uint32_t>(tour)));
}

Response readStep(UnitState& state, const Command& command) {
    namespace v = vocab::tour_step_request;
    const int tour = valueOf(command, v::kTour);
    const int position = valueOf(command, v::kStep);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const auto step = state.tours.step(tour, position);
    return stepReply(command.code(), tour, step ? std::optional(position) : std::nullopt,
                     step.value_or(TourStep{}));
}

Response append(UnitState& state, const Command& command) {
    namespace v = vocab::append_tour_step;
    const int tour = valueOf(command, v::kTour);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const TourStep step = stepOf<v::Step>(command);
    return stepReply(command.code(), tour, state.tours.append(tour, step), step);
}

// Insert and replace share a layout: tour, position, step.
template <class Step, class M>
Response editAt(UnitState& state, const Command& command, vocab::Field<M> tourPlace,
                vocab::Field<M> positionPlace, bool insert) {
    const int tour = valueOf(command, tourPlace);
    const int position = valueOf(command, positionPlace);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const TourStep step = stepOf<Step>(command);
    const bool done = insert ? state.tours.insert(tour, position, step)
                             : state.tours.replace(tour, position, step);
    return stepReply(command.code(), tour, done ? std::optional(position) : std::nullopt, step);
}

Response insert(UnitState& state, const Command& command) {
    namespace v = vocab::insert_tour_step;
    return editAt<v::Step>(state, command, v::kTour, v::kStep, true);
}

Response replace(UnitState& state, const Command& command) {
    namespace v = vocab::replace_tour_step;
    return editAt<v::Step>(state, command, v::kTour, v::kStep, false);
}

Response remove(UnitState& state, const Command& command) {
    namespace v = vocab::delete_tour_step;
    const int tour = valueOf(command, v::kTour);
    const int position = valueOf(command, v::kStep);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    const auto removed = state.tours.remove(tour, position);
    return stepReply(command.code(), tour, removed ? std::optional(position) : std::nullopt,
                     removed.value_or(TourStep{}));
}

Response count(UnitState& state, const Command& command) {
    namespace v = vocab::tour_step_count;
    const int tour = valueOf(command, vocab::tour_step_count_request::kTour);
    if (!Tours::valid(tour)) {
        return Response::refuse();
    }
    return Response::answer(
        Reply::of<vocab::TourStepCount>()
            .set(v::kTour, static_cast<std::uint32_t>(tour))
            .set(v::kSteps, static_cast<std::uint32_t>(state.tours.size(tour))));
}

}  // namespace

void addTourCommands(CommandTable& table) {
    table.add<vocab::ExecuteTour>(execute);
    table.add<vocab::ClearTour>(clear);
    table.add<vocab::TourStepRequest>(readStep);
    table.add<vocab::AppendTourStep>(append);
    table.add<vocab::InsertTourStep>(insert);
    table.add<vocab::DeleteTourStep>(remove);
    table.add<vocab::ReplaceTourStep>(replace);
    table.add<vocab::TourStepCountRequest>(count);
}

}  // namespace halvex::sim
