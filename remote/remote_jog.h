#pragma once

#include <QObject>
#include <QTimer>
#include <optional>

#include "session/jog_sources.h"
#include "session/outcome.h"

namespace halvex {

class Session;

// The jog of one remote-control bridge: what its client asks for, given way
// to the operator, and put at rest when the client stops refreshing it, so
// that a client that hangs or loses its network never leaves the platform
// moving.
class RemoteJog : public QObject {
    Q_OBJECT
  public:
    // `refreshMs` 0: the jog runs until the client stops it or goes away.
    RemoteJog(Session& session, JogSource source, int refreshMs, QObject* parent = nullptr);

    // Sets the jog; a demand at rest stops it. Refused offline, while the
    // tables are read again, while the operator jogs, or when this source was
    // stopped by the operator's jog and has not yet been brought to rest.
    std::optional<Refusal> drive(const JogDemand& demand);
    // At rest now: the client's stop, or its connection gone.
    void stop();

    void setRefreshMs(int refreshMs) { refreshMs_ = refreshMs; }
    int refreshMs() const { return refreshMs_; }
    bool driving() const { return moving_; }

  signals:
    // The client went silent for longer than its refresh time.
    void timedOut();

  private:
    Session& session_;
    JogSource source_;
    int refreshMs_;
    QTimer silence_;
    bool moving_ = false;
};

}  // namespace halvex
