#include "sim/report.h"

namespace halvex::sim {

namespace {

namespace report = vocab::report;

Reply buildReport(Byte code, const UnitState& state, std::int32_t pan, std::int32_t tilt,
                  bool isTarget) {
    Reply reply(code);
    reply.set(report::kPan, static_cast<std::uint32_t>(pan));
    reply.set(report::kTilt, static_cast<std::uint32_t>(tilt));
    reply.set(report::kStatusAByte, state.motion.statusA(state.options.variant, state.settings));
    reply.set(report::kStatusB, state.motion.statusB());
    Byte statusC = state.motion.statusC(state.settings, state.tourRunner.running());
    if (isTarget) {
        statusC = vocab::withBit(statusC, report::kTarget, true);
    }
    reply.set(report::kStatusC, statusC);
    for (int motor = 0; motor < Lenses::kCount; ++motor) {
        reply.set(report::kLens.at(static_cast<std::size_t>(motor)), state.lenses.position(motor));
    }
    return reply;
}

}  // namespace

Reply positionReport(Byte code, const UnitState& state) {
    return buildReport(code, state, state.motion.reportedPan(state.settings),
                       state.motion.reportedTilt(state.settings), false);
}

Reply targetReport(Byte code, const UnitState& state, ReportedTarget target) {
    return buildReport(code, state, target.pan, target.tilt, true);
}

Reply jogReport(UnitState& state) {
    Reply reply = positionReport(vocab::JogMessage::kCode, state);
    const auto first = state.cameras[0].takeReady(state.nowMs);
    const auto second = state.cameras[1].takeReady(state.nowMs);
    reply.set(report::kCamera1Count, static_cast<std::uint32_t>(first.size()));
    reply.set(report::kCamera2Count, static_cast<std::uint32_t>(second.size()));
    // From report::kCameraData on: the first camera's bytes, then the second's.
    for (Byte value : first) {
        reply.byte(value);
    }
    for (Byte value : second) {
        reply.byte(value);
    }
    return reply;
}

}  // namespace halvex::sim
