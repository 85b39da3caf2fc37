#include "commissioning/unit_restore.h"

#include <QStringList>
#include <algorithm>
#include <exception>

#include "commissioning/platform_mover.h"
#include "commissioning/unit_reader.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

constexpr int kTourAttempts = 2;

bool written(const Difference& row) {
    return row.written && row.item != Difference::Item::Identity;
}

// A reply of M whose tour field names `tour`.
template <class M>
UnitLine::Fits namingTour(vocab::Field<M> field, int tour) {
    return [field, tour](const std::vector<Byte>& reply) {
        return reply.size() > static_cast<std::size_t>(field.offset) &&
               static_cast<int>(vocab::get(reply, field)) == tour;
    };
}

// Clears the tour and appends its steps. An append is not asked twice (a
// lost reply to one the unit took would add the step again): the whole tour
// is written again instead.
QCoro::Task<bool> writeTour(UnitLine& line, int tour, std::vector<TourStep> steps) {
    namespace v = vocab;
    using Step = v::append_tour_step::Step;
    const auto t = static_cast<std::uint32_t>(tour);
    auto clear = v::blank<v::ClearTour>();
    v::put(clear, v::clear_tour::kTour, t);
    for (int attempt = 0; attempt < kTourAttempts; ++attempt) {
        const auto cleared = co_await line.ask(clear, namingTour(v::tour_cleared::kTour, tour));
        if (!cleared) {
            co_return false;
        }
        bool whole = true;
        for (const TourStep& step : steps) {
            auto append = v::blank<v::AppendTourStep>();
            v::put(append, v::append_tour_step::kTour, t);
            append[Step::kPreset.offset] = step.preset;
            append[Step::kDwell.offset] = step.dwell;
            const auto reply = co_await line.ask(append, namingTour(v::tour_step::kTour, tour), 1);
            if (!reply) {
                whole = false;
                break;
            }
            if (reply->size() > static_cast<std::size_t>(v::tour_step::kStep.offset) &&
                v::get(*reply, v::tour_step::kStep) == v::tour_step::kNoStep) {
                co_return true;  // the tour is full: the read-back names it
            }
        }
        if (whole) {
            co_return true;
        }
    }
    co_return false;
}

// A preset's lens positions go back to none only by clearing every preset.
bool presetsNeedClearing(const UnitSettings& file, const UnitSettings& unit) {
    for (std::size_t n = 0; n < file.presets.size(); ++n) {
        if (!file.presets[n].hasLens() && unit.presets[n].hasLens()) {
            return true;
        }
    }
    return false;
}

// Lives in the frame of restoreUnit(), which awaits each of its steps.
class Restorer {
  public:
    Restorer(UnitLine& line, const RestorePlan& plan, const Progress& progress)
        : line_(line),
          plan_(plan),
          progress_(progress),
          current_(plan.unit),
          movesAllowed_(plan.moves()) {
        std::vector<const SettingGroup*> groups;
        for (const Difference& row : plan.rows) {
            if (!written(row)) {
                continue;
            }
            // One command writes all the values of a group.
            if (row.group == nullptr ||
                std::find(groups.begin(), groups.end(), row.group) == groups.end()) {
                ++total_;
            }
            groups.push_back(row.group);
        }
    }

    QCoro::Task<RestoreResult> run() {
        // Each part only when the one before went through.
        const bool table = co_await writeTable();
        if (!table) {
            co_return kept();
        }
        const bool angles = co_await writeAngles();
        if (!angles) {
            co_return kept();
        }
        const bool tours = co_await writeTours();
        if (!tours) {
            co_return kept();
        }
        co_await readBack();
        co_return kept();
    }

  private:
    // A copy: see protocol/wait.h on `co_return member_`.
    RestoreResult kept() const { return result_; }

    bool step(const QString& what) {
        if (progress_.stopped()) {
            result_.cancelled = true;
            return false;
        }
        progress_.show(QStringLiteral("Writing %1").arg(what), std::min(done_++, total_), total_);
        return true;
    }

    bool noReply(const QString& what) {
        result_.problem =
            QStringLiteral("No reply from the unit to %1; the restore stopped there.").arg(what);
        return false;
    }

    bool differs(const SettingGroup& group) const {
        return std::any_of(plan_.rows.begin(), plan_.rows.end(), [&group](const Difference& row) {
            return row.group == &group && written(row);
        });
    }

