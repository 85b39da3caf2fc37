#include "session/jog_sources.h"

#include <algorithm>
#include <cstdlib>

#include "protocol/vocabulary_lens_jog.h"

namespace halvex {

bool JogDemand::moving() const {
    if (pan.speed != 0 || tilt.speed != 0) {
        return true;
    }
    for (Byte byte : lens) {
        if (byte != 0) {
            return true;
        }
    }
    return false;
}

Byte lensJogByte(int speed) {
    namespace lens = vocab::lens_jog;
    return lens::byteOf(std::clamp(speed, -lens::kFastest, lens::kFastest));
}

JogSources::JogSources(JogState& jog, QObject* parent) : QObject(parent), jog_(jog) {}

bool JogSources::apply(JogSource source, const JogDemand& demand) {
    Slot& s = slot(source);
    const bool moving = demand.moving();
    if (s.mustRest) {
        if (moving) {
            return false;
        }
        s.mustRest = false;
    }
    if (moving && !isOperatorSource(source) && operatorJogging()) {
        return false;
    }
    if (moving && !s.active) {
        s.startedAt = ++starts_;
        if (isOperatorSource(source)) {
            stopRemoteSources();
        }
    }
    s.active = moving;
    s.demand = demand;
    const std::optional<JogSource> before = owner_;
    chooseOwner();
    if (owner_ == source || (before == source && !owner_)) {
        write(owner_ ? demand : JogDemand{});
    } else if (before == source && owner_) {
        write(slot(*owner_).demand);  // handed back to the source still held
    }
    return true;
}

void JogSources::stopRemoteSources() {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        if (!isOperatorSource(static_cast<JogSource>(i)) && slots_[i].active) {
            slots_[i] = Slot{};
            slots_[i].mustRest = true;
        }
    }
}

void JogSources::chooseOwner() {
    // The source that started moving last holds the platform; starts are
    // numbered from 1.
    const auto start = [](const Slot& s) { return s.active ? s.startedAt : 0u; };
    const auto latest = std::ranges::max_element(slots_, {}, start);
    if (start(*latest) == 0) {
        setOwner(std::nullopt);
    } else {
        setOwner(static_cast<JogSource>(latest - slots_.begin()));
    }
}

void JogSources::stopAll() {
    for (Slot& s : slots_) {
        s.mustRest = s.mustRest || s.active;
        s.active = false;
        s.demand = {};
    }
    write({});
    setOwner(std::nullopt);
    emit stopped();
}

void JogSources::write(const JogDemand& demand) {
    jog_.PanJogSpeed = demand.pan.speed;
    jog_.TiltJogSpeed = demand.tilt.speed;
    if (demand.pan.direction) {
        jog_.PanJogDirection = *demand.pan.direction;
    }
    if (demand.tilt.direction) {
        jog_.TiltJogDirection = *demand.tilt.direction;
    }
    // The lens boxes on the Camera page write the lens bytes themselves; they
    // are only touched here to start a lens jog from a source or to end one.
    const bool lensMoving = demand.lens != std::array<Byte, 4>{};
    if (lensMoving || lensWritten_) {
        jog_.LensJogSpeeds = demand.lens;
    }
    lensWritten_ = lensMoving;
}

void JogSources::setOwner(std::optional<JogSource> owner) {
    if (owner != owner_) {
        owner_ = owner;
        emit ownerChanged(owner_);
    }
}

}  // namespace halvex
