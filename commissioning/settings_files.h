#pragma once

#include <QString>
#include <optional>

#include "commissioning/unit_settings.h"

namespace halvex::commissioning {

struct SettingsFileRead {
    std::optional<UnitSettings> settings;
    // When refused: a sentence naming the file and the problem.
    QString problem;
};

// Reads and checks a unit settings file.
SettingsFileRead loadSettingsFile(const QString& path);

// Writes the settings through a temporary file, so a failure never leaves
// half a file. Empty when written, else a sentence naming the file.
QString saveSettingsFile(const QString& path, const UnitSettings& settings);

// The local date and time as the file's "saved" line gives it.
std::string savedNow();

// "unit 7 (controller type 0, firmware 2.10)"
QString unitDescription(const UnitIdentity& identity);

}  // namespace halvex::commissioning