    QCoro::Task<bool> writeTable() {
        for (const SettingGroup& group : settingGroups()) {
            if (group.kind != Kind::Command || !differs(group)) {
                continue;
            }
            const QString title = QString::fromStdString(group.title).toLower();
            if (!step(title)) {
                co_return false;
            }
            const auto reply =
                co_await line_.ask(writeMessage(group, plan_.file.groupValues(group)));
            if (!reply) {
                co_return noReply(title);
            }
            offsetsWritten_ = offsetsWritten_ || group.section == "offsets";
        }
        co_return true;
    }

    // The soft limits and presets, which read in terms of the offsets.
    QCoro::Task<bool> writeAngles() {
        if (offsetsWritten_) {
            const bool read = co_await readAngles(line_, current_);
            if (!read) {
                co_return noReply(QStringLiteral("the soft limits and presets"));
            }
        }
        PlatformMover mover(line_, progress_);
        bool written = false;
        std::exception_ptr fault;
        try {
            written = co_await writeSoftLimits(mover);
            if (written) {
                written = co_await writePresets(mover);
            }
            if (written) {
                co_await mover.returnToStart();
            }
        } catch (...) {
            fault = std::current_exception();
        }
        // However the moves ended, a fault's way too, nothing is left moving
        // and the override goes.
        co_await mover.finish();
        if (fault) {
            std::rethrow_exception(fault);
        }
        if (!written) {
            co_return false;
        }
        if (progress_.stopped()) {
            result_.cancelled = true;
            co_return false;
        }
        co_return true;
    }

    QCoro::Task<bool> writeSoftLimits(PlatformMover& mover) {
        for (const SettingGroup& group : settingGroups()) {
            if (group.kind != Kind::SoftLimit) {
                continue;
            }
            const std::int32_t wanted = plan_.file.groupValues(group).front();
            if (current_.groupValues(group).front() == wanted) {
                continue;
            }
            if (!step(QString::fromStdString(group.title))) {
                co_return false;
            }
            const bool pan = group.limitIndex < 2;
            bool there = false;
            if (movesAllowed_) {
                there = co_await mover.moveTo(pan ? wanted : PlatformMover::kHold,
                                              pan ? PlatformMover::kHold : wanted);
            }
            if (progress_.stopped()) {
                result_.cancelled = true;
                co_return false;
            }
            auto set = vocab::blank<vocab::SoftLimit>();
            vocab::put(set, vocab::soft_limit::kLimitByte,
                       static_cast<std::uint32_t>(group.limitIndex));
            if (there) {
                const auto reply = co_await line_.ask(set);
                if (!reply) {
                    co_return noReply(QString::fromStdString(group.title));
                }
            }
        }
        co_return true;
    }

    QCoro::Task<bool> writePresets(PlatformMover& mover) {
        auto& presets = current_.presets;
        // Lens bytes go back to none only with every preset: clear them all,
        // then write every preset that is not empty.
        if (presetsNeedClearing(plan_.file, current_)) {
            if (!step(QStringLiteral("cleared presets"))) {
                co_return false;
            }
            const auto reply = co_await line_.ask(vocab::blank<vocab::ClearAllPresets>());
            if (!reply) {
                co_return noReply(QStringLiteral("clearing the presets"));
            }
            presets.fill(StoredPreset{});
        }
        for (int n = 0; n < kPresets; ++n) {
            const StoredPreset& wanted = plan_.file.presets[static_cast<std::size_t>(n)];
            const StoredPreset& found = presets[static_cast<std::size_t>(n)];
            if (wanted == found) {
                continue;
            }
            if (!step(QStringLiteral("preset %1").arg(n))) {
                co_return false;
            }
            const auto number = static_cast<std::uint32_t>(n);
            if (wanted.pan != found.pan || wanted.tilt != found.tilt) {
                namespace store = vocab::store_preset;
                auto message = vocab::blank<vocab::StorePreset>();
                vocab::put(message, store::kPreset, number);
                vocab::put(message, store::kPan, static_cast<std::uint32_t>(wanted.pan));
                vocab::put(message, store::kTilt, static_cast<std::uint32_t>(wanted.tilt));
                const auto reply = co_await line_.ask(message);
                if (!reply) {
                    co_return noReply(QStringLiteral("preset %1").arg(n));
                }
            }
            if (wanted.hasLens() && wanted.lens != found.lens) {
                bool there = false;
                if (movesAllowed_) {
                    there = co_await mover.moveLensesTo(wanted.lens);
                }
                if (progress_.stopped()) {
                    result_.cancelled = true;
                    co_return false;
                }
                auto lenses = vocab::blank<vocab::AddLensPositions>();
                vocab::put(lenses, vocab::add_lens_positions::kPreset, number);
                if (there) {
                    const auto reply = co_await line_.ask(lenses);
                    if (!reply) {
                        co_return noReply(QStringLiteral("preset %1").arg(n));
                    }
                }
            }
        }
        co_return true;
    }

