#include "protocol/protocol_table.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "protocol/vocabulary.h"

namespace halvex::table {

namespace {

using Names = std::vector<ValueName>;

// Field builders: a name for people, the place from the vocabulary. The
// table below reads as the payload descriptions do.
template <class M>
Field number(std::string name, vocab::Field<M> place, Names names = {}, std::string unit = {}) {
    Field field;
    field.name = std::move(name);
    field.offset = place.offset;
    field.size = place.size;
    field.mask = place.mask;
    field.names = std::move(names);
    field.unit = std::move(unit);
    return field;
}

template <class M>
Field signedOf(std::string name, vocab::Field<M> place) {
    Field field = number(std::move(name), place);
    field.kind = FieldKind::Signed;
    return field;
}

template <class M>
Field angle(std::string name, vocab::Field<M> place, FieldKind kind = FieldKind::Angle) {
    Field field = number(std::move(name), place);
    field.kind = kind;
    return field;
}

template <class M>
Field flags(std::string name, vocab::Field<M> place, Names bits) {
    Field field = number(std::move(name), place, std::move(bits));
    field.kind = FieldKind::Flags;
    return field;
}

// Text and hexadecimal bytes from byte `offset` of M: `size` of them, or to
// the end of the payload when 0.
template <class M>
Field bytes(std::string name, int offset, int size = 0, FieldKind kind = FieldKind::Bytes) {
    Field field = number(std::move(name), vocab::Field<M>{offset});
    field.kind = kind;
    field.size = size;
    return field;
}

// Bytes whose count a field of the message gives (or that follow the bytes
// before them, at Field::kFollows).
template <class M>
Field counted(std::string name, int offset, vocab::Field<M> count) {
    Field field = bytes<M>(std::move(name), offset);
    field.countAt = count.offset;
    field.countMask = count.mask;
    return field;
}

template <class M>
constexpr unsigned bitOf(vocab::Bit<M> bit) {
    return static_cast<unsigned>(bit.bit);
}

Match always() {
    return {};
}
template <class M>
Match readRequest() {
    const vocab::Bit<M> read = vocab::kReadRequest<M>;
    return {Match::Kind::Bits, read.offset, vocab::maskOf(read), vocab::maskOf(read)};
}
template <class M>
Match bitSet(vocab::Bit<M> bit) {
    return {Match::Kind::Bits, bit.offset, vocab::maskOf(bit), vocab::maskOf(bit)};
}
template <class M>
Match length() {
    return {Match::Kind::Length, 0, 0, static_cast<unsigned>(M::kLength)};
}

Layout layout(std::string name, std::vector<Field> fields = {}, Match match = always()) {
    return Layout{std::move(name), match, std::move(fields), false};
}

// A "Get": what follows the read flag (and the fields given) only pads it.
Layout request(std::string name, Match match, std::vector<Field> fields = {}) {
    Layout padded = layout(std::move(name), std::move(fields), match);
    padded.padded = true;
    return padded;
}

// Names shared by several messages.
const Names kPanDirection = {{0, "CCW"}, {1, "CW"}};
const Names kTiltDirection = {{0, "down"}, {1, "up"}};
namespace jog = vocab::jog;
namespace report = vocab::report;

const Names kJogFlags = {{bitOf(jog::kReset), "reset"},
                         {bitOf(jog::kStop), "stop"},
                         {bitOf(jog::kSoftLimitOverride), "soft-limit override"},
                         {bitOf(jog::kTiltLowSpeed), "tilt low speed"},
                         {bitOf(jog::kPanLowSpeed), "pan low speed"}};
const Names kControllerTypes = {{0, "Halvex"}, {1, "Zelvar"}};
const Names kStatusA = {{2, "pan direction fault"}, {3, "pan timeout"},    {4, "CCW hard limit"},
                        {5, "CW hard limit"},       {6, "CCW soft limit"}, {7, "CW soft limit"}};
const Names kStatusB = {{2, "tilt direction fault"}, {3, "tilt timeout"},    {4, "down hard limit"},
                        {5, "up hard limit"},        {6, "down soft limit"}, {7, "up soft limit"}};
const Names kStatusC = {
    {0, "moving down"},         {1, "moving up"},
    {2, "moving CCW"},          {3, "moving CW"},
    {4, "soft-limit override"}, {bitOf(report::kTarget), "target"},
    {6, "tour executing"},      {bitOf(report::kContinuousPan), "continuous pan"}};
const Names kStepCamera = {{0, "default"}, {1, "camera 2"}, {2, "camera 3"}};
const Names kBlank = {{7, "blank video"}};
const Names kCameraBaud = {{0, "off"},   {1, "9600"},  {2, "14400"}, {3, "19200"},
                           {4, "28800"}, {5, "38400"}, {6, "57600"}, {7, "115200"}};
const Names kCameraFormat = {{0, "8/N"}, {1, "7/N"}, {2, "7/E"}, {3, "7/O"}};
const Names kCameraLevel = {{0, "RS-232"}, {1, "RS-422"}};
const Names kStopBits = {{0, "1"}, {1, "2"}};
const Names kCameraSelect = {{0, "camera 1"}, {1, "camera 2"}};
const Names kLegacySelection = {{0, "undefined"}, {1, "video select"}, {2, "blank video"}};
const Names kAuxBits = {
    {0, "camera 1 aux 1"}, {1, "camera 1 aux 2"}, {2, "camera 2 aux 1"}, {3, "camera 2 aux 2"}};
const Names kSoftLimits = {{0, "CW"}, {1, "CCW"}, {2, "up"}, {3, "down"}};
const Names kHeater = {{0, "disabled"}, {1, "share power"}, {2, "full power"}};

template <class M, int At>
Names lensBits() {
    using L = vocab::LensSetup<M, At>;
    return {{bitOf(L::kFocusInvert), "focus inv"}, {bitOf(L::kFocusReverse), "focus rev"},
            {bitOf(L::kFocusEnable), "focus en"},  {bitOf(L::kZoomInvert), "zoom inv"},
            {bitOf(L::kZoomReverse), "zoom rev"},  {bitOf(L::kZoomEnable), "zoom en"}};
}

// The step record of the tour commands and replies: preset byte, dwell byte.
template <class M, int At>
std::vector<Field> stepRecord(vocab::StepRecord<M, At> step = {}) {
    return {number("preset", step.kPreset), number("camera", step.kCamera, kStepCamera),
            number("dwell", step.kDwell, {}, " s"), flags("blank", step.kBlank, kBlank)};
}

template <class M, int At>
std::vector<Field> cameraLine(const std::string& camera, vocab::CameraLine<M, At> line = {}) {
    return {number(camera + " baud", line.kBaud, kCameraBaud),
            number(camera + " format", line.kFormat, kCameraFormat),
            number(camera + " level", line.kLevel, kCameraLevel),
            number(camera + " stop bits", line.kStopBits, kStopBits)};
}

std::vector<Field> lensConfiguration() {
    using Lens1 = vocab::lens_configuration::Lens1;
    using Lens2 = vocab::lens_configuration::Lens2;
    return {flags("lens 1", Lens1::kFlags, lensBits<vocab::LensConfiguration, 1>()),
            number("zoom 1 minimum", Lens1::kZoomMinimum),
            number("focus 1 minimum", Lens1::kFocusMinimum),
            flags("lens 2", Lens2::kFlags, lensBits<vocab::LensConfiguration, 4>()),
            number("zoom 2 minimum", Lens2::kZoomMinimum),
            number("focus 2 minimum", Lens2::kFocusMinimum)};
}

template <class M>
Names cameraPower(vocab::Bit<M> camera1, vocab::Bit<M> camera2) {
    return {{bitOf(camera1), "camera 1 power"}, {bitOf(camera2), "camera 2 power"}};
}

std::vector<Field> videoConfiguration() {
    namespace v = vocab::video_configuration;
    const Names modeBits = {{bitOf(v::kPal), "PAL"},
                            {bitOf(v::kBlankOutput2), "blank Vout 2"},
                            {bitOf(v::kBlankOutput1), "blank Vout 1"},
                            {bitOf(v::kStore), "store"}};
    return {number("route", v::kRoute), flags("mode", v::kMode, modeBits),
            flags("power", v::kPower, cameraPower(v::kCamera1Power, v::kCamera2Power))};
}

std::vector<Field> legacyVideo() {
    namespace v = vocab::legacy_video;
    return {number("selection", v::kSelection, kLegacySelection),
            flags("power", v::kPower, cameraPower(v::kCamera1Power, v::kCamera2Power))};
}

template <class M>
std::vector<Field> displaySetting(vocab::DisplaySetting<M> display = {}) {
    const Names bits = {{bitOf(display.kOn), "on"},
                        {bitOf(display.kSigned), "signed"},
                        {bitOf(display.kStore), "store"}};
    return {number("line", display.kLine), flags("display", display.kBits, bits)};
}

template <class M, int At>
std::vector<Field> panTilt(FieldKind kind, vocab::PanTilt<M, At> place = {}) {
    return {angle("pan", place.kPan, kind), angle("tilt", place.kTilt, kind)};
}

template <class M>
std::vector<Field> panTilt(vocab::Field<M> pan, vocab::Field<M> tilt, FieldKind kind) {
    return {angle("pan", pan, kind), angle("tilt", tilt, kind)};
}

// The command masks nothing off the safe speeds; the answer shows them
// without their top bit.
template <class Pan, class Tilt>
std::vector<Field> rates(bool safeMasked) {
    return {number("pan safe speed", safeMasked ? Pan::kSafeSpeed : Pan::kSafeSpeedByte),
            number("pan ramp", Pan::kRamp),
            number("pan deceleration", Pan::kDeceleration),
            number("tilt safe speed", safeMasked ? Tilt::kSafeSpeed : Tilt::kSafeSpeedByte),
            number("tilt ramp", Tilt::kRamp),
            number("tilt deceleration", Tilt::kDeceleration)};
}

template <class M, int At>
std::vector<Field> stepSettings(const std::string& axis, vocab::StepRange<M, At> range = {}) {
    return {number(axis + " minimum", range.kMinimum), number(axis + " maximum", range.kMaximum)};
}

std::vector<Field> operator+(std::vector<Field> first, const std::vector<Field>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The controller type, in status byte A too, comes last: it never changes.
std::vector<Field> reportFields() {
    return {angle("pan", report::kPan),
            angle("tilt", report::kTilt),
            flags("status A", report::kStatusA, kStatusA),
            flags("status B", report::kStatusB, kStatusB),
            flags("status C", report::kStatusC, kStatusC),
            number("zoom 1", report::kLens[0]),
            number("focus 1", report::kLens[1]),
            number("zoom 2", report::kLens[2]),
            number("focus 2", report::kLens[3]),
            number("type", report::kControllerType, kControllerTypes)};
}

// A position report names itself a target report when its target bit says so.
std::vector<Layout> reports(const std::vector<Field>& fields) {
    return {layout("target report", fields, bitSet(report::kTarget)),
            layout("position report", fields)};
}

std::vector<Field> presetRecord() {
    namespace p = vocab::preset_record;
    return {number("preset", p::kPreset, {{p::kNoPreset, "none"}}),
            angle("pan", p::kPan),
            angle("tilt", p::kTilt),
            number("zoom 1", p::kLens[0]),
            number("focus 1", p::kLens[1]),
            number("zoom 2", p::kLens[2]),
            number("focus 2", p::kLens[3])};
}

// A command whose byte 1 may ask to read instead of set.
template <class M>
std::vector<Layout> getOrSet(const std::string& name, std::vector<Field> fields) {
    return {request(name + " request", readRequest<M>()), layout(name, std::move(fields))};
}

class Builder {
  public:
    template <class M>
    void command(std::vector<Layout> layouts) {
        add(M::kCode, Direction::ToUnit, std::move(layouts));
    }
    template <class M>
    void command(const std::string& name, std::vector<Field> fields = {}) {
        command<M>({layout(name, std::move(fields))});
    }
    template <class M>
    void getOrSetCommand(const std::string& name, std::vector<Field> fields) {
        command<M>(getOrSet<M>(name, std::move(fields)));
    }
    // A reply of layout M under the code of command C.
    template <class M, class C = M>
    void reply(std::vector<Layout> layouts) {
        add(C::kCode, Direction::FromUnit, std::move(layouts));
    }
    template <class M, class C = M>
    void reply(const std::string& name, std::vector<Field> fields = {}) {
        reply<M, C>({layout(name, std::move(fields))});
    }
    std::vector<Message> take() {
        std::stable_sort(table_.begin(), table_.end(), [](const Message& a, const Message& b) {
            return a.code != b.code ? a.code < b.code : a.direction < b.direction;
        });
        return std::move(table_);
    }

  private:
    void add(Byte code, Direction direction, std::vector<Layout> layouts) {
        table_.push_back(Message{code, direction, std::move(layouts)});
    }
    std::vector<Message> table_;
};

void addMotion(Builder& t) {
    // The speeds first: they are what a jog message is read for.
    t.command<vocab::JogMessage>(
        "jog message",
        {number("pan speed", jog::kPanSpeed), number("tilt speed", jog::kTiltSpeed),
         flags("flags", jog::kFlags, kJogFlags),
         number("pan direction", jog::kPanDirection, kPanDirection),
         number("tilt direction", jog::kTiltDirection, kTiltDirection),
         number("zoom 1 jog", jog::kLensJog[0]), number("focus 1 jog", jog::kLensJog[1]),
         number("zoom 2 jog", jog::kLensJog[2]), number("focus 2 jog", jog::kLensJog[3])});
    t.reply<vocab::PositionReport, vocab::JogMessage>(reports(
        reportFields() +
        std::vector<Field>{number("camera 1 count", report::kCamera1Count),
                           number("camera 2 count", report::kCamera2Count),
                           counted("camera 1 data", report::kCameraData, report::kCamera1Count),
                           counted("camera 2 data", Field::kFollows, report::kCamera2Count)}));
    t.command<vocab::GoToPreset>("go to preset", {number("preset", vocab::go_to_preset::kPreset)});
    namespace am = vocab::absolute_move;
    t.command<vocab::AbsoluteMove>("absolute move",
                                   panTilt(am::kPan, am::kTilt, FieldKind::TargetAngle));
    namespace dm = vocab::delta_move;
    t.command<vocab::DeltaMove>("delta move", panTilt(dm::kPan, dm::kTilt, FieldKind::Angle));
    t.command<vocab::MoveToCentre>("move to centre");
    t.command<vocab::MoveToHome>("move to home");
    namespace aml = vocab::absolute_move_with_lenses;
    t.command<vocab::AbsoluteMoveWithLenses>(
        "absolute move with lenses",
        panTilt(aml::kPan, aml::kTilt, FieldKind::TargetAngle) +
            std::vector<Field>{number("zoom 1", aml::kLens[0]), number("focus 1", aml::kLens[1]),
                               number("zoom 2", aml::kLens[2]), number("focus 2", aml::kLens[3])});
    t.reply<vocab::PositionReport, vocab::GoToPreset>(reports(reportFields()));
    t.reply<vocab::PositionReport, vocab::AbsoluteMove>(reports(reportFields()));
    t.reply<vocab::PositionReport, vocab::DeltaMove>(reports(reportFields()));
    t.reply<vocab::PositionReport, vocab::MoveToCentre>(reports(reportFields()));
    t.reply<vocab::PositionReport, vocab::MoveToHome>(reports(reportFields()));
    t.reply<vocab::PositionReport, vocab::AbsoluteMoveWithLenses>(reports(reportFields()));
}

void addPresets(Builder& t) {
    namespace sp = vocab::store_preset;
    t.command<vocab::PresetRequest>("preset request",
                                    {number("preset", vocab::preset_request::kPreset)});
    // The unit answers the code alone with its preset record too.
    t.command<vocab::StorePreset>(
        {layout("preset query", {}, Match{Match::Kind::Length, 0, 0, 1}),
         layout("store preset", {number("preset", sp::kPreset), angle("pan", sp::kPan),
                                 angle("tilt", sp::kTilt)})});
    t.command<vocab::StoreCurrentPosition>(
        "store current position", {number("preset", vocab::store_current_position::kPreset)});
    t.command<vocab::AddLensPositions>("add lens positions",
                                       {number("preset", vocab::add_lens_positions::kPreset)});
    t.command<vocab::ClearAllPresets>("clear all presets");
    t.reply<vocab::PresetRecord, vocab::PresetRequest>("preset record", presetRecord());
    t.reply<vocab::PresetRecord, vocab::StorePreset>("preset record", presetRecord());
    t.reply<vocab::PresetRecord, vocab::StoreCurrentPosition>("preset record", presetRecord());
    t.reply<vocab::PresetRecord, vocab::AddLensPositions>("preset record", presetRecord());
    t.reply<vocab::ClearAllPresets>("presets cleared");
}

void addTours(Builder& t) {
    namespace v = vocab;
    t.command<v::ExecuteTour>("execute tour", {number("tour", v::execute_tour::kTour)});
    t.command<v::ClearTour>("clear tour", {number("tour", v::clear_tour::kTour)});
    t.command<v::TourStepRequest>(
        "tour step request",
        {number("tour", v::tour_step_request::kTour), number("step", v::tour_step_request::kStep)});
    t.command<v::AppendTourStep>("append tour step",
                                 std::vector<Field>{number("tour", v::append_tour_step::kTour)} +
                                     stepRecord(v::append_tour_step::Step{}));
    t.command<v::InsertTourStep>("insert tour step",
                                 std::vector<Field>{number("tour", v::insert_tour_step::kTour),
                                                    number("step", v::insert_tour_step::kStep)} +
                                     stepRecord(v::insert_tour_step::Step{}));
    t.command<v::DeleteTourStep>("delete tour step", {number("tour", v::delete_tour_step::kTour),
                                                      number("step", v::delete_tour_step::kStep)});
    t.command<v::ReplaceTourStep>("replace tour step",
                                  std::vector<Field>{number("tour", v::replace_tour_step::kTour),
                                                     number("step", v::replace_tour_step::kStep)} +
                                      stepRecord(v::replace_tour_step::Step{}));
    t.command<v::TourStepCountRequest>("tour step count request",
                                       {number("tour", v::tour_step_count_request::kTour)});

    namespace ts = v::tour_step;
    const std::vector<Field> stepReply =
        std::vector<Field>{number("tour", ts::kTour),
                           number("step", ts::kStep, {{ts::kNoStep, "none"}})} +
        stepRecord(ts::Step{});
    t.reply<v::TourStarted>("tour started", {number("tour", v::tour_started::kTour,
                                                    {{v::tour_started::kEmpty, "empty"}})});
    t.reply<v::TourCleared>("tour cleared", {number("tour", v::tour_cleared::kTour)});
    t.reply<v::TourStep, v::TourStepRequest>("tour step", stepReply);
    t.reply<v::TourStep, v::AppendTourStep>("tour step", stepReply);
    t.reply<v::TourStep, v::ReplaceTourStep>("tour step", stepReply);
    t.reply<v::TourStep, v::InsertTourStep>("tour step inserted", stepReply);
    t.reply<v::TourStep, v::DeleteTourStep>("tour step deleted", stepReply);
    namespace tc = v::tour_step_count;
    t.reply<v::TourStepCount>(
        "tour step count",
        {number("tour", tc::kTour), number("steps", tc::kSteps, {{tc::kCorrupt, "corrupt"}})});
}

void addCamera(Builder& t) {
    namespace v = vocab;
    const std::vector<Field> lines = cameraLine("camera 1", v::camera_lines::Camera1{}) +
                                     cameraLine("camera 2", v::camera_lines::Camera2{});
    t.getOrSetCommand<v::CameraLines>("camera lines", lines);
    t.reply<v::CameraLines>("camera lines", lines);
    t.getOrSetCommand<v::LensConfiguration>("lens configuration", lensConfiguration());
    t.reply<v::LensConfiguration>("lens configuration", lensConfiguration());
    namespace ct = v::camera_transmit;
    t.command<v::CameraTransmit>(
        "camera transmit", {number("length", ct::kCount), number("to", ct::kCamera, kCameraSelect),
                            counted("data", ct::kData, ct::kCount)});
    t.reply<v::CameraTransmitDone>("camera transmit done");
    const std::vector<Field> timeouts = {number("camera 1 time-out", v::camera_timeouts::kCamera1),
                                         number("camera 2 time-out", v::camera_timeouts::kCamera2)};
    t.getOrSetCommand<v::CameraTimeouts>("camera time-outs", timeouts);
    t.reply<v::CameraTimeouts>("camera time-outs", timeouts);
}

void addVideo(Builder& t) {
    namespace v = vocab;
    t.command<v::LegacyVideo>("legacy video", legacyVideo());
    t.reply<v::LegacyVideo>("legacy video", legacyVideo());
    namespace vc = v::video_configuration;
    const Names legacyModeBits = {{bitOf(vc::kLegacyDisplayOn), "OSD on"},
                                  {bitOf(vc::kPal), "PAL"},
                                  {bitOf(vc::kStore), "store"}};
    t.command<v::VideoConfiguration>(
        {request("video request", readRequest<v::VideoConfiguration>()),
         layout("legacy video mode",
                {flags("mode", v::Field<v::VideoConfiguration>{1}, legacyModeBits)},
                Match{Match::Kind::Length, 0, 0, v::VideoConfiguration::kShortest}),
         layout("video configuration", videoConfiguration())});
    t.reply<v::VideoConfiguration>("video configuration", videoConfiguration());
    const std::vector<Field> outputs = {flags("outputs", v::aux_outputs::kOutputs, kAuxBits)};
    t.command<v::AuxOutputs>("aux outputs", outputs);
    t.reply<v::AuxOutputs>("aux outputs", outputs);
    t.getOrSetCommand<v::AngleDisplay>("angle display", displaySetting<v::AngleDisplay>());
    t.reply<v::AngleDisplay>("angle display", displaySetting<v::AngleDisplay>());
    t.getOrSetCommand<v::NameDisplay>("name display", displaySetting<v::NameDisplay>());
    t.reply<v::NameDisplay>("name display", displaySetting<v::NameDisplay>());
    t.command<v::SiteName>(
        "site name", {bytes<v::SiteName>("text", v::site_name::kText, v::site_name::kTextLength,
                                         FieldKind::Text)});
    t.reply<v::SiteNameStored>("site name stored");
}

void addAlignment(Builder& t) {
    namespace v = vocab;
    t.command<v::SetAngleOffsets>("set angle offsets",
                                  panTilt(FieldKind::Angle, v::set_angle_offsets{}));
    namespace sl = v::soft_limit;
    t.command<v::SoftLimit>(
        {request("soft limit request", readRequest<v::SoftLimit>(),
                 {number("limit", sl::kLimit, kSoftLimits)}),
         layout("set soft limit", {number("limit", sl::kLimitByte, kSoftLimits)})});
    t.command<v::AlignToCentre>("align to centre");
    t.command<v::AlignToCoordinates>("align to coordinates",
                                     panTilt(FieldKind::Angle, v::align_to_coordinates{}));
    t.command<v::ZeroOffsets>("zero offsets");
    t.command<v::OffsetsRequest>("offsets request");
    const std::vector<Field> offsets = panTilt(FieldKind::Angle, v::angle_offsets{});
    t.reply<v::AngleOffsets, v::SetAngleOffsets>("angle offsets", offsets);
    t.reply<v::AngleOffsets, v::AlignToCentre>("angle offsets", offsets);
    t.reply<v::AngleOffsets, v::AlignToCoordinates>("angle offsets", offsets);
    t.reply<v::AngleOffsets, v::ZeroOffsets>("angle offsets", offsets);
    t.reply<v::AngleOffsets, v::OffsetsRequest>("angle offsets", offsets);
    t.reply<v::SoftLimitReply>("soft limit",
                               {number("limit", v::soft_limit_reply::kLimit, kSoftLimits),
                                angle("position", v::soft_limit_reply::kPosition)});

    using Centre = v::centre_position;
    const std::vector<Field> centre = {signedOf("pan centre", Centre::kPan),
                                       signedOf("tilt centre", Centre::kTilt)};
    t.command<v::CentreRequest>("centre request");
    t.command<v::SetCentre>("set centre");
    t.reply<v::CentrePosition, v::CentreRequest>("centre position", centre);
    t.reply<v::CentrePosition, v::SetCentre>("centre position", centre);
    t.command<v::EncoderAlignment>("initial encoder alignment");
    using Readings = v::encoder_alignment_finished;
    t.reply<v::EncoderAlignmentFinished>(
        "encoder alignment finished",
        {signedOf("pan reading", Readings::kPan), signedOf("tilt reading", Readings::kTilt)});
    t.command<v::HomingCycle>("homing cycle");
    namespace h = v::homing_cycle_finished;
    const Names homingBits = {{bitOf(h::kPanIndexFound), "pan index found"},
                              {bitOf(h::kTiltIndexFound), "tilt index found"}};
    t.reply<v::HomingCycleFinished>("homing cycle finished", {flags("index", h::kIndex, homingBits),
                                                              signedOf("pan index", h::kPan),
                                                              signedOf("tilt index", h::kTilt)});
}

void addSetup(Builder& t) {
    namespace v = vocab;
    t.command<v::RampRequest>("ramp request");
    t.reply<v::Ramps>("ramps",
                      {number("pan ramp", v::ramps::kPan), number("tilt ramp", v::ramps::kTilt)});
    t.getOrSetCommand<v::Rates>("rates", rates<v::rates::Pan, v::rates::Tilt>(false));
    t.reply<v::RatesReply>("rates", rates<v::rates_reply::Pan, v::rates_reply::Tilt>(true));
    const std::vector<Field> minimumPair = {number("pan minimum", v::minimum_pair::kPan),
                                            number("tilt minimum", v::minimum_pair::kTilt)};
    namespace tilt = v::tilt_settings;
    const std::vector<Field> tiltSet = {
        number("tilt safe speed", tilt::kSafeSpeed), number("tilt ramp", tilt::kRamp),
        number("tilt minimum", tilt::kMinimum), number("tilt maximum", tilt::kMaximum)};
    const std::vector<Layout> minimaOrTilt = {
        layout("minimum pair", minimumPair, length<v::MinimumPair>()),
        layout("tilt settings", tiltSet)};
    t.command<v::MinimumPair>(minimaOrTilt);
    t.reply<v::MinimumPair>(minimaOrTilt);

    namespace d = v::directions;
    const Names directionBits = {{bitOf(d::kPanMotorReverse), "pan motor reverse"},
                                 {bitOf(d::kTiltMotorReverse), "tilt motor reverse"},
                                 {bitOf(d::kPanResolverInvert), "pan resolver invert"},
                                 {bitOf(d::kTiltResolverInvert), "tilt resolver invert"},
                                 {bitOf(d::kContinuousRotation), "continuous rotation"},
                                 {bitOf(d::kInvertedMount), "inverted mount"}};
    const std::vector<Field> directions = {flags("directions", d::kBits, directionBits)};
    t.getOrSetCommand<v::Directions>("directions", directions);
    t.reply<v::Directions>("directions", directions);
    const std::vector<Field> seconds = {
        number("seconds", v::comm_timeout::kSeconds, {{0, "off"}}, " s")};
    t.getOrSetCommand<v::CommTimeout>("comm time-out", seconds);
    t.reply<v::CommTimeout>("comm time-out", seconds);
    t.getOrSetCommand<v::Heater>("heater", {number("mode", v::heater::kModeByte, kHeater)});
    t.reply<v::Heater>("heater", {number("mode", v::heater::kMode, kHeater)});
    const std::vector<Field> maxima = {number("pan maximum", v::maxima::kPan),
                                       number("tilt maximum", v::maxima::kTilt)};
    t.command<v::MaximaRequest>("maxima request");
    t.reply<v::Maxima, v::MaximaRequest>("maxima", maxima);
    t.command<v::MaximumPair>("maximum pair", {number("pan maximum", v::maximum_pair::kPan),
                                               number("tilt maximum", v::maximum_pair::kTilt)});
    t.reply<v::Maxima, v::MaximumPair>("maxima", maxima);
    t.command<v::FirmwareRequest>("firmware request");
    namespace fw = v::firmware;
    Field year = number("year", fw::kYear);
    year.bias = fw::kYearBias;
    t.reply<v::Firmware>("firmware", {number("major", fw::kMajor), number("minor", fw::kMinor),
                                      number("day", fw::kDay), number("month", fw::kMonth), year});

    namespace top = v::top_speeds;
    const Byte read = v::maskOf(v::kReadRequest<v::TopSpeeds>);
    const Byte second = v::maskOf(top::kSecond);
    const auto variant = [](Byte mask, Byte value) {
        return Match{Match::Kind::Bits, top::kVariant.offset, mask, value};
    };
    const std::vector<Field> speeds = {number("pan top speed", top::kPan),
                                       number("tilt top speed", top::kTilt)};
    t.command<v::TopSpeeds>(
        {request("second top speeds request", variant(read | second, read | second)),
         request("top speeds request", variant(read | second, read)),
         layout("second top speeds", speeds, bitSet(top::kSecond)), layout("top speeds", speeds)});
    namespace topr = v::top_speeds_reply;
    const std::vector<Field> replySpeeds = {number("pan top speed", topr::kPan),
                                            number("tilt top speed", topr::kTilt)};
    t.reply<v::TopSpeedsReply>({layout("second top speeds", replySpeeds, bitSet(topr::kSecond)),
                                layout("top speeds", replySpeeds)});
    const std::vector<Field> id = {number("id", v::unit_address::kId)};
    t.getOrSetCommand<v::UnitAddress>("unit address", id);
    t.reply<v::UnitAddress>("unit address", id);
    t.getOrSetCommand<v::PanSteps>("pan steps", stepSettings("pan", v::pan_steps{}));
    t.reply<v::PanStepsReply>("pan steps", stepSettings("pan", v::pan_steps_reply{}));
    t.getOrSetCommand<v::TiltSteps>("tilt steps", stepSettings("tilt", v::tilt_steps{}));
    t.reply<v::TiltStepsReply>("tilt steps", stepSettings("tilt", v::tilt_steps_reply{}));
    t.command<v::DiagnosticsRequest>({request("diagnostics request", always())});
    t.reply<v::Diagnostics>("diagnostics", {bytes<v::Diagnostics>("data", v::diagnostics::kData)});
    t.getOrSetCommand<v::Encoders>("encoders", {signedOf("pan encoder", v::encoders::kPan),
                                                signedOf("tilt encoder", v::encoders::kTilt)});
    t.reply<v::EncodersReply>("encoders", {signedOf("pan encoder", v::encoders_reply::kPan),
                                           signedOf("tilt encoder", v::encoders_reply::kTilt)});
}

std::vector<Message> build() {
    Builder builder;
    addMotion(builder);
    addPresets(builder);
    addTours(builder);
    addCamera(builder);
    addVideo(builder);
    addAlignment(builder);
    addSetup(builder);
    return builder.take();
}

struct Index {
    std::array<const Message*, 256> toUnit{};
    std::array<const Message*, 256> fromUnit{};
};

const Index& index() {
    static const Index built = [] {
        Index result;
        for (const Message& message : messages()) {
            auto& slot = message.direction == Direction::ToUnit ? result.toUnit : result.fromUnit;
            slot[message.code] = &message;
        }
        return result;
    }();
    return built;
}

bool matches(const Match& match, const std::vector<Byte>& message) {
    switch (match.kind) {
        case Match::Kind::Always:
            return true;
        case Match::Kind::Length:
            return message.size() == match.value;
        case Match::Kind::Bits:
            return static_cast<std::size_t>(match.index) < message.size() &&
                   (message[static_cast<std::size_t>(match.index)] & match.mask) == match.value;
    }
    return false;
}

}  // namespace

const std::vector<Message>& messages() {
    static const std::vector<Message> table = build();
    return table;
}

const Message* findMessage(Direction direction, Byte code) {
    const Index& built = index();
    return direction == Direction::ToUnit ? built.toUnit[code] : built.fromUnit[code];
}

const Layout* layoutFor(Direction direction, const std::vector<Byte>& message) {
    if (message.empty()) {
        return nullptr;
    }
    const Message* entry = findMessage(direction, message.front());
    if (entry == nullptr) {
        return nullptr;
    }
    for (const Layout& candidate : entry->layouts) {
        if (matches(candidate.match, message)) {
            return &candidate;
        }
    }
    return nullptr;
}

std::string codeCaption(Byte code) {
    const Message* command = findMessage(Direction::ToUnit, code);
    const Message* reply = findMessage(Direction::FromUnit, code);
    const auto mainName = [](const Message* message) { return message->layouts.back().name; };
    if (command != nullptr && reply != nullptr) {
        const std::string sent = mainName(command);
        const std::string answered = mainName(reply);
        return sent == answered ? sent : sent + " / " + answered;
    }
    if (command != nullptr) {
        return mainName(command);
    }
    return reply != nullptr ? mainName(reply) : std::string("unknown code");
}

std::vector<Byte> knownCodes() {
    std::set<Byte> codes;
    for (const Message& message : messages()) {
        codes.insert(message.code);
    }
    return {codes.begin(), codes.end()};
}

std::vector<Byte> replyCodesNamed(const std::string& name) {
    std::vector<Byte> codes;
    for (const Message& message : messages()) {
        if (message.direction != Direction::FromUnit) {
            continue;
        }
        const bool named = std::any_of(message.layouts.begin(), message.layouts.end(),
                                       [&name](const Layout& l) { return l.name == name; });
        if (named) {
            codes.push_back(message.code);
        }
    }
    return codes;
}

}  // namespace halvex::table
