#pragma once

// Every setting the console can read from a unit and give back, as one
// table: the request that reads it, where each value sits in the reply, its
// range, how the settings file names it, and the command that writes it.
// Plain C++, so that the settings file reader needs nothing of Qt.

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/frame.h"

namespace halvex::commissioning {

// How a value is spelled in the settings file.
enum class Style {
    Number,   // decimal
    YesNo,    // "yes" / "no"
    Degrees,  // hundredths of a degree, written "-12.34"
    Choice,   // one of the field's texts, by value
};

struct SettingField {
    std::string name;  // "pan-ramp"
    int byte = 1;      // byte of the reply that holds it (0 is the code)
    // 1..8: that many bits of the byte from `shift` up; 16: a word, low
    // byte first; 24: a signed 24-bit number, low byte first.
    int width = 8;
    int shift = 0;
    std::int32_t minimum = 0;
    std::int32_t maximum = 255;
    Style style = Style::Number;
    // For Style::Choice, index = value: the Line Log's names of the values.
    std::vector<std::string> choices;
    // Spellings of the same values that older settings files used; still
    // read, never written.
    std::vector<std::string> formerChoices;
};

enum class Kind {
    Command,    // written back by one command
    SoftLimit,  // set where the platform stands: written by moving there
    Reference,  // kept in the file for reference, never written
};

// A byte of a reply that must hold `value` under `mask`, or the reply
// answers some other question.
struct ReplyCheck {
    int byte = 1;
    Byte mask = 0;
    Byte value = 0;
};

struct SettingGroup {
    std::string section;  // the [section] of the settings file
    std::string title;    // how the console names it to the operator
    Kind kind = Kind::Command;
    std::vector<Byte> request;
    int replyBytes = 0;  // payload bytes a good reply carries at least
    std::vector<ReplyCheck> replyChecks;
    // The write: its code and length (code included); each field goes to
    // its reply byte + writeShift; writeFlags are OR'ed in (a variant flag,
    // the power-up bit).
    Byte writeCode = 0;
    int writeLength = 0;
    int writeShift = 0;
    std::vector<std::pair<int, Byte>> writeFlags;
    // Written only while the factory area is open.
    bool factory = false;
    // Controller types that have it: bit n for type n.
    unsigned types = 0xF;
    // For Kind::SoftLimit: the limit's index in the soft-limit command.
    int limitIndex = -1;
    std::vector<SettingField> fields;
};

constexpr int kControllerTypes = 4;
constexpr int kTours = 3;
constexpr int kMostTourSteps = 63;

// The settings in the order they are read, written and listed in the file.
const std::vector<SettingGroup>& settingGroups();

bool appliesTo(const SettingGroup& group, int controllerType);

// "speeds/pan-ramp": how a value is keyed in memory and named in messages.
std::string settingKey(const SettingGroup& group, const SettingField& field);

// The field's value in a reply (code at [0]); the reply is long enough.
std::int32_t readField(const SettingField& field, const std::vector<Byte>& reply);
// Puts the value into a message at the field's byte + shift.
void putField(const SettingField& field, std::int32_t value, std::vector<Byte>& message, int shift);

// True when the reply answers this group's request.
bool replyFits(const SettingGroup& group, const std::vector<Byte>& reply);

// The command that gives the unit these values (one per field, in order).
std::vector<Byte> writeMessage(const SettingGroup& group, const std::vector<std::int32_t>& values);

// Range of a stored angle in hundredths: the unit's travel plus the largest
// offset it takes, so every position it can report fits.
constexpr std::int32_t kPanReportedRange = 54000;
constexpr std::int32_t kTiltReportedRange = 27000;

}  // namespace halvex::commissioning
