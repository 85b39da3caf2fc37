#pragma once

// The tour messages: running a tour and editing its steps. A step is two
// bytes, the preset with its camera, then the dwell with the blank bit.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

// A tour step's two bytes from byte At of message M.
template <class M, int At>
struct StepRecord {
    static constexpr Field<M> kPreset{At, 1, 0x3F};
    static constexpr Field<M> kCamera{At, 1, 0xC0};
    static constexpr Field<M> kDwell{At + 1, 1, 0x7F};
    static constexpr Field<M> kBlank{At + 1, 1, 0x80};
    // The two bytes whole, as a step is stored.
    static constexpr Field<M> kPresetByte{At};
    static constexpr Field<M> kDwellByte{At + 1};
};

struct ExecuteTour : Message<0x37, 2> {};
struct ClearTour : Message<0x50, 2> {};
struct TourStepRequest : Message<0x51, 3> {};
struct AppendTourStep : Message<0x52, 4> {};
struct InsertTourStep : Message<0x53, 5> {};
struct DeleteTourStep : Message<0x54, 3> {};
struct ReplaceTourStep : Message<0x55, 5> {};
struct TourStepCountRequest : Message<0x56, 2> {};

namespace execute_tour {
inline constexpr Field<ExecuteTour> kTour{1};
}
namespace clear_tour {
inline constexpr Field<ClearTour> kTour{1};
}
namespace tour_step_request {
inline constexpr Field<TourStepRequest> kTour{1};
inline constexpr Field<TourStepRequest> kStep{2};
}  // namespace tour_step_request
namespace append_tour_step {
inline constexpr Field<AppendTourStep> kTour{1};
using Step = StepRecord<AppendTourStep, 2>;
}  // namespace append_tour_step
namespace insert_tour_step {
inline constexpr Field<InsertTourStep> kTour{1};
inline constexpr Field<InsertTourStep> kStep{2};
using Step = StepRecord<InsertTourStep, 3>;
}  // namespace insert_tour_step
namespace delete_tour_step {
inline constexpr Field<DeleteTourStep> kTour{1};
inline constexpr Field<DeleteTourStep> kStep{2};
}  // namespace delete_tour_step
namespace replace_tour_step {
inline constexpr Field<ReplaceTourStep> kTour{1};
inline constexpr Field<ReplaceTourStep> kStep{2};
using Step = StepRecord<ReplaceTourStep, 3>;
}  // namespace replace_tour_step
namespace tour_step_count_request {
inline constexpr Field<TourStepCountRequest> kTour{1};
}

// Replies.
struct TourStarted : Message<0x37, 2> {};
namespace tour_started {
inline constexpr Field<TourStarted> kTour{1};
inline constexpr Byte kEmpty = 255;  // the tour has no steps
}  // namespace tour_started

struct TourCleared : Message<0x50, 2> {};
namespace tour_cleared {
inline constexpr Field<TourCleared> kTour{1};
}

// The answer to reading, appending, inserting, deleting and replacing a step.
struct TourStep : Message<0x51, 5> {};
namespace tour_step {
inline constexpr Field<TourStep> kTour{1};
inline constexpr Field<TourStep> kStep{2};
inline constexpr Byte kNoStep = 255;
using Step = StepRecord<TourStep, 3>;
}  // namespace tour_step

struct TourStepCount : Message<0x56, 3> {};
namespace tour_step_count {
inline constexpr Field<TourStepCount> kTour{1};
inline constexpr Field<TourStepCount> kSteps{2};
inline constexpr Byte kCorrupt = 255;
}  // namespace tour_step_count

}  // namespace halvex::vocab
