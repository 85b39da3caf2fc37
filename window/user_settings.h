#pragma once

#include <QSettings>
#include <memory>

namespace halvex {

// The user's own settings, ~/.config/halvex/halvex.conf (the file that also
// keeps the Port menu's devices): window places and the chosen palette.
inline std::unique_ptr<QSettings> userSettings() {
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("halvex"), QStringLiteral("halvex"));
}

}  // namespace halvex
