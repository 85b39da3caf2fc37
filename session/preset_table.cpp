#include "session/preset_table.h"

#include "session/text_fields.h"

#include <string>

#include "protocol/vocabulary_presets.h"
#include "session/position_encoding.h"

namespace halvex {

namespace {
constexpr int kNumberWidth = 4;
constexpr int kAngleWidth = 8;
constexpr int kLensWidth = 5;

QString lensField(Byte value) {
    return fitRight(QString::number(value), kLensWidth);
}
}  // namespace

std::size_t PresetTable::checkNumber(int number) {
    if (number < 0 || number >= kPresetTableSize) {
        throw RangeFault(RangeFault::SubscriptOutOfRange,
                         "preset number " + std::to_string(number) + " is outside the table");
    }
    return static_cast<std::size_t>(number);
}

const PresetRecord& PresetTable::at(int number) const {
    return records_[checkNumber(number)];
}

void PresetTable::store(int number, const PresetRecord& record) {
    records_[checkNumber(number)] = record;
}

PresetRecord readPresetRecord(const ByteTable& rx) {
    namespace p = vocab::preset_record;
    PresetRecord record;
    record.pan = getPosition(rx, p::kPan);
    record.tilt = getPosition(rx, p::kTilt);
    record.zoom1 = static_cast<Byte>(vocab::get(rx, p::kLens[0]));
    record.focus1 = static_cast<Byte>(vocab::get(rx, p::kLens[1]));
    record.zoom2 = static_cast<Byte>(vocab::get(rx, p::kLens[2]));
    record.focus2 = static_cast<Byte>(vocab::get(rx, p::kLens[3]));
    return record;
}

std::optional<QString> presetEntryText(int number, const PresetRecord& record, Byte unitVariant) {
    if (unitVariant > 1) {
        return std::nullopt;
    }
    // A positive number's decimal text carries one leading blank.
    const QString numberText = QLatin1Char(' ') + QString::number(number);
    QString text = fitRight(numberText, kNumberWidth) + QLatin1Char(' ') +
                   fitRight(formatAngle(static_cast<float>(record.pan) / 100.0f), kAngleWidth) +
                   QLatin1Char(' ') +
                   fitRight(formatAngle(static_cast<float>(record.tilt) / 100.0f), kAngleWidth) +
                   QLatin1Char(' ') + lensField(record.zoom1) + QLatin1Char(' ') +
                   lensField(record.focus1);
    if (unitVariant == 0) {
        text += QLatin1Char(' ') + lensField(record.zoom2) + QLatin1Char(' ') +
                lensField(record.focus2);
    }
    return text;
}

QString presetHeadingText() {
    return fitRight(QStringLiteral("No"), kNumberWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Pan"), kAngleWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Tilt"), kAngleWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Zm1"), kLensWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Fc1"), kLensWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Zm2"), kLensWidth) + QLatin1Char(' ') +
           fitRight(QStringLiteral("Fc2"), kLensWidth);
}

}  // namespace halvex
