#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fuzz/receive_harness.h"

using namespace halvex;

// The receive fuzzer's starting inputs and every input it ever found a fault
// with, fed through the whole console as the fuzzer feeds them.
TEST(ReceiveFuzzCases, EveryKeptInputLeavesTheConsoleSound) {
    fuzz::ReceiveHarness harness;
    ASSERT_TRUE(harness.online());
    int replayed = 0;
    for (const char* folder : {"corpus", "regressions"}) {
        const QDir dir(QStringLiteral(HALVEX_FUZZ_CASES "/") + QLatin1String(folder));
        for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
            const QByteArray bytes = file.readAll();
            const QString fault =
                harness.feed(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                             static_cast<std::size_t>(bytes.size()));
            EXPECT_TRUE(fault.isEmpty())
                << folder << "/" << name.toStdString() << ": " << fault.toStdString();
            ++replayed;
        }
    }
    EXPECT_GE(replayed, 40);
}
