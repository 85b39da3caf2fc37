#include "commissioning/command_line_runs.h"

#include <algorithm>

#include "commissioning/settings_files.h"
#include "commissioning/unit_reader.h"
#include "commissioning/unit_restore.h"

namespace halvex::commissioning {

namespace {

// `io` outlives the progress.
Progress linesOfProgress(const CommandIo& io) {
    Progress progress;
    progress.report = [&io](const QString& step, int done, int total) {
        // The bar's last report says nothing a line of text would need.
        if (done < total) {
            io.say(QStringLiteral("[%1/%2] %3").arg(done + 1).arg(total).arg(step));
        }
    };
    return progress;
}

// The differences side by side, one row a line, in columns.
void sayDifferences(const CommandIo& io, const std::vector<Difference>& rows) {
    const auto width = [&rows](auto text) {
        std::size_t widest = 0;
        for (const Difference& row : rows) {
            widest = std::max(widest, text(row).size());
        }
        return static_cast<int>(widest) + 2;
    };
    const int label = std::max(width([](const Difference& r) { return r.label; }), 9);
    const int file = std::max(width([](const Difference& r) { return r.inFile; }), 13);
    const int unit = std::max(width([](const Difference& r) { return r.inUnit; }), 13);
    const auto line = [&](const std::string& setting, const std::string& inFile,
                          const std::string& inUnit, const std::string& note) {
        QString text = QStringLiteral("  ") + QString::fromStdString(setting).leftJustified(label) +
                       QString::fromStdString(inFile).leftJustified(file) +
                       QString::fromStdString(inUnit).leftJustified(unit) +
                       (note.empty() ? QString() : QStringLiteral("(%1)").arg(note.c_str()));
        while (text.endsWith(QLatin1Char(' '))) {
            text.chop(1);
        }
        return text;
    };
    io.say(line("setting", "in the file", "in the unit", ""));
    for (const Difference& row : rows) {
        io.say(line(row.label, row.inFile, row.inUnit, row.written ? "" : row.note));
    }
}

int reportOutcome(const CommandIo& io, const RestoreResult& result) {
    if (!result.finished) {
        io.say(result.cancelled ? QStringLiteral("The restore was stopped.") : result.problem);
        return kUnitFailed;
    }
    if (!result.notTaken.empty()) {
        io.say(QStringLiteral("The unit did not take: %1.").arg(rowList(result.notTaken)));
    }
    if (!result.notWritten.empty()) {
        io.say(QStringLiteral("Not written, the factory area is closed (give --factory-code): %1.")
                   .arg(rowList(result.notWritten)));
    }
    if (result.verified()) {
        io.say(QStringLiteral("Read back: the unit holds every value of the file."));
    }
    return result.verified() ? kDone : kUnitFailed;
}

}  // namespace

QCoro::Task<int> saveUnitCommand(Session& session, Byte address, QString path, CommandIo io) {
    AddressScope talkingTo(session.state(), address);
    UnitLine unit(session);
    const UnitRead read = co_await readUnit(unit, linesOfProgress(io));
    if (!read.settings) {
        io.say(read.problem);
        co_return kUnitFailed;
    }
    UnitSettings settings = *read.settings;
    settings.saved = savedNow();
    const QString error = saveSettingsFile(path, settings);
    if (!error.isEmpty()) {
        io.say(error);
        co_return kFileRefused;
    }
    io.say(QStringLiteral("Saved the settings of %1 to %2.")
               .arg(unitDescription(settings.identity), path));
    co_return kDone;
}

int checkSettingsFile(const QString& path, UnitSettings& settings, const CommandIo& io) {
    SettingsFileRead file = loadSettingsFile(path);
    if (!file.settings) {
        io.say(file.problem);
        return kFileRefused;
    }
    settings = std::move(*file.settings);
    io.say(
        QStringLiteral("%1 holds the settings of %2, saved %3.")
            .arg(path, unitDescription(settings.identity), QString::fromStdString(settings.saved)));
    return kDone;
}

QCoro::Task<int> restoreUnitCommand(Session& session, Byte address, UnitSettings file,
                                    RestoreOptions options, CommandIo io) {
    AddressScope talkingTo(session.state(), address);
    UnitLine unit(session);
    const Progress progress = linesOfProgress(io);
    const UnitRead read = co_await readUnit(unit, progress);
    if (!read.settings) {
        io.say(read.problem);
        co_return kUnitFailed;
    }
    const QString refusal = restoreRefusal(file, *read.settings);
    if (!refusal.isEmpty()) {
        io.say(refusal);
        co_return kFileRefused;
    }
    const RestorePlan plan = planRestore(file, *read.settings, options.factoryOpen);
    if (!plan.rows.empty()) {
        io.say(QStringLiteral("%1 differs from the file in %2:")
                   .arg(unitDescription(read.settings->identity), valueCount(plan.rows.size())));
        sayDifferences(io, plan.rows);
    }
    if (plan.writes() == 0) {
        RestoreResult nothing;
        nothing.finished = true;
        for (const Difference& row : plan.rows) {
            if (row.group != nullptr && row.group->factory) {
                nothing.notWritten.push_back(row);
            }
        }
        co_return reportOutcome(io, nothing);
    }
    if (plan.moves()) {
        io.say(movesWarning());
    }
    if (!options.yes &&
        !(io.confirm &&
          io.confirm(
              QStringLiteral("Write %1 values to unit %2?").arg(plan.writes()).arg(address)))) {
        io.say(QStringLiteral("Nothing was written."));
        co_return kUnitFailed;
    }
    const RestoreResult result = co_await restoreUnit(unit, plan, progress);
    co_return reportOutcome(io, result);
}

}  // namespace halvex::commissioning
