#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fuzz/recording_harness.h"

// The recording fuzzer's starting files and every file it ever found a
// fault with, through the same checks the fuzzer makes.
TEST(RecordingFuzzCases, EveryKeptFileReadsSoundly) {
    int checked = 0;
    for (const char* folder : {"recording-corpus", "recording-regressions"}) {
        const QDir dir(QStringLiteral(HALVEX_FUZZ_CASES "/") + QLatin1String(folder));
        for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
            const QByteArray bytes = file.readAll();
            const std::string fault = halvex::fuzz::checkRecording(
                reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                static_cast<std::size_t>(bytes.size()));
            EXPECT_EQ(fault, "") << folder << "/" << name.toStdString();
            ++checked;
        }
    }
    EXPECT_GE(checked, 4);
}
