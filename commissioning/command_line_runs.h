#pragma once

// Saving and restoring a unit from the command line, with progress and the
// side-by-side differences as lines of text, and an exit status:
//   0  everything was read, or written and verified
//   1  the unit did not answer, did not take a value, or the restore was
//      not confirmed or was stopped
//   3  the settings file cannot be read or written, or is refused (nothing
//      was sent)

#include <QCoro/QCoroTask>
#include <QString>
#include <functional>

#include "commissioning/unit_settings.h"
#include "session/session.h"

namespace halvex::commissioning {

enum ExitStatus { kDone = 0, kUnitFailed = 1, kFileRefused = 3 };

struct CommandIo {
    // One line of progress or outcome (stderr).
    std::function<void(const QString&)> say;
    // Asks the question; true for yes (stdin). Not asked with --yes.
    std::function<bool(const QString&)> confirm;
};

struct RestoreOptions {
    bool yes = false;  // write without asking
    bool factoryOpen = false;
};

// Reads the unit at `address` on the session's open line into `path`. The
// session outlives the run; the event loop runs it.
QCoro::Task<int> saveUnitCommand(Session& session, Byte address, QString path, CommandIo io);

// Reads and checks the settings file `path` before the port is even opened;
// kDone when it may be restored.
int checkSettingsFile(const QString& path, UnitSettings& settings, const CommandIo& io);

// Restores settings read by checkSettingsFile onto the unit at `address`.
QCoro::Task<int> restoreUnitCommand(Session& session, Byte address, UnitSettings file,
                                    RestoreOptions options, CommandIo io);

}  // namespace halvex::commissioning
