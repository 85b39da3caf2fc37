#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "protocol/form_state.h"
#include "session/jog_sources.h"

namespace halvex {

// The dead-man for every jog source. The keyboard and controllers may steer
// only while the console is online, the Pan/Tilt page is shown, the main
// window is the active window and no modal box is open. The moment one of
// these stops being true, every source is stopped (the next jog message
// carries speed 0), and a stick or key still held must come back to rest
// before it steers again.
class JogGate : public QObject {
    Q_OBJECT
  public:
    JogGate(JogSources& sources, const JogState& jog, FormState& state, QWidget& window,
            QObject* parent = nullptr);

    // Whether steering is allowed now; stops every source when it has just ended.
    bool check();
    bool open() const { return open_; }

  private:
    bool allowedNow() const;

    JogSources& sources_;
    const JogState& jog_;
    FormState& state_;
    QPointer<QWidget> window_;
    bool open_ = false;
};

}  // namespace halvex
