#include "sim/unit.h"

#include <algorithm>
#include <cstdio>

#include "sim/command_table.h"

namespace halvex::sim {

Unit::Unit(const UnitOptions& options)
    : state_(options), assembler_([this](const ConsoleFrame& frame) { handleFrame(frame); }) {
    if (!options.statePath.empty()) {
        if (const auto stored = loadState(options.statePath)) {
            state_.settings = stored->settings;
            state_.powerUp = stored->powerUp;
            state_.presets = stored->presets;
            state_.tours = stored->tours;
        }
    }
    if (options.id) {
        state_.settings.unitId = *options.id;
    }
    applyPowerUp(state_.settings, state_.powerUp);
}

void Unit::receiveFromConsole(const std::uint8_t* data, std::size_t size) {
    assembler_.feed(data, size);
}

void Unit::handleFrame(const ConsoleFrame& frame) {
    if (log_) {
        log_(FrameDirection::In, frame.wire);
    }
    // Busy with a long procedure: deaf to the line until it ends.
    if (state_.procedure) {
        return;
    }
    const Byte id = state_.settings.unitId;
    if (frame.address != id && frame.address != kBroadcast) {
        return;
    }
    if (frame.message.empty()) {
        return;
    }
    if (!frame.lrcGood) {
        // Only a frame meant for this unit alone is worth a NAK; a broadcast
        // with a bad check may have been meant for anyone.
        if (frame.address == id) {
            sendNak(frame.message.front());
        }
        return;
    }
    state_.lastFrameMs = state_.nowMs;
    const bool keepsState = !state_.options.statePath.empty();
    const StoredState before = keepsState ? stored() : StoredState{};
    dispatch(frame);
    if (keepsState) {
        saveIfChanged(before);
    }
}

void Unit::dispatch(const ConsoleFrame& frame) {
    const Command command(frame.message);
    const CommandEntry* entry = CommandTable::standard().find(command.code());
    if (entry == nullptr || command.payloadSize() < entry->minPayload) {
        sendNak(command.code());
        return;
    }
    if (command.code() != vocab::JogMessage::kCode) {
        state_.endAutomation();
    }
    const Response response = entry->handler(state_, command);
    switch (response.kind) {
        case Response::Kind::Answer:
            send(kAck, response.reply->message());
            break;
        case Response::Kind::Refuse:
            sendNak(command.code());
            break;
        case Response::Kind::Nothing:
            break;
    }
    if (state_.pendingId) {
        state_.settings.unitId = *state_.pendingId;
        state_.pendingId.reset();
    }
}

void Unit::send(Byte start, const std::vector<Byte>& message) {
    const Byte id = state_.settings.unitId;
    output_.push_back(encodeFrame(start, id, message, id));
    if (start == kAck) {
        ++answered_;
    }
    if (log_) {
        log_(FrameDirection::Out, output_.back());
    }
}

void Unit::sendNak(Byte code) {
    send(kNak, {code});
}

bool Unit::active() const {
    return state_.motion.moving() || state_.lenses.moving();
}

void Unit::runEvents() {
    if (state_.procedure && state_.nowMs >= state_.procedure->endMs) {
        const std::vector<Byte> reply = state_.procedure->reply;
        state_.procedure.reset();
        send(kAck, reply);
    }
    state_.tourRunner.advance(state_.nowMs, state_.plant());
    const std::int64_t timeoutMs = state_.settings.commTimeoutSeconds * 1000LL;
    const bool running = active() || state_.tourRunner.running();
    if (timeoutMs > 0 && running && state_.nowMs - state_.lastFrameMs >= timeoutMs) {
        // The console has gone quiet: nothing may keep moving on its own.
        state_.endAutomation();
        state_.motion.stop();
        state_.lenses.stop();
    }
}

void Unit::advanceTo(std::int64_t nowMs) {
    while (state_.nowMs < nowMs) {
        if (active()) {
            const std::int64_t stepMs = std::min(kStepMs, nowMs - state_.nowMs);
            const double seconds = static_cast<double>(stepMs) / 1000.0;
            state_.motion.step(seconds, state_.settings);
            state_.lenses.step(seconds);
            state_.nowMs += stepMs;
        } else {
            // At rest: jump straight to the next thing due, or to nowMs.
            state_.nowMs = std::min(nowMs, nextWakeMs().value_or(nowMs));
        }
        runEvents();
    }
}

std::optional<std::int64_t> Unit::nextWakeMs() const {
    if (active()) {
        return state_.nowMs + 2 * kStepMs;
    }
    std::optional<std::int64_t> next;
    const auto consider = [&next](std::optional<std::int64_t> due) {
        if (due && (!next || *due < *next)) {
            next = due;
        }
    };
    consider(state_.tourRunner.dwellEnd());
    if (state_.tourRunner.running() && state_.settings.commTimeoutSeconds > 0) {
        consider(state_.lastFrameMs + state_.settings.commTimeoutSeconds * 1000LL);
    }
    if (state_.procedure) {
        consider(state_.procedure->endMs);
    }
    if (next && *next <= state_.nowMs) {
        next = state_.nowMs + 1;
    }
    return next;
}

std::vector<std::uint8_t> Unit::takeOutput() {
    std::vector<std::uint8_t> bytes;
    for (const auto& frame : output_) {
        bytes.insert(bytes.end(), frame.begin(), frame.end());
    }
    output_.clear();
    return bytes;
}

std::vector<std::vector<Byte>> Unit::takeFrames() {
    std::vector<std::vector<Byte>> frames;
    frames.swap(output_);
    return frames;
}

StoredState Unit::stored() const {
    return StoredState{state_.settings, state_.powerUp, state_.presets, state_.tours};
}

void Unit::saveIfChanged(const StoredState& before) {
    StoredState now = stored();
    // Live display and video settings are not stored; only their power-up copies.
    now.settings.videoMode = before.settings.videoMode;
    now.settings.videoPower = before.settings.videoPower;
    now.settings.angleDisplay = before.settings.angleDisplay;
    now.settings.nameDisplay = before.settings.nameDisplay;
    if (!(now == before) && !saveState(state_.options.statePath, now)) {
        // The unit answers on; whoever started it learns its settings will not last.
        std::fprintf(stderr, "virtual unit: cannot save its state to %s\n",
                     state_.options.statePath.c_str());
    }
}

}  // namespace halvex::sim
