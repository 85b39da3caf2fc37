#include "commissioning/settings_catalog.h"

#include <bit>
#include <stdexcept>

#include "protocol/protocol_table.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

constexpr unsigned kStandardOnly = 0x1;    // type 0
constexpr unsigned kLegacyTypes = 0xC;     // types 2 and 3
constexpr unsigned kWithVideoPorts = 0xD;  // all but type 1
constexpr std::int32_t kAny24 = 0x7FFFFF;

// A setting at a field's place: its byte, and its bits as a width and shift
// (a whole word for fields of two or three bytes).
template <class M>
SettingField at(std::string name, vocab::Field<M> place, std::int32_t minimum, std::int32_t maximum,
                Style style = Style::Number) {
    const int width = place.size > 1 ? place.size * 8 : std::popcount(place.mask);
    const int shift = place.size > 1 ? 0 : std::countr_zero(place.mask);
    return {std::move(name), place.offset, width, shift, minimum, maximum, style, {}, {}};
}

template <class M>
SettingField number(std::string name, vocab::Field<M> place, std::int32_t minimum,
                    std::int32_t maximum) {
    return at(std::move(name), place, minimum, maximum);
}

template <class M>
SettingField bits(std::string name, vocab::Field<M> place, std::int32_t maximum) {
    return at(std::move(name), place, 0, maximum);
}

template <class M>
SettingField flag(std::string name, vocab::Bit<M> bit) {
    return at(std::move(name), vocab::Field<M>{bit.offset, 1, vocab::maskOf(bit)}, 0, 1,
              Style::YesNo);
}

template <class M>
SettingField angle(std::string name, vocab::Field<M> place, std::int32_t range) {
    return at(std::move(name), place, -range, range, Style::Degrees);
}

// The Line Log's names of the values of field `field` of the reply `code`,
// by value: the file and the views spell a value as the Line Log shows it.
std::vector<std::string> lineLogNames(Byte code, const std::string& field) {
    const table::Message* reply = table::findMessage(table::Direction::FromUnit, code);
    if (reply != nullptr) {
        for (const table::Layout& layout : reply->layouts) {
            for (const table::Field& named : layout.fields) {
                if (named.name != field || named.names.empty()) {
                    continue;
                }
                std::vector<std::string> names;
                for (const table::ValueName& value : named.names) {
                    names.resize(std::max<std::size_t>(names.size(), value.value + 1));
                    names[value.value] = value.name;
                }
                return names;
            }
        }
    }
    throw std::logic_error("the protocol table names no values of " + field);
}

// One of the Line Log's value names, or a spelling older files used.
template <class M>
SettingField choice(std::string name, vocab::Field<M> place, const std::string& tableName,
                    std::vector<std::string> former) {
    std::vector<std::string> names = lineLogNames(M::kCode, tableName);
    SettingField field =
        at(std::move(name), place, 0, static_cast<std::int32_t>(names.size()) - 1, Style::Choice);
    field.choices = std::move(names);
    field.formerChoices = std::move(former);
    return field;
}

// A setting read by `request` and written back by the same code with the
// fields where the reply has them; a good reply is at least Reply's length.
template <class Reply>
SettingGroup group(std::string section, std::string title, std::vector<Byte> request,
                   int writeLength, std::vector<SettingField> fields) {
    SettingGroup made;
    made.section = std::move(section);
    made.title = std::move(title);
    made.writeCode = request.front();
    made.request = std::move(request);
    made.replyBytes = Reply::kLength - 1;
    made.writeLength = writeLength;
    made.fields = std::move(fields);
    return made;
}

// A get/set command whose reply has its layout and length.
template <class M>
SettingGroup getOrSet(std::string section, std::string title, std::vector<SettingField> fields) {
    return group<M>(std::move(section), std::move(title), vocab::readRequest<M>(), M::kLength,
                    std::move(fields));
}

SettingGroup softLimit(int index, const char* name, const char* title, std::int32_t range) {
    namespace limit = vocab::soft_limit;
    std::vector<Byte> request = vocab::blank<vocab::SoftLimit>();
    vocab::put(request, limit::kLimit, static_cast<std::uint32_t>(index));
    request[limit::kLimitByte.offset] = vocab::withBit(request[limit::kLimitByte.offset],
                                                       vocab::kReadRequest<vocab::SoftLimit>, true);
    SettingGroup made = group<vocab::SoftLimitReply>(
        "soft-limits", title, std::move(request), vocab::SoftLimit::kLength,
        {angle(name, vocab::soft_limit_reply::kPosition, range)});
    made.kind = Kind::SoftLimit;
    made.limitIndex = index;
    made.replyChecks = {{vocab::soft_limit_reply::kLimit.offset, vocab::maskOf(limit::kLimit),
                         static_cast<Byte>(index)}};
    return made;
}

