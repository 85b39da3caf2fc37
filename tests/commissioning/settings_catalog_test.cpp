#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <vector>

#include "commissioning/settings_catalog.h"
#include "commissioning/unit_settings.h"
#include "protocol/frame_description.h"
#include "protocol/protocol_table.h"

using namespace halvex;
using namespace halvex::commissioning;

namespace {

// The raw bits the Line Log's field stands for, put back where they sat in
// the message.
std::int64_t rawBits(const table::Field& field, std::int64_t number) {
    return field.kind == table::FieldKind::Number ? number << std::countr_zero(field.mask) : number;
}

// What the protocol table reads for one setting of `message`, by the bytes
// and bits the settings catalog puts it in. Empty when no field of the
// table covers those bits.
std::optional<std::int64_t> tableReading(table::Direction direction,
                                         const std::vector<Byte>& message,
                                         const SettingField& setting, int shift) {
    const Byte start = direction == table::Direction::ToUnit ? kStx : kAck;
    const table::FrameDescription frame = table::describeFrame(encodeFrame(start, 0, message, 0));
    const table::Layout* layout = table::layoutFor(direction, message);
    if (layout == nullptr || frame.shortPayload) {
        return std::nullopt;
    }
    const int at = setting.byte + shift;
    for (const table::DescribedField& described : frame.fields) {
        const auto field = std::ranges::find(layout->fields, described.name, &table::Field::name);
        if (field == layout->fields.end() || described.offset != at) {
            continue;
        }
        if (setting.width >= 16) {
            if (described.size * 8 == setting.width) {
                return described.number;
            }
            continue;
        }
        const unsigned bits = ((1u << setting.width) - 1) << setting.shift;
        if (described.size == 1 && (field->mask & bits) == bits) {
            return (rawBits(*field, described.number) & bits) >> setting.shift;
        }
    }
    return std::nullopt;
}

std::string where(const SettingGroup& group, const SettingField& field) {
    return group.title + " / " + field.name;
}

// Each setting alone at its largest value, then all of them together at
// their largest, at their smallest and with every other bit of their range
// set: a setting at a wrong byte or bit shows up in one of these.
std::vector<std::vector<std::int32_t>> valueSets(const SettingGroup& group) {
    const std::size_t count = group.fields.size();
    std::vector<std::vector<std::int32_t>> sets(count + 3, std::vector<std::int32_t>(count, 0));
    for (std::size_t i = 0; i < count; ++i) {
        const SettingField& field = group.fields[i];
        sets[i][i] = field.maximum;
        sets[count][i] = field.maximum;
        sets[count + 1][i] = field.minimum;
        sets[count + 2][i] = field.minimum + ((field.maximum - field.minimum) & 0x555555);
    }
    return sets;
}

}  // namespace

// The settings catalog and the protocol table were each written from the
// payload descriptions: the bytes a restore writes, and the reply a save
// reads, must hold each value where the Line Log shows it.
TEST(SettingsCatalog, WritesAndReadsEachSettingWhereTheProtocolTableHasIt) {
    int written = 0;
    for (const SettingGroup& group : settingGroups()) {
        for (const auto& values : valueSets(group)) {
            const std::vector<Byte> message =
                group.kind == Kind::Command ? writeMessage(group, values) : std::vector<Byte>{};
            std::vector<Byte> reply(static_cast<std::size_t>(group.replyBytes) + 1, 0);
            reply[0] = group.request.front();
            for (std::size_t i = 0; i < group.fields.size(); ++i) {
                putField(group.fields[i], values[i], reply, 0);
            }
            for (const ReplyCheck& check : group.replyChecks) {
                reply.at(static_cast<std::size_t>(check.byte)) |= check.value;
            }
            ASSERT_TRUE(replyFits(group, reply)) << group.title;
            // Another limit's or speed set's reply, one cut short, another
            // code's: none of them is this group's.
            for (const ReplyCheck& check : group.replyChecks) {
                std::vector<Byte> other = reply;
                other.at(static_cast<std::size_t>(check.byte)) ^= check.mask;
                EXPECT_FALSE(replyFits(group, other)) << group.title;
            }
            EXPECT_FALSE(replyFits(group, {reply.begin(), reply.end() - 1})) << group.title;
            std::vector<Byte> otherCode = reply;
            otherCode[0] = static_cast<Byte>(otherCode[0] + 1);
            EXPECT_FALSE(replyFits(group, otherCode)) << group.title;
            for (std::size_t i = 0; i < group.fields.size(); ++i) {
                const SettingField& field = group.fields[i];
                const auto value = std::optional<std::int64_t>(values[i]);
                if (!message.empty()) {
                    EXPECT_EQ(
                        tableReading(table::Direction::ToUnit, message, field, group.writeShift),
                        value)
                        << where(group, field) << " in " << table::hexBytes(message);
                    ++written;
                }
                EXPECT_EQ(readField(field, reply), values[i]) << where(group, field);
                EXPECT_EQ(tableReading(table::Direction::FromUnit, reply, field, 0), value)
                    << where(group, field) << " in " << table::hexBytes(reply);
            }
        }
    }
    EXPECT_GT(written, 150);
}
