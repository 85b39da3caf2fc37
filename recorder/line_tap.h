#pragma once

#include <QObject>

#include "protocol/line_record.h"

namespace halvex {

class Link;
class Session;

// Listens to the session's line: every frame the link writes, every frame
// (and all noise) the receiver reads with its verdict, and the link's events:
// the watchdog expiring, frames dropped, the port closing, and whatever the
// console reports in its status bar (a port lost and back, range faults).
// Each becomes one time-stamped record.
class LineTap : public QObject {
    Q_OBJECT
  public:
    explicit LineTap(Session& session, QObject* parent = nullptr);

    // Microseconds since 1970, the time stamp of a record made now.
    static std::int64_t nowUs();

  signals:
    void recorded(const halvex::recording::LineRecord& record);

  private:
    void recordEvent(const QString& text);

    Link& link_;
};

}  // namespace halvex
