#include "sim/report.h"

namespace halvex::sim {

namespace {

constexpr int kTargetBit = 5;

Reply report(Byte code, const UnitState& state, std::int32_t pan, std::int32_t tilt,
             bool isTarget) {
    Reply reply(code);
    reply.angle(pan).angle(tilt);
    reply.byte(state.motion.statusA(state.options.variant, state.settings));
    reply.byte(state.motion.statusB());
    Byte statusC = state.motion.statusC(state.settings, state.tourRunner.running());
    if (isTarget) {
        statusC = SetBit(statusC, kTargetBit);
    }
    reply.byte(statusC);
    for (int motor = 0; motor < Lenses::kCount; ++motor) {
        reply.byte(state.lenses.position(motor));
    }
    return reply;
}

}  // namespace

Reply positionReport(Byte code, const UnitState& state) {
    return report(code, state, state.motion.reportedPan(state.settings),
                  state.motion.reportedTilt(state.settings), false);
}

Reply targetReport(Byte code, const UnitState& state, ReportedTarget target) {
    return report(code, state, target.pan, target.tilt, true);
}

Reply jogReport(UnitState& state) {
    Reply reply = positionReport(0x31, state);
    const auto first = state.cameras[0].takeReady(state.nowMs);
    const auto second = state.cameras[1].takeReady(state.nowMs);
    reply.byte(static_cast<int>(first.size())).byte(static_cast<int>(second.size()));
    for (Byte value : first) {
        reply.byte(value);
    }
    for (Byte value : second) {
        reply.byte(value);
    }
    return reply;
}

}  // namespace halvex::sim
