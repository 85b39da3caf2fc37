#include "commissioning/unit_reader.h"

#include "console/preset_table.h"

namespace halvex::commissioning {

namespace {

constexpr std::size_t kReportBytes = 13;  // pan, tilt, status A, B, C, four lens bytes
constexpr std::size_t kFirmwareBytes = 5;
constexpr std::size_t kPresetBytes = 11;
constexpr Byte kControllerTypeBits = 0x03;

// A reply of at least `payload` bytes after its code.
UnitLine::Fits atLeast(std::size_t payload) {
    return [payload](const std::vector<Byte>& reply) { return reply.size() > payload; };
}

// Such a reply whose byte 1 (and byte 2) name what was asked.
UnitLine::Fits naming(std::size_t payload, int first, int second = -1) {
    return [payload, first, second](const std::vector<Byte>& reply) {
        return reply.size() > payload && reply[1] == first && (second < 0 || reply[2] == second);
    };
}

QString noReply(const QString& what) {
    return QStringLiteral("No reply from the unit to the request for %1.").arg(what);
}

std::optional<StoredPreset> readPreset(UnitLine& line, int number) {
    const auto reply = line.ask({0x40, static_cast<Byte>(number)}, naming(kPresetBytes, number));
    if (!reply) {
        return std::nullopt;
    }
    // The preset reply's layout is the console's own, shared with the Presets page.
    ByteTable rx;
    for (std::size_t i = 0; i < reply->size() && i <= kPresetBytes; ++i) {
        rx[static_cast<int>(i)] = (*reply)[i];
    }
    const PresetRecord record = readPresetRecord(rx);
    return StoredPreset{
        record.pan, record.tilt, {record.zoom1, record.focus1, record.zoom2, record.focus2}};
}

// Nothing, or why the tour could not be read.
QString readTour(UnitLine& line, int tour, std::vector<TourStep>& steps) {
    const Byte t = static_cast<Byte>(tour);
    const auto count = line.ask({0x56, t}, naming(2, tour));
    if (!count) {
        return noReply(QStringLiteral("the step count of tour %1").arg(tour + 1));
    }
    const int size = (*count)[2];
    if (size > kMostTourSteps) {
        return QStringLiteral("Tour %1 is damaged: the unit reports %2 steps.")
            .arg(tour + 1)
            .arg(size);
    }
    steps.clear();
    for (int s = 0; s < size; ++s) {
        const auto step = line.ask({0x51, t, static_cast<Byte>(s)}, naming(4, tour, s));
        if (!step) {
            return noReply(QStringLiteral("step %1 of tour %2").arg(s + 1).arg(tour + 1));
        }
        steps.push_back(TourStep{(*step)[3], (*step)[4]});
    }
    return {};
}

bool readGroup(UnitLine& line, const SettingGroup& group, UnitSettings& settings) {
    const auto reply = line.ask(
        group.request, [&group](const std::vector<Byte>& r) { return replyFits(group, r); });
    if (!reply) {
        return false;
    }
    std::vector<std::int32_t> values;
    for (const SettingField& field : group.fields) {
        values.push_back(readField(field, *reply));
    }
    settings.setGroupValues(group, values);
    return true;
}

}  // namespace

std::optional<UnitIdentity> readIdentity(UnitLine& line) {
    const auto report = line.ask(line.jogMessage(false), atLeast(kReportBytes));
    const auto firmware = line.ask({0x9A}, atLeast(kFirmwareBytes));
    if (!report || !firmware) {
        return std::nullopt;
    }
    UnitIdentity identity;
    identity.address = line.unitId();
    identity.controllerType = (*report)[7] & kControllerTypeBits;
    identity.firmwareMajor = (*firmware)[1];
    identity.firmwareMinor = (*firmware)[2];
    identity.clockDay = (*firmware)[3];
    identity.clockMonth = (*firmware)[4];
    identity.clockYear = 2000 + (*firmware)[5];
    return identity;
}

bool readAngles(UnitLine& line, UnitSettings& settings) {
    for (const SettingGroup& group : settingGroups()) {
        if (group.kind == Kind::SoftLimit && !readGroup(line, group, settings)) {
            return false;
        }
    }
    for (int n = 0; n < kPresets; ++n) {
        const auto preset = readPreset(line, n);
        if (!preset) {
            return false;
        }
        settings.presets[static_cast<std::size_t>(n)] = *preset;
    }
    return true;
}

UnitRead readUnit(UnitLine& line, const Progress& progress, const QString& doing) {
    UnitRead result;
    UnitSettings settings;
    std::vector<const SettingGroup*> groups;
    const auto identity = readIdentity(line);
    if (!identity) {
        result.problem = noReply(QStringLiteral("its controller type and firmware revision"));
        return result;
    }
    settings.identity = *identity;
    for (const SettingGroup& group : settingGroups()) {
        if (appliesTo(group, identity->controllerType)) {
            groups.push_back(&group);
        }
    }

    const int total = static_cast<int>(groups.size()) + kPresets + kTours;
    int done = 0;
    for (const SettingGroup* group : groups) {
        if (progress.stopped()) {
            result.cancelled = true;
            return result;
        }
        const QString what = QString::fromStdString(group->title).toLower();
        progress.show(QStringLiteral("%1 %2").arg(doing, what), done++, total);
        if (!readGroup(line, *group, settings)) {
            result.problem = noReply(what);
            return result;
        }
    }
    for (int n = 0; n < kPresets; ++n) {
        if (progress.stopped()) {
            result.cancelled = true;
            return result;
        }
        progress.show(QStringLiteral("%1 preset %2").arg(doing).arg(n), done++, total);
        const auto preset = readPreset(line, n);
        if (!preset) {
            result.problem = noReply(QStringLiteral("preset %1").arg(n));
            return result;
        }
        settings.presets[static_cast<std::size_t>(n)] = *preset;
    }
    for (int t = kTours - 1; t >= 0; --t) {
        if (progress.stopped()) {
            result.cancelled = true;
            return result;
        }
        progress.show(QStringLiteral("%1 tour %2").arg(doing).arg(t + 1), done++, total);
        result.problem = readTour(line, t, settings.tours[static_cast<std::size_t>(t)]);
        if (!result.problem.isEmpty()) {
            return result;
        }
    }
    progress.show(QStringLiteral("Done"), total, total);
    result.settings = std::move(settings);
    return result;
}

}  // namespace halvex::commissioning
