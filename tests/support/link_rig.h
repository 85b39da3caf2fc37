#pragma once

#include <QTest>
#include <memory>

#include "protocol/fault_guard.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "tests/support/finish.h"
#include "tests/support/scripted_unit.h"
#include "tests/support/test_port.h"

namespace halvex::testing {

// The link on its own: form state, transmit and receive paths, and a
// scripted unit at the far end of the in-process port.
struct LinkRig {
    FormState state;
    ScriptedUnit unit;
    TestPort port{&unit};
    Link link{state};
    Receiver receiver{state, link};
    QString lastSent;
    QString lastReceived;

    explicit LinkRig(bool startTicking = true) {
        link.setPort(&port);
        receiver.attachPort(&port);
        port.open(QStringLiteral("COM1"), 9600);
        QObject::connect(&link, &Link::frameSent, [this](const QString& s) { lastSent = s; });
        QObject::connect(&receiver, &Receiver::frameReceived,
                         [this](const QString& s) { lastReceived = s; });
        if (startTicking) {
            link.Timer2().start();
        }
    }

    // The sender convention: fill, send; returns once the frame is out.
    void send(const std::vector<Byte>& message) {
        guarded(state, "test sender", [&] {
            for (std::size_t i = 0; i < message.size(); ++i) {
                state.TxBuffer[static_cast<int>(i)] = message[i];
            }
            return link.SendFrame(static_cast<int>(message.size()));
        });
        settle();
    }
};

inline bool waitFor(const std::function<bool()>& done, int timeoutMs = 2000) {
    return QTest::qWaitFor(done, timeoutMs);
}

}  // namespace halvex::testing