// Configuration bits and minimum speeds of one camera's lens.
template <class Lens>
void addLens(std::vector<SettingField>& fields, const std::string& camera) {
    fields.push_back(flag(camera + "-focus-invert", Lens::kFocusInvert));
    fields.push_back(flag(camera + "-focus-reverse", Lens::kFocusReverse));
    fields.push_back(flag(camera + "-focus-enable", Lens::kFocusEnable));
    fields.push_back(flag(camera + "-zoom-invert", Lens::kZoomInvert));
    fields.push_back(flag(camera + "-zoom-reverse", Lens::kZoomReverse));
    fields.push_back(flag(camera + "-zoom-enable", Lens::kZoomEnable));
    fields.push_back(number(camera + "-zoom-minimum-speed", Lens::kZoomMinimum, 0, 255));
    fields.push_back(number(camera + "-focus-minimum-speed", Lens::kFocusMinimum, 0, 255));
}

// Speed, character format, level and stop bits of one camera's line. Files
// saved before the settings took the Line Log's names spelled them as the
// Camera page's captions.
template <class Line>
void addCameraLine(std::vector<SettingField>& fields, const std::string& camera,
                   const std::string& inTable) {
    fields.push_back(choice(camera + "-baud", Line::kBaud, inTable + " baud",
                            {"Dis", "9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2"}));
    fields.push_back(choice(camera + "-format", Line::kFormat, inTable + " format", {}));
    fields.push_back(choice(camera + "-level", Line::kLevel, inTable + " level", {"232", "422"}));
    fields.push_back(choice(camera + "-stop-bits", Line::kStopBits, inTable + " stop bits", {}));
}

// One axis's lowest and highest step rate: the command has a read byte
// before them that the reply has not.
template <class Command, int SentAt, class Reply, int ReadAt>
SettingGroup stepRange(const std::string& axis, vocab::StepRange<Command, SentAt> sent,
                       vocab::StepRange<Reply, ReadAt> read) {
    SettingGroup limits = getOrSet<Command>("speeds", "Minimum and maximum",
                                            {number(axis + "-minimum", read.kMinimum, 15, 29999),
                                             number(axis + "-maximum", read.kMaximum, 16, 30000)});
    limits.replyBytes = Reply::kLength - 1;
    limits.writeShift = sent.kMinimum.offset - read.kMinimum.offset;
    return limits;
}

