// The session's tours: reading the selected tour step by step, editing its
// steps, starting and clearing a tour. The replies keep the tour table.
#include <string>

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
// A message that names one tour.
template <class M>
std::vector<Byte> tourMessage(vocab::Field<M> tourField, int tour) {
    auto message = vocab::blank<M>();
    vocab::put(message, tourField, checkedByte(tour));
    return message;
}

// A step's two bytes into a message that stores one. Every step record has
// the same bits.
template <class M, int At>
void putStep(std::vector<Byte>& message, vocab::StepRecord<M, At>, const TourStepBytes& bytes) {
    using Step = vocab::StepRecord<M, At>;
    vocab::put(message, Step::kPresetByte, bytes.preset);
    vocab::put(message, Step::kDwellByte, bytes.dwell);
}

// A message that stores a step at a position: inserting or replacing.
template <class M, int At>
std::vector<Byte> stepAtMessage(vocab::Field<M> tourField, vocab::Field<M> stepField,
                                vocab::StepRecord<M, At> record, int tour, int position,
                                const TourStep& step) {
    const TourStepBytes bytes = encodeTourStep(step);
    auto message = tourMessage(tourField, tour);
    putStep(message, record, bytes);
    vocab::put(message, stepField, checkedByte(position));
    return message;
}

TourStep stepFrom(const ByteTable& rx) {
    namespace t = vocab::tour_step;
    using Step = t::Step;
    return {static_cast<int>(vocab::get(rx, t::kStep)),
            static_cast<int>(vocab::get(rx, Step::kPreset)),
            static_cast<int>(vocab::get(rx, Step::kCamera)),
            static_cast<int>(vocab::get(rx, Step::kDwell)), vocab::get(rx, Step::kBlank) != 0};
}
}  // namespace

TourStepBytes encodeTourStep(const TourStep& step) {
    using Step = vocab::tour_step::Step;
    // Added up as whole bytes: a preset of -1 (none chosen) with camera 2
    // goes out as the sum it makes, and with the default camera is a range
    // fault.
    return {checkedByte(step.preset + static_cast<int>(vocab::inPlace(
                                          Step::kCamera, static_cast<std::uint32_t>(step.camera)))),
            checkedByte(step.dwellSeconds +
                        static_cast<int>(vocab::inPlace(Step::kBlank, step.blank ? 1 : 0)))};
}

void Session::watchTourReports() {
    receiver_.registerDecoder(vocab::TourStepCount::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        tours_.selected = static_cast<int>(vocab::get(rx, vocab::tour_step_count::kTour));
        tours_.stepCount = static_cast<int>(vocab::get(rx, vocab::tour_step_count::kSteps));
        emit tourStepCountReported(tours_.selected, tours_.stepCount);
    });
    // Inserting and deleting are followed by reading the tour again instead.
    for (Byte code : {vocab::TourStepRequest::kCode, vocab::AppendTourStep::kCode,
                      vocab::ReplaceTourStep::kCode}) {
        receiver_.registerDecoder(code, [this] { takeTourStep(); });
    }
    receiver_.registerDecoder(vocab::TourStarted::kCode, [this] {
        const auto tour = static_cast<int>(vocab::get(state_.RxBuffer, vocab::tour_started::kTour));
        if (tour == vocab::tour_started::kEmpty) {
            emit tourFoundEmpty();
            return;
        }
        tours_.selected = tour;
        emit tourStarted(tour);
    });
    receiver_.registerDecoder(vocab::TourCleared::kCode, [this] {
        const auto tour = static_cast<int>(vocab::get(state_.RxBuffer, vocab::tour_cleared::kTour));
        if (tour < 0 || tour >= TourTable::kTours) {
            throw RangeFault(RangeFault::SubscriptOutOfRange,
                             "tour " + std::to_string(tour) + " has no selector");
        }
        tours_.selected = tour;
        tours_.steps.clear();
        emit tourCleared(tour);
    });
}

void Session::takeTourStep() {
    const ByteTable& rx = state_.RxBuffer;
    const TourStep step = stepFrom(rx);
    if (step.number == vocab::tour_step::kNoStep) {
        return;
    }
    std::vector<TourStep>& steps = tours_.steps;
    const auto at = static_cast<std::size_t>(step.number);
    if (rx[0] == vocab::ReplaceTourStep::kCode && at < steps.size()) {
        steps[at] = step;
        emit tourStepReported(step.number);
    } else if (steps.size() < static_cast<std::size_t>(TourTable::kMostSteps)) {
        // A line that keeps sending step replies must not grow the table
        // without end.
        steps.push_back(step);
        emit tourStepReported(static_cast<int>(steps.size()) - 1);
    }
}

