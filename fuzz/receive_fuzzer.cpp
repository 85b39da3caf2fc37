// libFuzzer target for the receive path: bytes from the line in, replies
// assembled, checked and dispatched to every decoder of the console. A crash,
// a sanitizer report or a flag left set afterwards is a finding.

#include <unistd.h>
#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include "fuzz/receive_harness.h"

namespace {
halvex::fuzz::ReceiveHarness* harness = nullptr;
// Our own copy of stderr for findings: bench/fuzz-receive.sh runs with
// -close_fd_mask=2, which silences the status-bar faults every range fault
// prints, and libFuzzer keeps its own copy for its reports.
FILE* findings = stderr;

// Range faults and Qt's own chatter would drown libFuzzer's output.
void quietMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(findings, "%s\n", qPrintable(message));
        std::abort();
    }
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    if (const int copy = dup(STDERR_FILENO); copy >= 0) {
        if (FILE* file = fdopen(copy, "w")) {
            findings = file;
        }
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    static QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    harness = new halvex::fuzz::ReceiveHarness;
    if (!harness->online()) {
        std::fprintf(findings, "receive fuzzer: the console did not come online\n");
        std::abort();
    }
    qInstallMessageHandler(quietMessages);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString fault = harness->feed(data, size);
    if (!fault.isEmpty()) {
        std::fprintf(findings, "receive fuzzer: %s\n", qPrintable(fault));
        std::fflush(findings);
        std::abort();
    }
    return 0;
}