std::vector<SettingGroup> buildGroups() {
    namespace v = vocab;
    std::vector<SettingGroup> groups;

    // The reply has the command's places, without its last byte.
    using Pan = v::rates::Pan;
    using Tilt = v::rates::Tilt;
    groups.push_back(group<v::RatesReply>(
        "speeds", "Speeds and ramps", v::readRequest<v::Rates>(), v::Rates::kLength,
        {number("pan-safe-speed", Pan::kSafeSpeed, 1, 127), number("pan-ramp", Pan::kRamp, 1, 255),
         number("pan-deceleration", Pan::kDeceleration, 1, 63),
         number("tilt-safe-speed", Tilt::kSafeSpeed, 1, 127),
         number("tilt-ramp", Tilt::kRamp, 1, 255),
         number("tilt-deceleration", Tilt::kDeceleration, 1, 63)}));

    namespace top = v::top_speeds;
    namespace topr = v::top_speeds_reply;
    SettingGroup first = getOrSet<v::TopSpeeds>("speeds", "Top speeds",
                                                {number("pan-top-speed", topr::kPan, 1, 255),
                                                 number("tilt-top-speed", topr::kTilt, 1, 255)});
    first.replyChecks = {{topr::kSecond.offset, v::maskOf(topr::kSecond), 0}};
    groups.push_back(first);
    std::vector<Byte> secondRequest = v::readRequest<v::TopSpeeds>();
    secondRequest[top::kSecond.offset] =
        v::withBit(secondRequest[top::kSecond.offset], top::kSecond, true);
    SettingGroup second = group<v::TopSpeedsReply>(
        "speeds", "Second top speeds", std::move(secondRequest), v::TopSpeeds::kLength,
        {number("pan-second-top-speed", topr::kPan, 1, 255),
         number("tilt-second-top-speed", topr::kTilt, 1, 255)});
    second.replyChecks = {
        {topr::kSecond.offset, v::maskOf(topr::kSecond), v::maskOf(topr::kSecond)}};
    second.writeFlags = {{top::kSecond.offset, v::maskOf(top::kSecond)}};
    groups.push_back(second);

    groups.push_back(stepRange("pan", v::pan_steps{}, v::pan_steps_reply{}));
    groups.push_back(stepRange("tilt", v::tilt_steps{}, v::tilt_steps_reply{}));

    groups.push_back(
        getOrSet<v::CommTimeout>("housekeeping", "Communication time-out",
                                 {number("comm-timeout", v::comm_timeout::kSeconds, 0, 120)}));
    groups.push_back(getOrSet<v::Heater>(
        "housekeeping", "Heater",
        {choice("heater", v::heater::kMode, "mode", {"disabled", "share-power", "full-power"})}));

    namespace d = v::directions;
    SettingGroup directions =
        getOrSet<v::Directions>("factory", "Directions and mounting",
                                {flag("pan-motor-reverse", d::kPanMotorReverse),
                                 flag("tilt-motor-reverse", d::kTiltMotorReverse),
                                 flag("pan-resolver-invert", d::kPanResolverInvert),
                                 flag("tilt-resolver-invert", d::kTiltResolverInvert),
                                 flag("continuous-rotation", d::kContinuousRotation),
                                 flag("invert-mount", d::kInvertedMount)});
    directions.factory = true;
    groups.push_back(directions);
    SettingGroup encoders =
        getOrSet<v::Encoders>("factory", "Encoders",
                              {number("pan-encoder", v::encoders_reply::kPan, 0, 10000),
                               number("tilt-encoder", v::encoders_reply::kTilt, 0, 10000)});
    encoders.factory = true;
    encoders.replyBytes = v::EncodersReply::kLength - 1;
    encoders.writeShift = v::encoders::kPan.offset - v::encoders_reply::kPan.offset;
    groups.push_back(encoders);

    SettingGroup offsets = group<v::AngleOffsets>(
        "offsets", "Angle offsets", v::blank<v::OffsetsRequest>(), v::SetAngleOffsets::kLength,
        {angle("pan-offset", v::angle_offsets::kPan, 36000),
         angle("tilt-offset", v::angle_offsets::kTilt, 18000)});
    offsets.writeCode = v::SetAngleOffsets::kCode;
    offsets.writeShift = v::set_angle_offsets::kPan.offset - v::angle_offsets::kPan.offset;
    groups.push_back(offsets);

    groups.push_back(softLimit(0, "cw", "CW soft limit", kPanReportedRange));
    groups.push_back(softLimit(1, "ccw", "CCW soft limit", kPanReportedRange));
    groups.push_back(softLimit(2, "up", "Up soft limit", kTiltReportedRange));
    groups.push_back(softLimit(3, "down", "Down soft limit", kTiltReportedRange));

    std::vector<SettingField> lens;
    addLens<v::lens_configuration::Lens1>(lens, "camera1");
    addLens<v::lens_configuration::Lens2>(lens, "camera2");
    groups.push_back(
        getOrSet<v::LensConfiguration>("lenses", "Lens configuration", std::move(lens)));

    std::vector<SettingField> lines;
    addCameraLine<v::camera_lines::Camera1>(lines, "camera1", "camera 1");
    addCameraLine<v::camera_lines::Camera2>(lines, "camera2", "camera 2");
    groups.push_back(getOrSet<v::CameraLines>("cameras", "Camera lines", std::move(lines)));
    groups.push_back(getOrSet<v::CameraTimeouts>(
        "cameras", "Camera response time-outs",
        {number("camera1-response-timeout", v::camera_timeouts::kCamera1, 1, 100),
         number("camera2-response-timeout", v::camera_timeouts::kCamera2, 1, 100)}));

    // Video and display settings go with the power-up (store) bit.
    namespace vc = v::video_configuration;
    SettingGroup video = getOrSet<v::VideoConfiguration>(
        "video", "Video configuration",
        {bits("routing", vc::kRoute, 7), flag("pal", vc::kPal),
         flag("blank-vout-2", vc::kBlankOutput2), flag("blank-vout-1", vc::kBlankOutput1),
         flag("camera1-power", vc::kCamera1Power), flag("camera2-power", vc::kCamera2Power)});
    video.types = kStandardOnly;
    video.writeFlags = {{vc::kStore.offset, v::maskOf(vc::kStore)}};
    groups.push_back(video);
    namespace lv = v::legacy_video;
    SettingGroup legacy = getOrSet<v::LegacyVideo>(
        "video", "Legacy video configuration",
        {bits("legacy-video", lv::kSelection, 3), flag("camera1-power", lv::kCamera1Power),
         flag("camera2-power", lv::kCamera2Power)});
    legacy.types = kLegacyTypes;
    groups.push_back(legacy);
    const auto& output = v::aux_outputs::kOutput;
    SettingGroup aux = getOrSet<v::AuxOutputs>(
        "video", "Aux outputs",
        {flag("camera1-aux-1", output[0]), flag("camera1-aux-2", output[1]),
         flag("camera2-aux-1", output[2]), flag("camera2-aux-2", output[3])});
    aux.types = kWithVideoPorts;
    groups.push_back(aux);

    using Angles = v::angle_display;
    SettingGroup angles = getOrSet<v::AngleDisplay>(
        "display", "Angle display",
        {bits("angle-line", Angles::kLine, 11), flag("angle-display", Angles::kOn),
         flag("angle-signed", Angles::kSigned)});
    angles.writeFlags = {{Angles::kStore.offset, v::maskOf(Angles::kStore)}};
    groups.push_back(angles);
    using Name = v::name_display;
    SettingGroup name = getOrSet<v::NameDisplay>(
        "display", "Name display",
        {bits("name-line", Name::kLine, 11), flag("name-display", Name::kOn)});
    name.writeFlags = {{Name::kStore.offset, v::maskOf(Name::kStore)}};
    groups.push_back(name);

    using Centre = v::centre_position;
    SettingGroup centre = group<v::CentrePosition>(
        "reference", "Resolver centre", v::blank<v::CentreRequest>(), 0,
        {number("pan-resolver-centre", Centre::kPan, -kAny24 - 1, kAny24),
         number("tilt-resolver-centre", Centre::kTilt, -kAny24 - 1, kAny24)});
    centre.kind = Kind::Reference;  // shown, never written
    groups.push_back(centre);

    return groups;
}

}  // namespace

