#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <set>

#include "protocol/frame_description.h"
#include "protocol/protocol_table.h"
#include "protocol/vocabulary.h"
#include "sim/message.h"

using namespace halvex;
namespace v = halvex::vocab;
using table::Direction;

namespace {

// A value of its own for the n-th field of a message, one that fits the
// field's mask: neighbours differ, angles take either sign and words use
// both bytes. A byte stays below its top bit, where byte 1 holds the read
// flag of a get/set command.
std::int64_t sample(std::uint32_t mask, int n) {
    const std::uint32_t range = mask >> std::countr_zero(mask);
    if (range > 0xFFFF) {
        return (n % 2 == 0 ? 1 : -1) * (12345 + 1111 * n);
    }
    if (range > 0xFF) {
        return 4660 + 273 * n;
    }
    return 1 + (7 * n + 3) % std::min<std::uint32_t>(range, 126);
}

// One field of a case: the table's name for it, its place and its value.
template <class M>
struct Set {
    Set(const char* name, v::Field<M> field) : Set(name, field, 0) { own = true; }
    Set(const char* name, v::Field<M> field, std::int64_t value)
        : name(name), field(field), value(value) {}
    const char* name;
    v::Field<M> field;
    std::int64_t value;
    bool own = false;  // take a sample value
};

struct Read {
    std::string name;
    std::int64_t sent;
    std::int64_t read;
};

// A message as one side built it and its fields as the other side read them.
struct Case {
    Direction direction;
    std::string layout;
    std::vector<Byte> message;
    std::vector<Read> fields;
};

// The cases, each message built by one side and read by the other.
class Cases {
  public:
    // Built by the console through the vocabulary, read by the virtual unit.
    template <class M>
    Cases& command(const std::string& layout, std::initializer_list<Set<M>> sets = {}) {
        Case c{Direction::ToUnit, layout, v::blank<M>(), {}};
        for (const Set<M>& set : valued(sets)) {
            v::put(c.message, set.field, static_cast<std::uint32_t>(set.value));
        }
        const sim::Command unit(c.message);
        for (const Set<M>& set : valued(sets)) {
            c.fields.push_back({set.name, set.value,
                                set.value < 0 ? v::getSigned(unit, set.field)
                                              : static_cast<std::int64_t>(unit.field(set.field))});
        }
        all_.push_back(std::move(c));
        return *this;
    }

    // Built by the virtual unit under `code`, read by the console's decoders.
    template <class M>
    Cases& reply(Byte code, const std::string& layout, std::initializer_list<Set<M>> sets = {}) {
        sim::Reply unit(code);
        for (const Set<M>& set : valued(sets)) {
            unit.set(set.field, static_cast<std::uint32_t>(set.value));
        }
        Case c{Direction::FromUnit, layout, unit.message(), {}};
        for (const Set<M>& set : valued(sets)) {
            c.fields.push_back({set.name, set.value,
                                set.value < 0
                                    ? v::getSigned(c.message, set.field)
                                    : static_cast<std::int64_t>(v::get(c.message, set.field))});
        }
        all_.push_back(std::move(c));
        return *this;
    }
    template <class M>
    Cases& reply(const std::string& layout, std::initializer_list<Set<M>> sets = {}) {
        return reply<M>(M::kCode, layout, sets);
    }

    // A get/set message, answered with the same layout.
    template <class M>
    Cases& both(const std::string& layout, std::initializer_list<Set<M>> sets) {
        return command<M>(layout, sets).template reply<M>(layout, sets);
    }

    std::vector<Case> take() { return std::move(all_); }

