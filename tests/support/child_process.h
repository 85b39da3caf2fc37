#pragma once

#include <sys/prctl.h>
#include <QProcess>
#include <csignal>

// A program a test starts goes when the test program does, also when the
// test program dies part-way and cannot stop it.
inline void endWithParent(QProcess& process) {
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

// Stopped as by Ctrl-C, and killed if that does not end it.
inline void stopChild(QProcess& process) {
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    if (!process.waitForFinished(3000)) {
        process.kill();
        process.waitForFinished(3000);
    }
}