const std::vector<SettingGroup>& settingGroups() {
    static const std::vector<SettingGroup> groups = buildGroups();
    return groups;
}

bool appliesTo(const SettingGroup& group, int controllerType) {
    return controllerType >= 0 && controllerType < kControllerTypes &&
           (group.types & (1u << controllerType)) != 0;
}

std::string settingKey(const SettingGroup& group, const SettingField& field) {
    return group.section + "/" + field.name;
}

std::int32_t readField(const SettingField& field, const std::vector<Byte>& reply) {
    const auto at = [&reply](int index) { return reply.at(static_cast<std::size_t>(index)); };
    if (field.width == 24) {
        return Build24(at(field.byte + 2), at(field.byte + 1), at(field.byte));
    }
    if (field.width == 16) {
        return at(field.byte) | (at(field.byte + 1) << 8);
    }
    const int mask = (1 << field.width) - 1;
    return (at(field.byte) >> field.shift) & mask;
}

void putField(const SettingField& field, std::int32_t value, std::vector<Byte>& message,
              int shift) {
    const auto at = [&message](int index) -> Byte& {
        return message.at(static_cast<std::size_t>(index));
    };
    const int first = field.byte + shift;
    if (field.width == 24) {
        Byte b2 = 0;
        Byte b1 = 0;
        Byte b0 = 0;
        std::int32_t consumed = value;
        Split24(consumed, b2, b1, b0);
        at(first) = b0;
        at(first + 1) = b1;
        at(first + 2) = b2;
        return;
    }
    if (field.width == 16) {
        at(first) = static_cast<Byte>(value & 0xFF);
        at(first + 1) = static_cast<Byte>((value >> 8) & 0xFF);
        return;
    }
    const int mask = ((1 << field.width) - 1) << field.shift;
    at(first) = static_cast<Byte>((at(first) & ~mask) | ((value << field.shift) & mask));
}

bool replyFits(const SettingGroup& group, const std::vector<Byte>& reply) {
    if (reply.size() < static_cast<std::size_t>(group.replyBytes) + 1 ||
        reply.front() != group.request.front()) {
        return false;
    }
    for (const ReplyCheck& check : group.replyChecks) {
        if ((reply[static_cast<std::size_t>(check.byte)] & check.mask) != check.value) {
            return false;
        }
    }
    return true;
}

std::vector<Byte> writeMessage(const SettingGroup& group, const std::vector<std::int32_t>& values) {
    std::vector<Byte> message(static_cast<std::size_t>(group.writeLength), 0);
    message.at(0) = group.writeCode;
    for (std::size_t i = 0; i < group.fields.size(); ++i) {
        putField(group.fields[i], values.at(i), message, group.writeShift);
    }
    for (const auto& [index, bitsToSet] : group.writeFlags) {
        message.at(static_cast<std::size_t>(index)) |= bitsToSet;
    }
    return message;
}

}  // namespace halvex::commissioning
