#include "protocol/protocol_table.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "protocol/vocabulary.h"

namespace halvex::table {

namespace {

using Names = std::vector<ValueName>;

// Field builders: the table below reads as the payload descriptions do.
Field number(std::string name, int offset, unsigned mask = 0xFF, Names names = {},
             std::string unit = {}) {
    Field field;
    field.name = std::move(name);
    field.offset = offset;
    field.mask = mask;
    field.names = std::move(names);
    field.unit = std::move(unit);
    return field;
}

Field word(std::string name, int offset) {
    Field field = number(std::move(name), offset);
    field.size = 2;
    field.mask = 0xFFFF;
    return field;
}

Field signedOf(std::string name, int offset, int size) {
    Field field = number(std::move(name), offset);
    field.kind = FieldKind::Signed;
    field.size = size;
    field.mask = size == 2 ? 0xFFFF : 0xFFFFFF;
    return field;
}

Field angle(std::string name, int offset, FieldKind kind = FieldKind::Angle) {
    Field field = signedOf(std::move(name), offset, 3);
    field.kind = kind;
    return field;
}

Field flags(std::string name, int offset, Names bits, unsigned mask = 0xFF) {
    Field field = number(std::move(name), offset, mask, std::move(bits));
    field.kind = FieldKind::Flags;
    return field;
}

Field text(std::string name, int offset, int size) {
    Field field = number(std::move(name), offset);
    field.kind = FieldKind::Text;
    field.size = size;
    return field;
}

Field bytes(std::string name, int offset, int size = 0) {
    Field field = number(std::move(name), offset);
    field.kind = FieldKind::Bytes;
    field.size = size;
    return field;
}

// Bytes whose count another byte of the message gives.
Field counted(std::string name, int offset, int countAt, unsigned countMask = 0xFF) {
    Field field = bytes(std::move(name), offset);
    field.countAt = countAt;
    field.countMask = countMask;
    return field;
}

// The same builders for a field whose place the vocabulary gives.
template <class M>
Field placed(Field field, vocab::Field<M> place) {
    field.offset = place.offset;
    field.size = place.size;
    field.mask = place.mask;
    return field;
}

template <class M>
Field number(std::string name, vocab::Field<M> place, Names names = {}) {
    return placed(number(std::move(name), 0, 0xFF, std::move(names)), place);
}

template <class M>
Field flags(std::string name, vocab::Field<M> place, Names bits) {
    return placed(flags(std::move(name), 0, std::move(bits)), place);
}

template <class M>
Field angle(std::string name, vocab::Field<M> place, FieldKind kind = FieldKind::Angle) {
    return placed(angle(std::move(name), 0, kind), place);
}

Match always() {
    return {};
}
// Byte 1 bit 7: a "Get".
Match readRequest() {
    return {Match::Kind::Bits, 1, 0x80, 0x80};
}
Match bits(int index, unsigned mask, unsigned value) {
    return {Match::Kind::Bits, index, mask, value};
}
Match length(unsigned count) {
    return {Match::Kind::Length, 0, 0, count};
}

Layout layout(std::string name, std::vector<Field> fields = {}, Match match = always()) {
    return Layout{std::move(name), match, std::move(fields), false};
}

// A "Get": what follows the read flag (and the fields given) only pads it.
Layout request(std::string name, Match match = readRequest(), std::vector<Field> fields = {}) {
    Layout padded = layout(std::move(name), std::move(fields), match);
    padded.padded = true;
    return padded;
}

// Names shared by several messages.
const Names kPanDirection = {{0, "CCW"}, {1, "CW"}};
const Names kTiltDirection = {{0, "down"}, {1, "up"}};
namespace jog = vocab::jog;
namespace report = vocab::report;

template <class M>
constexpr unsigned bitOf(vocab::Bit<M> bit) {
    return static_cast<unsigned>(bit.bit);
}

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
const Names kLensBits = {{1, "focus inv"}, {2, "focus rev"}, {3, "focus en"},
                         {4, "zoom inv"},  {5, "zoom rev"},  {6, "zoom en"}};
const Names kCameraSelect = {{0, "camera 1"}, {1, "camera 2"}};
const Names kLegacySelection = {{0, "undefined"}, {1, "video select"}, {2, "blank video"}};
const Names kCameraPower = {{2, "camera 1 power"}, {3, "camera 2 power"}};
const Names kVideoBits = {{3, "PAL"}, {4, "blank Vout 2"}, {5, "blank Vout 1"}, {6, "store"}};
const Names kLegacyModeBits = {{0, "OSD on"}, {3, "PAL"}, {6, "store"}};
const Names kAuxBits = {
    {0, "camera 1 aux 1"}, {1, "camera 1 aux 2"}, {2, "camera 2 aux 1"}, {3, "camera 2 aux 2"}};
const Names kDisplayBits = {{4, "on"}, {5, "signed"}, {6, "store"}};
const Names kSoftLimits = {{0, "CW"}, {1, "CCW"}, {2, "up"}, {3, "down"}};
const Names kDirectionBits = {{0, "pan motor reverse"},   {1, "tilt motor reverse"},
                              {2, "pan resolver invert"}, {3, "tilt resolver invert"},
                              {4, "continuous rotation"}, {5, "inverted mount"}};
const Names kHeater = {{0, "disabled"}, {1, "share power"}, {2, "full power"}};
const Names kHomingBits = {{0, "pan index found"}, {1, "tilt index found"}};

// The step record of the tour commands and replies: preset byte, dwell byte.
std::vector<Field> stepRecord(int at) {
    return {number("preset", at, 0x3F), number("camera", at, 0xC0, kStepCamera),
            number("dwell", at + 1, 0x7F, {}, " s"), flags("blank", at + 1, kBlank, 0x80)};
}

std::vector<Field> cameraLine(int at, const std::string& camera) {
    return {number(camera + " baud", at, 0x07, kCameraBaud),
            number(camera + " format", at, 0x18, kCameraFormat),
            number(camera + " level", at, 0x20, kCameraLevel),
            number(camera + " stop bits", at, 0x40, kStopBits)};
}

std::vector<Field> lensConfiguration() {
    return {flags("lens 1", 1, kLensBits, 0x7F), number("zoom 1 minimum", 2),
            number("focus 1 minimum", 3),        flags("lens 2", 4, kLensBits, 0x7F),
            number("zoom 2 minimum", 5),         number("focus 2 minimum", 6)};
}

std::vector<Field> videoConfiguration() {
    return {number("route", 1, 0x07), flags("mode", 1, kVideoBits, 0x78),
            flags("power", 2, kCameraPower)};
}

std::vector<Field> legacyVideo() {
    return {number("selection", 1, 0x03, kLegacySelection), flags("power", 1, kCameraPower, 0xFC)};
}

std::vector<Field> displaySetting() {
    return {number("line", 1, 0x0F), flags("display", 1, kDisplayBits, 0x70)};
}

std::vector<Field> panTilt(FieldKind kind, int at = 1) {
    return {angle("pan", at, kind), angle("tilt", at + 3, kind)};
}

std::vector<Field> rates(bool safeMasked) {
    const unsigned safe = safeMasked ? 0x7F : 0xFF;
    return {
        number("pan safe speed", 1, safe),  number("pan ramp", 2),  number("pan deceleration", 3),
        number("tilt safe speed", 5, safe), number("tilt ramp", 6), number("tilt deceleration", 7)};
}

std::vector<Field> stepSettings(const std::string& axis, int at) {
    return {word(axis + " minimum", at), word(axis + " maximum", at + 2)};
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
    const unsigned target = 1u << bitOf(report::kTarget);
    return {layout("target report", fields, bits(report::kTarget.offset, target, target)),
            layout("position report", fields)};
}

std::vector<Field> presetRecord() {
    return {number("preset", 1, 0xFF, {{255, "none"}}),
            angle("pan", 2),
            angle("tilt", 5),
            number("zoom 1", 8),
            number("focus 1", 9),
            number("zoom 2", 10),
            number("focus 2", 11)};
}

// A command whose byte 1 may ask to read instead of set.
std::vector<Layout> getOrSet(const std::string& name, std::vector<Field> fields) {
    return {request(name + " request"), layout(name, std::move(fields))};
}

class Builder {
  public:
    void command(Byte code, std::vector<Layout> layouts) {
        add(code, Direction::ToUnit, std::move(layouts));
    }
    void command(Byte code, const std::string& name, std::vector<Field> fields = {}) {
        command(code, {layout(name, std::move(fields))});
    }
    void reply(Byte code, std::vector<Layout> layouts) {
        add(code, Direction::FromUnit, std::move(layouts));
    }
    void reply(Byte code, const std::string& name, std::vector<Field> fields = {}) {
        reply(code, {layout(name, std::move(fields))});
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
    t.command(vocab::JogMessage::kCode, "jog message",
              {number("pan speed", jog::kPanSpeed), number("tilt speed", jog::kTiltSpeed),
               flags("flags", jog::kFlags, kJogFlags),
               number("pan direction", jog::kPanDirection, kPanDirection),
               number("tilt direction", jog::kTiltDirection, kTiltDirection),
               number("zoom 1 jog", jog::kLensJog[0]), number("focus 1 jog", jog::kLensJog[1]),
               number("zoom 2 jog", jog::kLensJog[2]), number("focus 2 jog", jog::kLensJog[3])});
    t.reply(vocab::JogMessage::kCode,
            reports(reportFields() +
                    std::vector<Field>{
                        number("camera 1 count", report::kCamera1Count),
                        number("camera 2 count", report::kCamera2Count),
                        counted("camera 1 data", report::kCameraData, report::kCamera1Count.offset),
                        counted("camera 2 data", Field::kFollows, report::kCamera2Count.offset)}));
    t.command(0x32, "go to preset", {number("preset", 1)});
    t.command(0x33, "absolute move", panTilt(FieldKind::TargetAngle));
    t.command(0x34, "delta move", panTilt(FieldKind::Angle));
    t.command(0x35, "move to centre");
    t.command(0x36, "move to home");
    t.command(0x3A, "absolute move with lenses",
              panTilt(FieldKind::TargetAngle) +
                  std::vector<Field>{number("zoom 1", 7), number("focus 1", 8), number("zoom 2", 9),
                                     number("focus 2", 10)});
    for (Byte code : {0x32, 0x33, 0x34, 0x35, 0x36, 0x3A}) {
        t.reply(code, reports(reportFields()));
    }
}

void addPresets(Builder& t) {
    t.command(0x40, "preset request", {number("preset", 1)});
    t.command(0x41,
              {layout("preset query", {}, length(1)),
               layout("store preset", {number("preset", 1), angle("pan", 2), angle("tilt", 5)})});
    t.command(0x42, "store current position", {number("preset", 1)});
    t.command(0x43, "add lens positions", {number("preset", 1)});
    t.command(0x94, "clear all presets");
    for (Byte code : {0x40, 0x41, 0x42, 0x43}) {
        t.reply(code, "preset record", presetRecord());
    }
    t.reply(0x94, "presets cleared");
}

void addTours(Builder& t) {
    const Field tour = number("tour", 1);
    const Field step = number("step", 2);
    t.command(0x37, "execute tour", {tour});
    t.command(0x50, "clear tour", {tour});
    t.command(0x51, "tour step request", {tour, step});
    t.command(0x52, "append tour step", std::vector<Field>{tour} + stepRecord(2));
    t.command(0x53, "insert tour step", std::vector<Field>{tour, step} + stepRecord(3));
    t.command(0x54, "delete tour step", {tour, step});
    t.command(0x55, "replace tour step", std::vector<Field>{tour, step} + stepRecord(3));
    t.command(0x56, "tour step count request", {tour});

    const Field stepOrNone = number("step", 2, 0xFF, {{255, "none"}});
    const std::vector<Field> stepReply = std::vector<Field>{tour, stepOrNone} + stepRecord(3);
    t.reply(0x37, "tour started", {number("tour", 1, 0xFF, {{255, "empty"}})});
    t.reply(0x50, "tour cleared", {tour});
    for (Byte code : {0x51, 0x52, 0x55}) {
        t.reply(code, "tour step", stepReply);
    }
    t.reply(0x53, "tour step inserted", stepReply);
    t.reply(0x54, "tour step deleted", stepReply);
    t.reply(0x56, "tour step count", {tour, number("steps", 2, 0xFF, {{255, "corrupt"}})});
}

void addCamera(Builder& t) {
    const std::vector<Field> lines = cameraLine(1, "camera 1") + cameraLine(2, "camera 2");
    t.command(0x60, getOrSet("camera lines", lines));
    t.reply(0x60, "camera lines", lines);
    t.command(0x61, getOrSet("lens configuration", lensConfiguration()));
    t.reply(0x61, "lens configuration", lensConfiguration());
    t.command(0x62, "camera transmit",
              {number("length", 1, 0x7F), number("to", 1, 0x80, kCameraSelect),
               counted("data", 2, 1, 0x7F)});
    t.reply(0x62, "camera transmit done");
    const std::vector<Field> timeouts = {number("camera 1 time-out", 1),
                                         number("camera 2 time-out", 2)};
    t.command(0x65, getOrSet("camera time-outs", timeouts));
    t.reply(0x65, "camera time-outs", timeouts);
}

void addVideo(Builder& t) {
    t.command(0x63, "legacy video", legacyVideo());
    t.reply(0x63, "legacy video", legacyVideo());
    t.command(0x64, {request("video request"),
                     layout("legacy video mode", {flags("mode", 1, kLegacyModeBits)}, length(2)),
                     layout("video configuration", videoConfiguration())});
    t.reply(0x64, "video configuration", videoConfiguration());
    t.command(0x66, "aux outputs", {flags("outputs", 1, kAuxBits)});
    t.reply(0x66, "aux outputs", {flags("outputs", 1, kAuxBits)});
    t.command(0x70, getOrSet("angle display", displaySetting()));
    t.reply(0x70, "angle display", displaySetting());
    t.command(0x71, getOrSet("name display", displaySetting()));
    t.reply(0x71, "name display", displaySetting());
    t.command(0x75, "site name", {text("text", 1, 12)});
    t.reply(0x75, "site name stored");
}

void addAlignment(Builder& t) {
    const std::vector<Field> offsets = panTilt(FieldKind::Angle);
    t.command(0x80, "set angle offsets", offsets);
    t.command(0x81, {request("soft limit request", readRequest(),
                             {number("limit", 1, 0x7F, kSoftLimits)}),
                     layout("set soft limit", {number("limit", 1, 0xFF, kSoftLimits)})});
    t.command(0x82, "align to centre");
    t.command(0x83, "align to coordinates", offsets);
    t.command(0x84, "zero offsets");
    t.command(0x85, "offsets request");
    for (Byte code : {0x80, 0x82, 0x83, 0x84, 0x85}) {
        t.reply(code, "angle offsets", offsets);
    }
    t.reply(0x81, "soft limit", {number("limit", 1, 0xFF, kSoftLimits), angle("position", 2)});

    const std::vector<Field> centre = {signedOf("pan centre", 1, 3), signedOf("tilt centre", 4, 3)};
    t.command(0x90, "centre request");
    t.command(0x91, "set centre");
    t.reply(0x90, "centre position", centre);
    t.reply(0x91, "centre position", centre);
    t.command(0x9D, "initial encoder alignment");
    t.reply(0x9D, "encoder alignment finished",
            {signedOf("pan reading", 1, 3), signedOf("tilt reading", 4, 3)});
    t.command(0x9E, "homing cycle");
    t.reply(0x9E, "homing cycle finished",
            {flags("index", 1, kHomingBits), signedOf("pan index", 2, 3),
             signedOf("tilt index", 5, 3)});
}

void addSetup(Builder& t) {
    t.command(0x86, "ramp request");
    t.reply(0x86, "ramps", {number("pan ramp", 1, 0x7F), number("tilt ramp", 2, 0x7F)});
    t.command(0x92, getOrSet("rates", rates(false)));
    t.reply(0x92, "rates", rates(true));
    const std::vector<Field> minimumPair = {number("pan minimum", 1), number("tilt minimum", 2)};
    const std::vector<Field> tiltSet = {number("tilt safe speed", 1, 0x7F), number("tilt ramp", 2),
                                        word("tilt minimum", 3), word("tilt maximum", 5)};
    t.command(0x93,
              {layout("minimum pair", minimumPair, length(3)), layout("tilt settings", tiltSet)});
    t.reply(0x93,
            {layout("minimum pair", minimumPair, length(3)), layout("tilt settings", tiltSet)});
    const std::vector<Field> directions = {flags("directions", 1, kDirectionBits)};
    t.command(0x95, getOrSet("directions", directions));
    t.reply(0x95, "directions", directions);
    t.command(0x96, getOrSet("comm time-out", {number("seconds", 1, 0xFF, {{0, "off"}}, " s")}));
    t.reply(0x96, "comm time-out", {number("seconds", 1, 0xFF, {{0, "off"}}, " s")});
    t.command(0x97, getOrSet("heater", {number("mode", 1, 0xFF, kHeater)}));
    t.reply(0x97, "heater", {number("mode", 1, 0x03, kHeater)});
    const std::vector<Field> maxima = {number("pan maximum", 1), number("tilt maximum", 2)};
    t.command(0x98, "maxima request");
    t.reply(0x98, "maxima", maxima);
    t.command(0x99, "maximum pair", maxima);
    t.reply(0x99, "maxima", maxima);
    t.command(0x9A, "firmware request");
    t.reply(0x9A, "firmware",
            {number("major", 1), number("minor", 2), number("day", 3), number("month", 4), [] {
                 Field year = number("year", 5);
                 year.bias = 2000;
                 return year;
             }()});
    const std::vector<Field> speeds = {number("pan top speed", 2), number("tilt top speed", 3)};
    t.command(0x9C, {request("second top speeds request", bits(1, 0xC0, 0xC0)),
                     request("top speeds request", bits(1, 0xC0, 0x80)),
                     layout("second top speeds", speeds, bits(1, 0x40, 0x40)),
                     layout("top speeds", speeds)});
    t.reply(0x9C, {layout("second top speeds", speeds, bits(1, 0x40, 0x40)),
                   layout("top speeds", speeds)});
    t.command(0x9F, getOrSet("unit address", {number("id", 1)}));
    t.reply(0x9F, "unit address", {number("id", 1)});
    t.command(0xA1, getOrSet("pan steps", stepSettings("pan", 2)));
    t.reply(0xA1, "pan steps", stepSettings("pan", 1));
    t.command(0xA2, getOrSet("tilt steps", stepSettings("tilt", 2)));
    t.reply(0xA2, "tilt steps", stepSettings("tilt", 1));
    t.command(0xA3, {request("diagnostics request", always())});
    t.reply(0xA3, "diagnostics", {bytes("data", 1)});
    const std::vector<Field> encoders = {signedOf("pan encoder", 2, 2),
                                         signedOf("tilt encoder", 4, 2)};
    t.command(0xA5, getOrSet("encoders", encoders));
    t.reply(0xA5, "encoders", {signedOf("pan encoder", 1, 2), signedOf("tilt encoder", 3, 2)});
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
