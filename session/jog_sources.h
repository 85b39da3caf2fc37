#pragma once

#include <QObject>
#include <array>
#include <functional>
#include <optional>

#include "session/jog_state.h"

namespace halvex {

// Who is steering: the jog box with the mouse, the keyboard, or a game
// controller or joystick at the console; or a program or a desk keyboard
// through one of the remote-control bridges.
enum class JogSource { Box, Keyboard, Controller, Onvif, Visca, PelcoD };
constexpr int kJogSourceCount = 6;

// Whether the operator at the console steers with it. The operator's jog
// takes precedence over every remote source.
constexpr bool isOperatorSource(JogSource source) {
    return source == JogSource::Box || source == JogSource::Keyboard ||
           source == JogSource::Controller;
}

// One axis as a source wants it: a speed and, when the source points one
// way, the direction (an axis at rest keeps the direction the unit last had).
struct AxisDemand {
    Byte speed = 0;
    std::optional<bool> direction;

    bool operator==(const AxisDemand&) const = default;
};

// What one source asks the platform to do right now.
struct JogDemand {
    AxisDemand pan;   // direction true: clockwise (right)
    AxisDemand tilt;  // direction true: up
    // Zoom 1, focus 1, zoom 2, focus 2, as lens jog bytes; only the keyboard
    // and controllers set them here (the lens boxes write them directly).
    std::array<Byte, 4> lens{};

    bool moving() const;
    bool operator==(const JogDemand&) const = default;
};

// A lens jog byte for a signed speed -127..127: the speed doubled, plus one
// for the positive way (zoom in, focus far), as the lens boxes send it.
Byte lensJogByte(int speed);

// The one jog state, shared by every source. Each source tells what it wants;
// the source that started moving last steers, and when it lets go the state
// goes back to whichever other source is still held, or to rest. A stop
// (the dead-man) puts every source at rest, and a source that was moving must
// come back to rest before it steers again, so that a stick held through a
// lost window or a modal box does not start the platform by itself later.
class JogSources : public QObject {
    Q_OBJECT
  public:
    explicit JogSources(JogState& jog, QObject* parent = nullptr);

    // False when the demand is not taken: a source stopped while moving
    // must come back to rest first, and a remote source may not start while
    // the operator jogs. An operator's source that starts moving stops every
    // remote one, which then must come back to rest too.
    bool apply(JogSource source, const JogDemand& demand);
    void release(JogSource source) { apply(source, {}); }

    // The dead-man: every source at rest and the speeds at 0 now.
    void stopAll();

    // Which source steers, none when every source is at rest.
    std::optional<JogSource> owner() const { return owner_; }
    bool operatorJogging() const { return owner_ && isOperatorSource(*owner_); }

    // Runs right before each jog message is built, so that the sources that
    // are read on a timer are read again then (at most one tick of latency).
    void setRefresh(std::function<void()> refresh) { refresh_ = std::move(refresh); }
    void refresh() {
        if (refresh_) {
            refresh_();
        }
    }

  signals:
    // Steering began (a source) or ended (none).
    void ownerChanged(std::optional<halvex::JogSource> owner);
    // The dead-man stopped every source; held keys and buttons are forgotten.
    void stopped();

  private:
    struct Slot {
        JogDemand demand;
        bool active = false;
        bool mustRest = false;  // stopped while moving: ignored until at rest
        unsigned startedAt = 0;
    };
    Slot& slot(JogSource source) { return slots_[static_cast<std::size_t>(source)]; }
    void chooseOwner();
    void stopRemoteSources();
    void write(const JogDemand& demand);
    void setOwner(std::optional<JogSource> owner);

    JogState& jog_;
    std::array<Slot, kJogSourceCount> slots_{};
    std::optional<JogSource> owner_;
    unsigned starts_ = 0;
    bool lensWritten_ = false;
    std::function<void()> refresh_;
};

}  // namespace halvex
