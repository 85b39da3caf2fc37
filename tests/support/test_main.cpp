#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <cstdio>

#include "tools/picture_fonts.h"

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Kept pictures and measured captions hold whatever fonts the machine has.
    if (const QString why = halvex::pinPictureFonts(); !why.isEmpty()) {
        std::fprintf(stderr, "cannot choose the tests' fonts: %s\n", qPrintable(why));
        return 1;
    }
    QApplication app(argc, argv);
    // The user's own settings (the Port menu's devices) are never touched by
    // a test: they go to a folder that is gone when the tests end.
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    // Nor the user's data (the presets' pictures).
    qputenv("XDG_DATA_HOME", QFile::encodeName(settings.path() + QStringLiteral("/data")));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