    QCoro::Task<bool> writeTours() {
        for (int t = 0; t < kTours; ++t) {
            const auto& wanted = plan_.file.tours[static_cast<std::size_t>(t)];
            if (wanted == current_.tours[static_cast<std::size_t>(t)]) {
                continue;
            }
            if (!step(QStringLiteral("tour %1").arg(t + 1))) {
                co_return false;
            }
            const bool written = co_await writeTour(line_, t, wanted);
            if (!written) {
                co_return noReply(QStringLiteral("tour %1").arg(t + 1));
            }
        }
        co_return true;
    }

    QCoro::Task<> readBack() {
        const UnitRead after = co_await readUnit(line_, progress_, QStringLiteral("Reading back"));
        if (!after.settings) {
            result_.cancelled = after.cancelled;
            result_.problem = after.problem;
            co_return;
        }
        result_.finished = true;
        for (const Difference& row : differences(plan_.file, *after.settings, plan_.factoryOpen)) {
            if (written(row)) {
                result_.notTaken.push_back(row);
            } else if (row.item != Difference::Item::Identity && row.group != nullptr &&
                       row.group->kind != Kind::Reference) {
                result_.notWritten.push_back(row);
            }
        }
    }

    UnitLine& line_;
    const RestorePlan& plan_;
    const Progress& progress_;
    UnitSettings current_;
    RestoreResult result_;
    // Only when the operator was told that things will move.
    const bool movesAllowed_;
    bool offsetsWritten_ = false;
    int done_ = 0;
    int total_ = 0;
};

}  // namespace

int RestorePlan::writes() const {
    return static_cast<int>(std::count_if(rows.begin(), rows.end(), written));
}

bool RestorePlan::moves() const {
    // Clearing the presets takes every preset's lens positions with it.
    if (presetsNeedClearing(file, unit) &&
        std::any_of(file.presets.begin(), file.presets.end(),
                    [](const StoredPreset& preset) { return preset.hasLens(); })) {
        return true;
    }
    return std::any_of(rows.begin(), rows.end(), [this](const Difference& row) {
        if (!written(row)) {
            return false;
        }
        // New offsets change how the soft limits read: any of them may then
        // have to be set again.
        if (row.group != nullptr) {
            return row.group->kind == Kind::SoftLimit || row.group->section == "offsets";
        }
        const auto n = static_cast<std::size_t>(row.index);
        return row.item == Difference::Item::Preset && file.presets[n].hasLens() &&
               file.presets[n].lens != unit.presets[n].lens;
    });
}

RestorePlan planRestore(const UnitSettings& file, const UnitSettings& unit, bool factoryOpen) {
    RestorePlan plan{file, unit, factoryOpen, differences(file, unit, factoryOpen)};
    return plan;
}

QString movesWarning() {
    return QStringLiteral(
        "The platform and the lenses will move: a soft limit is set where the platform stands, "
        "so the platform drives to each new limit with the soft limits overridden, and the "
        "lenses drive to each preset's zoom and focus positions. Both then return to where "
        "they were.");
}

QString valueCount(std::size_t count) {
    return count == 1 ? QStringLiteral("1 value") : QStringLiteral("%1 values").arg(count);
}

QString rowList(const std::vector<Difference>& rows) {
    QStringList items;
    for (const Difference& row : rows) {
        items << QStringLiteral("%1 (file %2, unit %3)")
                     .arg(QString::fromStdString(row.label), QString::fromStdString(row.inFile),
                          QString::fromStdString(row.inUnit));
    }
    return items.join(QStringLiteral("; "));
}

QString restoreRefusal(const UnitSettings& file, const UnitSettings& unit) {
    if (file.identity.controllerType != unit.identity.controllerType) {
        return QStringLiteral(
                   "The file was saved from a unit of controller type %1, and this unit is of "
                   "type %2; their settings do not match.")
            .arg(file.identity.controllerType)
            .arg(unit.identity.controllerType);
    }
    return {};
}

QCoro::Task<RestoreResult> restoreUnit(UnitLine& line, RestorePlan plan, Progress progress) {
    // The plan and progress live in this frame, and the restorer with them.
    Restorer restorer(line, plan, progress);
    co_return co_await restorer.run();
}

}  // namespace halvex::commissioning