  private:
    template <class M>
    static std::vector<Set<M>> valued(std::initializer_list<Set<M>> sets) {
        std::vector<Set<M>> out(sets);
        for (std::size_t n = 0; n < out.size(); ++n) {
            if (out[n].own) {
                out[n].value = sample(out[n].field.mask, static_cast<int>(n));
            }
        }
        return out;
    }
    std::vector<Case> all_;
};

std::vector<Case> everyMessage() {
    namespace jog = v::jog;
    namespace report = v::report;
    namespace aml = v::absolute_move_with_lenses;
    namespace pr = v::preset_record;
    namespace ts = v::tour_step;
    namespace vc = v::video_configuration;
    using Camera1 = v::camera_lines::Camera1;
    using Camera2 = v::camera_lines::Camera2;
    using Lens1 = v::lens_configuration::Lens1;
    using Lens2 = v::lens_configuration::Lens2;
    // Status C without the target bit, which names the report otherwise.
    constexpr std::int64_t kMovingCw = 1 << 3;
    Cases cases;

    cases.command<v::JogMessage>("jog message", {{"pan speed", jog::kPanSpeed},
                                                 {"tilt speed", jog::kTiltSpeed},
                                                 {"flags", jog::kFlags},
                                                 {"pan direction", jog::kPanDirection},
                                                 {"tilt direction", jog::kTiltDirection},
                                                 {"zoom 1 jog", jog::kLensJog[0]},
                                                 {"focus 1 jog", jog::kLensJog[1]},
                                                 {"zoom 2 jog", jog::kLensJog[2]},
                                                 {"focus 2 jog", jog::kLensJog[3]}});
    // The jog message's report carries the cameras' counts, none here.
    cases.reply<v::PositionReport>(v::JogMessage::kCode, "position report",
                                   {{"pan", report::kPan},
                                    {"tilt", report::kTilt},
                                    {"status A", report::kStatusA},
                                    {"status B", report::kStatusB},
                                    {"status C", report::kStatusC, kMovingCw},
                                    {"zoom 1", report::kLens[0]},
                                    {"focus 1", report::kLens[1]},
                                    {"zoom 2", report::kLens[2]},
                                    {"focus 2", report::kLens[3]},
                                    {"type", report::kControllerType},
                                    {"camera 1 count", report::kCamera1Count, 0},
                                    {"camera 2 count", report::kCamera2Count, 0}});
    for (const Byte code :
         {v::GoToPreset::kCode, v::AbsoluteMove::kCode, v::DeltaMove::kCode, v::MoveToCentre::kCode,
          v::MoveToHome::kCode, v::AbsoluteMoveWithLenses::kCode}) {
        cases.reply<v::PositionReport>(code, "position report",
                                       {{"pan", report::kPan},
                                        {"tilt", report::kTilt},
                                        {"status A", report::kStatusA},
                                        {"status B", report::kStatusB},
                                        {"status C", report::kStatusC, kMovingCw},
                                        {"zoom 1", report::kLens[0]},
                                        {"focus 1", report::kLens[1]},
                                        {"zoom 2", report::kLens[2]},
                                        {"focus 2", report::kLens[3]},
                                        {"type", report::kControllerType}});
    }
    cases.command<v::GoToPreset>("go to preset", {{"preset", v::go_to_preset::kPreset}})
        .command<v::AbsoluteMove>(
            "absolute move", {{"pan", v::absolute_move::kPan}, {"tilt", v::absolute_move::kTilt}})
        .command<v::DeltaMove>("delta move",
                               {{"pan", v::delta_move::kPan}, {"tilt", v::delta_move::kTilt}})
        .command<v::MoveToCentre>("move to centre")
        .command<v::MoveToHome>("move to home")
        .command<v::AbsoluteMoveWithLenses>("absolute move with lenses",
                                            {{"pan", aml::kPan},
                                             {"tilt", aml::kTilt},
                                             {"zoom 1", aml::kLens[0]},
                                             {"focus 1", aml::kLens[1]},
                                             {"zoom 2", aml::kLens[2]},
                                             {"focus 2", aml::kLens[3]}});

    cases.command<v::PresetRequest>("preset request", {{"preset", v::preset_request::kPreset}})
        .command<v::StorePreset>("store preset", {{"preset", v::store_preset::kPreset},
                                                  {"pan", v::store_preset::kPan},
                                                  {"tilt", v::store_preset::kTilt}})
        .command<v::StoreCurrentPosition>("store current position",
                                          {{"preset", v::store_current_position::kPreset}})
        .command<v::AddLensPositions>("add lens positions",
                                      {{"preset", v::add_lens_positions::kPreset}})
        .command<v::ClearAllPresets>("clear all presets")
        .reply<v::ClearAllPresets>("presets cleared");
    for (const Byte code : {v::PresetRequest::kCode, v::StorePreset::kCode,
                            v::StoreCurrentPosition::kCode, v::AddLensPositions::kCode}) {
        cases.reply<v::PresetRecord>(code, "preset record",
                                     {{"preset", pr::kPreset},
                                      {"pan", pr::kPan},
                                      {"tilt", pr::kTilt},
                                      {"zoom 1", pr::kLens[0]},
                                      {"focus 1", pr::kLens[1]},
                                      {"zoom 2", pr::kLens[2]},
                                      {"focus 2", pr::kLens[3]}});
    }

    namespace ats = v::append_tour_step;
    namespace its = v::insert_tour_step;
    namespace rts = v::replace_tour_step;
    cases.command<v::ExecuteTour>("execute tour", {{"tour", v::execute_tour::kTour}})
        .command<v::ClearTour>("clear tour", {{"tour", v::clear_tour::kTour}})
        .command<v::TourStepRequest>("tour step request", {{"tour", v::tour_step_request::kTour},
                                                           {"step", v::tour_step_request::kStep}})
        .command<v::AppendTourStep>("append tour step", {{"tour", ats::kTour},
                                                         {"preset", ats::Step::kPreset},
                                                         {"camera", ats::Step::kCamera},
                                                         {"dwell", ats::Step::kDwell},
                                                         {"blank", ats::Step::kBlank}})
        .command<v::InsertTourStep>("insert tour step", {{"tour", its::kTour},
                                                         {"step", its::kStep},
                                                         {"preset", its::Step::kPreset},
                                                         {"camera", its::Step::kCamera},
                                                         {"dwell", its::Step::kDwell},
                                                         {"blank", its::Step::kBlank}})
        .command<v::DeleteTourStep>("delete tour step", {{"tour", v::delete_tour_step::kTour},
                                                         {"step", v::delete_tour_step::kStep}})
        .command<v::ReplaceTourStep>("replace tour step", {{"tour", rts::kTour},
                                                           {"step", rts::kStep},
                                                           {"preset", rts::Step::kPreset},
                                                           {"camera", rts::Step::kCamera},
                                                           {"dwell", rts::Step::kDwell},
                                                           {"blank", rts::Step::kBlank}})
        .command<v::TourStepCountRequest>("tour step count request",
                                          {{"tour", v::tour_step_count_request::kTour}})
        .reply<v::TourStarted>("tour started", {{"tour", v::tour_started::kTour}})
        .reply<v::TourCleared>("tour cleared", {{"tour", v::tour_cleared::kTour}})
        .reply<v::TourStepCount>("tour step count", {{"tour", v::tour_step_count::kTour},
                                                     {"steps", v::tour_step_count::kSteps}});
    const std::pair<Byte, const char*> stepReplies[] = {
        {v::TourStepRequest::kCode, "tour step"},
        {v::AppendTourStep::kCode, "tour step"},
        {v::ReplaceTourStep::kCode, "tour step"},
        {v::InsertTourStep::kCode, "tour step inserted"},
        {v::DeleteTourStep::kCode, "tour step deleted"}};
    for (const auto& [code, name] : stepReplies) {
        cases.reply<v::TourStep>(code, name,
                                 {{"tour", ts::kTour},
                                  {"step", ts::kStep},
                                  {"preset", ts::Step::kPreset},
                                  {"camera", ts::Step::kCamera},
                                  {"dwell", ts::Step::kDwell},
                                  {"blank", ts::Step::kBlank}});
    }

    cases
        .both<v::CameraLines>("camera lines", {{"camera 1 baud", Camera1::kBaud},
                                               {"camera 1 format", Camera1::kFormat},
                                               {"camera 1 level", Camera1::kLevel},
                                               {"camera 1 stop bits", Camera1::kStopBits},
                                               {"camera 2 baud", Camera2::kBaud},
                                               {"camera 2 format", Camera2::kFormat},
                                               {"camera 2 level", Camera2::kLevel},
                                               {"camera 2 stop bits", Camera2::kStopBits}})
        .both<v::LensConfiguration>("lens configuration",
                                    {{"lens 1", Lens1::kFlags},
                                     {"zoom 1 minimum", Lens1::kZoomMinimum},
                                     {"focus 1 minimum", Lens1::kFocusMinimum},
                                     {"lens 2", Lens2::kFlags},
                                     {"zoom 2 minimum", Lens2::kZoomMinimum},
                                     {"focus 2 minimum", Lens2::kFocusMinimum}})
        .command<v::CameraTransmit>("camera transmit", {{"length", v::camera_transmit::kCount},
                                                        {"to", v::camera_transmit::kCamera}})
        .reply<v::CameraTransmitDone>("camera transmit done")
        .both<v::CameraTimeouts>("camera time-outs",
                                 {{"camera 1 time-out", v::camera_timeouts::kCamera1},
                                  {"camera 2 time-out", v::camera_timeouts::kCamera2}});

    cases
        .both<v::LegacyVideo>("legacy video", {{"selection", v::legacy_video::kSelection},
                                               {"power", v::legacy_video::kPower}})
        .both<v::VideoConfiguration>(
            "video configuration",
            {{"route", vc::kRoute}, {"mode", vc::kMode}, {"power", vc::kPower}})
        .both<v::AuxOutputs>("aux outputs", {{"outputs", v::aux_outputs::kOutputs}})
        .both<v::AngleDisplay>("angle display", {{"line", v::angle_display::kLine},
                                                 {"display", v::angle_display::kBits}})
        .both<v::NameDisplay>(
            "name display", {{"line", v::name_display::kLine}, {"display", v::name_display::kBits}})
        .command<v::SiteName>("site name")
        .reply<v::SiteNameStored>("site name stored");

    cases
        .command<v::SetAngleOffsets>("set angle offsets", {{"pan", v::set_angle_offsets::kPan},
                                                           {"tilt", v::set_angle_offsets::kTilt}})
        .command<v::AlignToCentre>("align to centre")
        .command<v::AlignToCoordinates>(
            "align to coordinates",
            {{"pan", v::align_to_coordinates::kPan}, {"tilt", v::align_to_coordinates::kTilt}})
        .command<v::ZeroOffsets>("zero offsets")
        .command<v::OffsetsRequest>("offsets request")
        .command<v::SoftLimit>("set soft limit", {{"limit", v::soft_limit::kLimitByte}})
        .reply<v::SoftLimitReply>("soft limit", {{"limit", v::soft_limit_reply::kLimit},
                                                 {"position", v::soft_limit_reply::kPosition}})
        .command<v::CentreRequest>("centre request")
        .command<v::SetCentre>("set centre")
        .command<v::EncoderAlignment>("initial encoder alignment")
        .reply<v::EncoderAlignmentFinished>(
            "encoder alignment finished", {{"pan reading", v::encoder_alignment_finished::kPan},
                                           {"tilt reading", v::encoder_alignment_finished::kTilt}})
        .command<v::HomingCycle>("homing cycle")
        .reply<v::HomingCycleFinished>("homing cycle finished",
                                       {{"index", v::homing_cycle_finished::kIndex},
                                        {"pan index", v::homing_cycle_finished::kPan},
                                        {"tilt index", v::homing_cycle_finished::kTilt}});
    for (const Byte code :
         {v::SetAngleOffsets::kCode, v::AlignToCentre::kCode, v::AlignToCoordinates::kCode,
          v::ZeroOffsets::kCode, v::OffsetsRequest::kCode}) {
        cases.reply<v::AngleOffsets>(
            code, "angle offsets",
            {{"pan", v::angle_offsets::kPan}, {"tilt", v::angle_offsets::kTilt}});
    }
    for (const Byte code : {v::CentreRequest::kCode, v::SetCentre::kCode}) {
        cases.reply<v::CentrePosition>(
            code, "centre position",
            {{"pan centre", v::centre_position::kPan}, {"tilt centre", v::centre_position::kTilt}});
    }

    cases.command<v::RampRequest>("ramp request")
        .reply<v::Ramps>("ramps", {{"pan ramp", v::ramps::kPan}, {"tilt ramp", v::ramps::kTilt}})
        .command<v::Rates>("rates", {{"pan safe speed", v::rates::Pan::kSafeSpeedByte},
                                     {"pan ramp", v::rates::Pan::kRamp},
                                     {"pan deceleration", v::rates::Pan::kDeceleration},
                                     {"tilt safe speed", v::rates::Tilt::kSafeSpeedByte},
                                     {"tilt ramp", v::rates::Tilt::kRamp},
                                     {"tilt deceleration", v::rates::Tilt::kDeceleration}})
        .reply<v::RatesReply>("rates", {{"pan safe speed", v::rates_reply::Pan::kSafeSpeed},
                                   {"pan ramp", v::rates_reply::Pan::kRamp},
                                   {"pan deceleration", v::rates_reply::Pan::kDeceleration},
                                   {"tilt safe speed", v::rates_reply::Tilt::kSafeSpeed},
                                   {"tilt ramp", v::rates_reply::Tilt::kRamp},
                                   {"tilt deceleration", v::rates_reply::Tilt::kDeceleration}})
        .both<v::MinimumPair>("minimum pair", {{"pan minimum", v::minimum_pair::kPan},
                                               {"tilt minimum", v::minimum_pair::kTilt}})
        .both<v::TiltSettings>("tilt settings", {{"tilt safe speed", v::tilt_settings::kSafeSpeed},
                                                 {"tilt ramp", v::tilt_settings::kRamp},
                                                 {"tilt minimum", v::tilt_settings::kMinimum},
                                                 {"tilt maximum", v::tilt_settings::kMaximum}})
        .both<v::Directions>("directions", {{"directions", v::directions::kBits}})
        .both<v::CommTimeout>("comm time-out", {{"seconds", v::comm_timeout::kSeconds}})
        .command<v::Heater>("heater", {{"mode", v::heater::kModeByte}})
        .reply<v::Heater>("heater", {{"mode", v::heater::kMode}})
        .command<v::MaximaRequest>("maxima request")
        .command<v::MaximumPair>("maximum pair", {{"pan maximum", v::maximum_pair::kPan},
                                                  {"tilt maximum", v::maximum_pair::kTilt}})
        .command<v::FirmwareRequest>("firmware request")
        .reply<v::Firmware>("firmware", {{"major", v::firmware::kMajor},
                                         {"minor", v::firmware::kMinor},
                                         {"day", v::firmware::kDay},
                                         {"month", v::firmware::kMonth},
                                         {"year", v::firmware::kYear}})
        .command<v::TopSpeeds>("top speeds", {{"pan top speed", v::top_speeds::kPan},
                                              {"tilt top speed", v::top_speeds::kTilt}})
        .reply<v::TopSpeedsReply>("top speeds", {{"pan top speed", v::top_speeds_reply::kPan},
                                                 {"tilt top speed", v::top_speeds_reply::kTilt}})
        .both<v::UnitAddress>("unit address", {{"id", v::unit_address::kId}})
        .command<v::PanSteps>("pan steps", {{"pan minimum", v::pan_steps::kMinimum},
                                            {"pan maximum", v::pan_steps::kMaximum}})
        .reply<v::PanStepsReply>("pan steps", {{"pan minimum", v::pan_steps_reply::kMinimum},
                                               {"pan maximum", v::pan_steps_reply::kMaximum}})
        .command<v::TiltSteps>("tilt steps", {{"tilt minimum", v::tilt_steps::kMinimum},
                                              {"tilt maximum", v::tilt_steps::kMaximum}})
        .reply<v::TiltStepsReply>("tilt steps", {{"tilt minimum", v::tilt_steps_reply::kMinimum},
                                                 {"tilt maximum", v::tilt_steps_reply::kMaximum}})
        .command<v::DiagnosticsRequest>("diagnostics request")
        .reply<v::Diagnostics>("diagnostics")
        .command<v::Encoders>("encoders", {{"pan encoder", v::encoders::kPan, -1234},
                                           {"tilt encoder", v::encoders::kTilt}})
        .reply<v::EncodersReply>("encoders", {{"pan encoder", v::encoders_reply::kPan, -1234},
                                              {"tilt encoder", v::encoders_reply::kTilt}});
    for (const Byte code : {v::MaximaRequest::kCode, v::MaximumPair::kCode}) {
        cases.reply<v::Maxima>(
            code, "maxima", {{"pan maximum", v::maxima::kPan}, {"tilt maximum", v::maxima::kTilt}});
    }
    return cases.take();
}

const table::Field* tableField(const table::Layout& layout, const std::string& name) {
    for (const table::Field& field : layout.fields) {
        if (field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

}  // namespace

// Every message of the table, each field set to a value of its own: what one
// side writes, the other reads in the same place, and the Line Log shows it
// under the field's name.
TEST(RoundTrip, EveryMessageReadsBackFieldByFieldOnTheOtherSideAndInTheLineLog) {
    std::set<std::pair<Direction, Byte>> covered;
    for (const Case& c : everyMessage()) {
        SCOPED_TRACE(c.layout);
        covered.insert({c.direction, c.message.front()});
        const table::FrameDescription frame = table::describeFrame(
            encodeFrame(c.direction == Direction::ToUnit ? kStx : kAck, 0, c.message, 0));
        EXPECT_EQ(frame.name, c.layout);
        EXPECT_FALSE(frame.shortPayload);
        const table::Layout* layout = table::layoutFor(c.direction, c.message);
        ASSERT_NE(layout, nullptr);
        for (const Read& field : c.fields) {
            SCOPED_TRACE(field.name);
            EXPECT_EQ(field.read, field.sent);
            const table::Field* named = tableField(*layout, field.name);
            ASSERT_NE(named, nullptr);
            // Flags are shown in their places, numbers shifted down.
            const std::int64_t shown = named->kind == table::FieldKind::Flags
                                           ? field.sent << std::countr_zero(named->mask)
                                           : field.sent + named->bias;
            const auto described =
                std::find_if(frame.fields.begin(), frame.fields.end(),
                             [&](const table::DescribedField& d) { return d.name == field.name; });
            ASSERT_NE(described, frame.fields.end());
            EXPECT_EQ(described->number, shown);
        }
    }
    for (const table::Message& message : table::messages()) {
        EXPECT_EQ(covered.count({message.direction, message.code}), 1u)
            << "no case for " << table::codeCaption(message.code)
            << (message.direction == Direction::ToUnit ? " to the unit" : " from the unit");
    }
}
