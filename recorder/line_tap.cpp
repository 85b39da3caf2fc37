#include "recorder/line_tap.h"

#include <chrono>

#include "protocol/capture_line.h"
#include "protocol/protocol_table.h"
#include "session/session.h"

namespace halvex {

using recording::LineKind;
using recording::LineRecord;
using recording::Verdict;

namespace {
// "36 (move to home)": a command by its code and its name in the table.
QString commandText(const FrameRecord& frame) {
    if (frame.message.empty()) {
        return QStringLiteral("A frame");
    }
    // The message ends in its LRC.
    const std::vector<Byte> message(frame.message.begin(), frame.message.end() - 1);
    const table::Layout* layout = table::layoutFor(table::Direction::ToUnit, message);
    return QStringLiteral("%1 (%2)").arg(
        hexText(frame.message.front()),
        layout != nullptr ? QString::fromStdString(layout->name) : QStringLiteral("unknown code"));
}
}  // namespace

LineTap::LineTap(Session& session, QObject* parent) : QObject(parent), link_(session.link()) {
    Link& link = session.link();
    connect(&link, &Link::frameWritten, this,
            [this](const FrameTicket&, const std::vector<Byte>& wire) {
                emit recorded(LineRecord{nowUs(), LineKind::Sent, Verdict::Good, wire});
            });
    connect(&session.receiver(), &Receiver::frameRead, this,
            [this](const std::vector<Byte>& wire, Verdict verdict) {
                emit recorded(LineRecord{nowUs(), LineKind::Received, verdict, wire});
            });
    connect(&link, &Link::frameDropped, this, [this](const FrameTicket& frame, const QString& why) {
        recordEvent(QStringLiteral("%1 not sent: %2").arg(commandText(*frame), why));
    });
    // Connected after the link's own handler, so the watchdog has acted.
    connect(&link.Timer4(), &QTimer::timeout, this, [this] {
        recordEvent(QStringLiteral("Watchdog expired: no reply within %1 ms")
                        .arg(link_.Timer4().interval()));
    });
    connect(&session.state(), &FormState::faultReported, this, &LineTap::recordEvent);
    if (link.port() != nullptr) {
        connect(link.port(), &SerialPort::closed, this,
                [this] { recordEvent(QStringLiteral("Port closed")); });
    }
}

std::int64_t LineTap::nowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

void LineTap::recordEvent(const QString& text) {
    emit recorded(recording::eventRecord(nowUs(), text.toStdString()));
}

}  // namespace halvex
