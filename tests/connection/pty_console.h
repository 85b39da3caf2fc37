#pragma once

#include <QDir>
#include <QPushButton>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <vector>

#include "connection/connection_sequence.h"
#include "console/messages.h"
#include "window/vornixu.h"

namespace halvex::testing {
// The console on a real QSerialPort with COM1 mapped to `device`, run from a
// scratch folder. The virtual unit answers at once, so the link may tick
// faster than a real line's 100 ms.
struct PtyConsole {
    explicit PtyConsole(const QString& device, int tickMs = 25) : previous(QDir::currentPath()) {
        QDir::setCurrent(directory.path());
        qputenv("HALVEX_COM1", device.toLocal8Bit());
        window = std::make_unique<VornixU>(
            nullptr,
            [this](QWidget*, const Message& message) {
                shown.push_back(message);
                return true;
            },
            tickMs);
        QObject::connect(&window->state(), &FormState::faultReported,
                         [this](const QString& message) { faults << message; });
        // The unit comes back at once: no need to wait a second between looks.
        window->connection().unitConnection().setReconnectInterval(200);
        window->Form_Load();
        window->show();
    }
    ~PtyConsole() {
        window.reset();
        qunsetenv("HALVEX_COM1");
        QDir::setCurrent(previous);
    }
    bool titleEnds(const char* suffix) const {
        return window->windowTitle().endsWith(QString::fromLatin1(suffix));
    }
    bool start(int timeoutMs = 30000) {
        window->findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        return QTest::qWaitFor([this] { return titleEnds(" Online"); }, timeoutMs);
    }

    QTemporaryDir directory;
    QString previous;
    std::vector<Message> shown;
    QStringList faults;
    std::unique_ptr<VornixU> window;
};

}  // namespace halvex::testing
