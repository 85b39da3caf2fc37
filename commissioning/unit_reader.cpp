#include "commissioning/unit_reader.h"

#include <optional>

#include "protocol/vocabulary.h"
#include "session/preset_table.h"

namespace halvex::commissioning {

namespace {

// A reply at least as long as `length`.
UnitLine::Fits atLeast(int length) {
    return [length](const std::vector<Byte>& reply) {
        return reply.size() >= static_cast<std::size_t>(length);
    };
}

// A whole reply of M whose `first` field (and `second`) name what was asked.
template <class M>
UnitLine::Fits naming(vocab::Field<M> first, int asked, vocab::Field<M> second = {},
                      std::optional<int> secondAsked = std::nullopt) {
    return [=](const std::vector<Byte>& reply) {
        return reply.size() >= static_cast<std::size_t>(M::kLength) &&
               static_cast<int>(vocab::get(reply, first)) == asked &&
               (!secondAsked || static_cast<int>(vocab::get(reply, second)) == *secondAsked);
    };
}

QString noReply(const QString& what) {
    return QStringLiteral("No reply from the unit to the request for %1.").arg(what);
}

QCoro::Task<std::optional<StoredPreset>> readPreset(UnitLine& line, int number) {
    namespace v = vocab;
    auto request = v::blank<v::PresetRequest>();
    v::put(request, v::preset_request::kPreset, static_cast<std::uint32_t>(number));
    const auto reply = co_await line.ask(request, naming(v::preset_record::kPreset, number));
    if (!reply) {
        co_return std::nullopt;
    }
    // The preset reply's layout is the console's own, shared with the Presets
    // page; naming() took only a whole record.
    ByteTable rx;
    for (std::size_t i = 0; i < v::PresetRecord::kLength; ++i) {
        rx[static_cast<int>(i)] = (*reply)[i];
    }
    const PresetRecord record = readPresetRecord(rx);
    co_return StoredPreset{
        record.pan, record.tilt, {record.zoom1, record.focus1, record.zoom2, record.focus2}};
}

// Nothing, or why the tour could not be read. `steps` outlives the read.
QCoro::Task<QString> readTour(UnitLine& line, int tour, std::vector<TourStep>& steps) {
    namespace v = vocab;
    auto countRequest = v::blank<v::TourStepCountRequest>();
    v::put(countRequest, v::tour_step_count_request::kTour, static_cast<std::uint32_t>(tour));
    const auto count = co_await line.ask(countRequest, naming(v::tour_step_count::kTour, tour));
    if (!count) {
        co_return noReply(QStringLiteral("the step count of tour %1").arg(tour + 1));
    }
    const int size = static_cast<int>(v::get(*count, v::tour_step_count::kSteps));
    if (size > kMostTourSteps) {
        co_return QStringLiteral("Tour %1 is damaged: the unit reports %2 steps.")
            .arg(tour + 1)
            .arg(size);
    }
    steps.clear();
    for (int s = 0; s < size; ++s) {
        auto request = v::blank<v::TourStepRequest>();
        v::put(request, v::tour_step_request::kTour, static_cast<std::uint32_t>(tour));
        v::put(request, v::tour_step_request::kStep, static_cast<std::uint32_t>(s));
        const auto step =
            co_await line.ask(request, naming(v::tour_step::kTour, tour, v::tour_step::kStep, s));
        if (!step) {
            co_return noReply(QStringLiteral("step %1 of tour %2").arg(s + 1).arg(tour + 1));
        }
        using Fields = TourStep::Fields;
        steps.push_back(TourStep{(*step)[Fields::kPreset.offset], (*step)[Fields::kDwell.offset]});
    }
    co_return QString();
}

// `group` is one of the table's; `settings` outlives the read.
QCoro::Task<bool> readGroup(UnitLine& line, const SettingGroup& group, UnitSettings& settings) {
    const auto reply = co_await line.ask(
        group.request, [&group](const std::vector<Byte>& r) { return replyFits(group, r); });
    if (!reply) {
        co_return false;
    }
    std::vector<std::int32_t> values;
    for (const SettingField& field : group.fields) {
        values.push_back(readField(field, *reply));
    }
    settings.setGroupValues(group, values);
    co_return true;
}

}  // namespace

QCoro::Task<std::optional<UnitIdentity>> readIdentity(UnitLine& line) {
    namespace v = vocab;
    namespace fw = v::firmware;
    const auto report =
        co_await line.ask(line.jogMessage(false), atLeast(v::PositionReport::kLength));
    const auto firmware =
        co_await line.ask(v::blank<v::FirmwareRequest>(), atLeast(v::Firmware::kLength));
    if (!report || !firmware) {
        co_return std::nullopt;
    }
    const auto of = [&firmware](v::Field<v::Firmware> field) {
        return static_cast<int>(v::get(*firmware, field));
    };
    UnitIdentity identity;
    identity.address = line.unitId();
    identity.controllerType = static_cast<int>(v::get(*report, v::report::kControllerType));
    identity.firmwareMajor = of(fw::kMajor);
    identity.firmwareMinor = of(fw::kMinor);
    identity.clockDay = of(fw::kDay);
    identity.clockMonth = of(fw::kMonth);
    identity.clockYear = fw::kYearBias + of(fw::kYear);
    co_return identity;
}

QCoro::Task<bool> readAngles(UnitLine& line, UnitSettings& settings) {
    for (const SettingGroup& group : settingGroups()) {
        if (group.kind != Kind::SoftLimit) {
            continue;
        }
        const bool read = co_await readGroup(line, group, settings);
        if (!read) {
            co_return false;
        }
    }
    for (int n = 0; n < kPresets; ++n) {
        const auto preset = co_await readPreset(line, n);
        if (!preset) {
            co_return false;
        }
        settings.presets[static_cast<std::size_t>(n)] = *preset;
    }
    co_return true;
}

QCoro::Task<UnitRead> readUnit(UnitLine& line, Progress progress, QString doing) {
    UnitRead result;
    UnitSettings settings;
    std::vector<const SettingGroup*> groups;
    const auto identity = co_await readIdentity(line);
    if (!identity) {
        result.problem = noReply(QStringLiteral("its controller type and firmware revision"));
        co_return result;
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
            co_return result;
        }
        const QString what = QString::fromStdString(group->title).toLower();
        progress.show(QStringLiteral("%1 %2").arg(doing, what), done++, total);
        const bool read = co_await readGroup(line, *group, settings);
        if (!read) {
            result.problem = noReply(what);
            co_return result;
        }
    }
    for (int n = 0; n < kPresets; ++n) {
        if (progress.stopped()) {
            result.cancelled = true;
            co_return result;
        }
        progress.show(QStringLiteral("%1 preset %2").arg(doing).arg(n), done++, total);
        const auto preset = co_await readPreset(line, n);
        if (!preset) {
            result.problem = noReply(QStringLiteral("preset %1").arg(n));
            co_return result;
        }
        settings.presets[static_cast<std::size_t>(n)] = *preset;
    }
    for (int t = kTours - 1; t >= 0; --t) {
        if (progress.stopped()) {
            result.cancelled = true;
            co_return result;
        }
        progress.show(QStringLiteral("%1 tour %2").arg(doing).arg(t + 1), done++, total);
        result.problem = co_await readTour(line, t, settings.tours[static_cast<std::size_t>(t)]);
        if (!result.problem.isEmpty()) {
            co_return result;
        }
    }
    progress.show(QStringLiteral("Done"), total, total);
    result.settings = std::move(settings);
    co_return result;
}

}  // namespace halvex::commissioning