QCoro::Task<Outcome> Session::loadTour(int tour, Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    if (tour < 0 || tour >= TourTable::kTours) {
        co_return Outcome::rangeFault(RangeFault(RangeFault::SubscriptOutOfRange,
                                                 "tour " + std::to_string(tour) + " is not one"));
    }
    // A load asked for while one runs is not nested in it: the running one
    // starts over with the tour asked for last, and this call completes.
    tours_.selected = tour;
    auto loading = tourLoading_.run([this] { return loadSelectedTour(); });
    co_await std::move(loading);
    co_return tourLoadAnswered_ ? Outcome::done(lastReply_) : Outcome::noReply();
}

// One pass of a load: the tour's count, then each step it has.
QCoro::Task<> Session::loadSelectedTour() {
    tourLoadAnswered_ = false;
    const int tour = tours_.selected;
    tours_.steps.clear();
    emit tourLoadStarted(tour);
    const bool counted = co_await sendAndAwaitReply(
        state_, link_, tourMessage(vocab::tour_step_count_request::kTour, tour));
    if (!counted) {
        co_return;
    }
    tourLoadAnswered_ = true;
    if (tours_.stepCount == 0) {
        co_return;
    }
    const SendInProgressScope sending(state_);
    // The count may be 255 for a corrupt tour: the unit is still asked for
    // every step it claims to have.
    const int count = tours_.stepCount;
    for (int step = 0; step < count && !tourLoading_.superseded(); ++step) {
        auto message = tourMessage(vocab::tour_step_request::kTour, tour);
        vocab::put(message, vocab::tour_step_request::kStep, static_cast<Byte>(step));
        const FrameTicket request = co_await sendHeld(state_, link_, message);
        if (!wentOut(request)) {
            tourLoadAnswered_ = false;
            co_return;  // the port is gone
        }
        const bool answered = co_await link_.awaitReply(request);
        if (!answered) {
            tourLoadAnswered_ = false;
            co_return;  // the unit has stopped answering
        }
    }
}

QCoro::Task<Outcome> Session::appendTourStep(int tour, TourStep step, Requester requester) {
    return exchange(requester, [tour, step] {
        namespace m = vocab::append_tour_step;
        const TourStepBytes bytes = encodeTourStep(step);
        auto message = tourMessage(m::kTour, tour);
        putStep(message, m::Step{}, bytes);
        return message;
    });
}

QCoro::Task<Outcome> Session::insertTourStep(int tour, int position, TourStep step,
                                             Requester requester) {
    return exchange(requester, [tour, position, step] {
        namespace m = vocab::insert_tour_step;
        return stepAtMessage(m::kTour, m::kStep, m::Step{}, tour, position, step);
    });
}

QCoro::Task<Outcome> Session::replaceTourStep(int tour, int position, TourStep step,
                                              Requester requester) {
    return exchange(requester, [tour, position, step] {
        namespace m = vocab::replace_tour_step;
        return stepAtMessage(m::kTour, m::kStep, m::Step{}, tour, position, step);
    });
}

QCoro::Task<Outcome> Session::deleteTourStep(int tour, int position, Requester requester) {
    return exchange(requester, [tour, position] {
        namespace m = vocab::delete_tour_step;
        const Byte step = checkedByte(position);
        auto message = tourMessage(m::kTour, tour);
        vocab::put(message, m::kStep, step);
        return message;
    });
}

QCoro::Task<Outcome> Session::startTour(int tour, Requester requester) {
    return exchange(requester, [tour] { return tourMessage(vocab::execute_tour::kTour, tour); });
}

QCoro::Task<Outcome> Session::clearTour(int tour, Requester requester) {
    return exchange(requester, [tour] { return tourMessage(vocab::clear_tour::kTour, tour); });
}

QCoro::Task<Outcome> Session::readTourStepCount(int tour, Requester requester) {
    return exchange(requester,
                    [tour] { return tourMessage(vocab::tour_step_count_request::kTour, tour); });
}

}  // namespace halvex
