#include "commissioning/settings_catalog.h"

namespace halvex::commissioning {

namespace {

constexpr Byte kRead = 0x80;
constexpr Byte kSecondVariant = 0x40;
constexpr Byte kPowerUp = 0x40;
constexpr unsigned kAllTypes = 0xF;
constexpr unsigned kStandardOnly = 0x1;    // type 0
constexpr unsigned kLegacyTypes = 0xC;     // types 2 and 3
constexpr unsigned kWithVideoPorts = 0xD;  // all but type 1
constexpr std::int32_t kAny24 = 0x7FFFFF;

SettingField number(std::string name, int byte, std::int32_t minimum, std::int32_t maximum) {
    return {std::move(name), byte, 8, 0, minimum, maximum, Style::Number, {}};
}

SettingField bits(std::string name, int byte, int shift, int width, std::int32_t maximum) {
    return {std::move(name), byte, width, shift, 0, maximum, Style::Number, {}};
}

SettingField flag(std::string name, int byte, int shift) {
    return {std::move(name), byte, 1, shift, 0, 1, Style::YesNo, {}};
}

SettingField choice(std::string name, int byte, int shift, int width,
                    std::vector<std::string> texts) {
    const auto last = static_cast<std::int32_t>(texts.size()) - 1;
    return {std::move(name), byte, width, shift, 0, last, Style::Choice, std::move(texts)};
}

SettingField word(std::string name, int byte, std::int32_t minimum, std::int32_t maximum) {
    return {std::move(name), byte, 16, 0, minimum, maximum, Style::Number, {}};
}

SettingField angle(std::string name, int byte, std::int32_t range) {
    return {std::move(name), byte, 24, 0, -range, range, Style::Degrees, {}};
}

// A setting read by `request` and written back by the same code with the
// fields where the reply has them.
SettingGroup group(std::string section, std::string title, std::vector<Byte> request,
                   int replyBytes, int writeLength, std::vector<SettingField> fields) {
    SettingGroup made;
    made.section = std::move(section);
    made.title = std::move(title);
    made.writeCode = request.front();
    made.request = std::move(request);
    made.replyBytes = replyBytes;
    made.writeLength = writeLength;
    made.fields = std::move(fields);
    return made;
}

SettingGroup softLimit(int index, const char* name, const char* title, std::int32_t range) {
    SettingGroup limit = group("soft-limits", title, {0x81, static_cast<Byte>(kRead | index)}, 4, 2,
                               {angle(name, 2, range)});
    limit.kind = Kind::SoftLimit;
    limit.limitIndex = index;
    limit.replyChecks = {{1, 0x7F, static_cast<Byte>(index)}};
    return limit;
}

// Configuration bits and minimum speeds of one camera's lens, from `base`.
void addLens(std::vector<SettingField>& fields, const std::string& camera, int base) {
    fields.push_back(flag(camera + "-focus-invert", base, 1));
    fields.push_back(flag(camera + "-focus-reverse", base, 2));
    fields.push_back(flag(camera + "-focus-enable", base, 3));
    fields.push_back(flag(camera + "-zoom-invert", base, 4));
    fields.push_back(flag(camera + "-zoom-reverse", base, 5));
    fields.push_back(flag(camera + "-zoom-enable", base, 6));
    fields.push_back(number(camera + "-zoom-minimum-speed", base + 1, 0, 255));
    fields.push_back(number(camera + "-focus-minimum-speed", base + 2, 0, 255));
}

// Speed, character format, level and stop bits of one camera's line, in the
// texts of the Camera page.
void addCameraLine(std::vector<SettingField>& fields, const std::string& camera, int byte) {
    fields.push_back(choice(camera + "-baud", byte, 0, 3,
                            {"Dis", "9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2"}));
    fields.push_back(choice(camera + "-format", byte, 3, 2, {"8/N", "7/N", "7/E", "7/O"}));
    fields.push_back(choice(camera + "-level", byte, 5, 1, {"232", "422"}));
    fields.push_back(choice(camera + "-stop-bits", byte, 6, 1, {"1", "2"}));
}

std::vector<SettingGroup> buildGroups() {
    std::vector<SettingGroup> groups;

    groups.push_back(
        group("speeds", "Speeds and ramps", {0x92, kRead, 0, 0, 0, 0, 0, 0, 0}, 7, 9,
              {bits("pan-safe-speed", 1, 0, 7, 127), number("pan-ramp", 2, 1, 255),
               number("pan-deceleration", 3, 1, 63), bits("tilt-safe-speed", 5, 0, 7, 127),
               number("tilt-ramp", 6, 1, 255), number("tilt-deceleration", 7, 1, 63)}));
    groups.back().fields[0].minimum = 1;
    groups.back().fields[3].minimum = 1;

    SettingGroup top =
        group("speeds", "Top speeds", {0x9C, kRead, 0, 0}, 3, 4,
              {number("pan-top-speed", 2, 1, 255), number("tilt-top-speed", 3, 1, 255)});
    top.replyChecks = {{1, kSecondVariant, 0}};
    groups.push_back(top);
    SettingGroup second = group(
        "speeds", "Second top speeds", {0x9C, kRead | kSecondVariant, 0, 0}, 3, 4,
        {number("pan-second-top-speed", 2, 1, 255), number("tilt-second-top-speed", 3, 1, 255)});
    second.replyChecks = {{1, kSecondVariant, kSecondVariant}};
    second.writeFlags = {{1, kSecondVariant}};
    groups.push_back(second);

    for (const auto& [code, axis] : {std::pair<Byte, std::string>{0xA1, "pan"}, {0xA2, "tilt"}}) {
        SettingGroup limits =
            group("speeds", "Minimum and maximum", {code, kRead, 0, 0, 0, 0}, 4, 6,
                  {word(axis + "-minimum", 1, 15, 29999), word(axis + "-maximum", 3, 16, 30000)});
        limits.writeShift = 1;
        groups.push_back(limits);
    }

    groups.push_back(group("housekeeping", "Communication time-out", {0x96, kRead}, 1, 2,
                           {number("comm-timeout", 1, 0, 120)}));
    groups.push_back(group("housekeeping", "Heater", {0x97, kRead}, 1, 2,
                           {choice("heater", 1, 0, 2, {"disabled", "share-power", "full-power"})}));

    SettingGroup directions =
        group("factory", "Directions and mounting", {0x95, kRead}, 1, 2,
              {flag("pan-motor-reverse", 1, 0), flag("tilt-motor-reverse", 1, 1),
               flag("pan-resolver-invert", 1, 2), flag("tilt-resolver-invert", 1, 3),
               flag("continuous-rotation", 1, 4), flag("invert-mount", 1, 5)});
    directions.factory = true;
    groups.push_back(directions);
    SettingGroup encoders =
        group("factory", "Encoders", {0xA5, kRead, 0, 0, 0, 0}, 4, 6,
              {word("pan-encoder", 1, 0, 10000), word("tilt-encoder", 3, 0, 10000)});
    encoders.factory = true;
    encoders.writeShift = 1;
    groups.push_back(encoders);

    SettingGroup offsets = group("offsets", "Angle offsets", {0x85}, 6, 7,
                                 {angle("pan-offset", 1, 36000), angle("tilt-offset", 4, 18000)});
    offsets.writeCode = 0x80;
    groups.push_back(offsets);

    groups.push_back(softLimit(0, "cw", "CW soft limit", kPanReportedRange));
    groups.push_back(softLimit(1, "ccw", "CCW soft limit", kPanReportedRange));
    groups.push_back(softLimit(2, "up", "Up soft limit", kTiltReportedRange));
    groups.push_back(softLimit(3, "down", "Down soft limit", kTiltReportedRange));

    std::vector<SettingField> lens;
    addLens(lens, "camera1", 1);
    addLens(lens, "camera2", 4);
    groups.push_back(
        group("lenses", "Lens configuration", {0x61, kRead, 0, 0, 0, 0, 0}, 6, 7, std::move(lens)));

    std::vector<SettingField> lines;
    addCameraLine(lines, "camera1", 1);
    addCameraLine(lines, "camera2", 2);
    groups.push_back(group("cameras", "Camera lines", {0x60, kRead, 0}, 2, 3, std::move(lines)));
    groups.push_back(group("cameras", "Camera response time-outs", {0x65, kRead, 0}, 2, 3,
                           {number("camera1-response-timeout", 1, 1, 100),
                            number("camera2-response-timeout", 2, 1, 100)}));

    SettingGroup video = group(
        "video", "Video configuration", {0x64, kRead, 0}, 2, 3,
        {bits("routing", 1, 0, 3, 7), flag("pal", 1, 3), flag("blank-vout-2", 1, 4),
         flag("blank-vout-1", 1, 5), flag("camera1-power", 2, 2), flag("camera2-power", 2, 3)});
    video.types = kStandardOnly;
    video.writeFlags = {{1, kPowerUp}};
    groups.push_back(video);
    SettingGroup legacy = group("video", "Legacy video configuration", {0x63, kRead}, 1, 2,
                                {bits("legacy-video", 1, 0, 2, 3), flag("camera1-power", 1, 2),
                                 flag("camera2-power", 1, 3)});
    legacy.types = kLegacyTypes;
    groups.push_back(legacy);
    SettingGroup aux = group("video", "Aux outputs", {0x66, kRead}, 1, 2,
                             {flag("camera1-aux-1", 1, 0), flag("camera1-aux-2", 1, 1),
                              flag("camera2-aux-1", 1, 2), flag("camera2-aux-2", 1, 3)});
    aux.types = kWithVideoPorts;
    groups.push_back(aux);

    SettingGroup angles = group(
        "display", "Angle display", {0x70, kRead}, 1, 2,
        {bits("angle-line", 1, 0, 4, 11), flag("angle-display", 1, 4), flag("angle-signed", 1, 5)});
    angles.writeFlags = {{1, kPowerUp}};
    groups.push_back(angles);
    SettingGroup name = group("display", "Name display", {0x71, kRead}, 1, 2,
                              {bits("name-line", 1, 0, 4, 11), flag("name-display", 1, 4)});
    name.writeFlags = {{1, kPowerUp}};
    groups.push_back(name);

    SettingGroup centre =
        group("reference", "Resolver centre", {0x90}, 6, 0,
              {angle("pan-resolver-centre", 1, kAny24), angle("tilt-resolver-centre", 4, kAny24)});
    centre.kind = Kind::Reference;
    centre.writeCode = 0;
    centre.fields[0].style = Style::Number;
    centre.fields[1].style = Style::Number;
    centre.fields[0].minimum = -kAny24 - 1;
    centre.fields[1].minimum = -kAny24 - 1;
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
